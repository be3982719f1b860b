#include "ProgramDesk.h"

#include "audiofiles/CSample.h"
#include "audiofiles/WavFile.h"
#include "gui/Keys.h"
#include "notes/WaveView.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CEditorComp.h"
#include "ui/CCompEditor.h"

#include <cmath>
#include <cstdio>

// The editor of sound with an hour of stereo at 44100 Hz in a window of 1600 x 1000, the image of
// whose peaks is there: from an event in the program to the moment at which the server has drawn
// what it changed. Milliseconds.

namespace {

constexpr int rate = 44100, seconds = 3600, steps = 200;

/// The program with the file and a small part, once for all figures.
class Program : public ProgramDesk {
public:
    CPart *hour = nullptr, *small = nullptr;

    Program() {
        if (!ready()) return;
        const std::string path = "/tmp/sondrava_hour.wav";
        writeHour(path);
        CSample* sample = host->addSample(path.c_str(), 1);
        std::remove(path.c_str()); // it stays open
        if (!sample) return;
        sample->peakfile();
        CSongTrack* track = seq()->addTrack(trackAudio, seq()->getProg(), nullptr);
        hour = new CAudioPart;
        CAudioEvent* clip = createAudioEvent();
        clip->sample = sample;
        clip->end = sample->frames - 1;
        hour->addEvent(0, clip);
        track->addPart(hour, nullptr);
        small = new CMIDIPart;
        seq()->addTrack(trackMIDI, seq()->getProg(), nullptr)->addPart(small, nullptr);
        seq()->songNotices.raise(SeqNotice::tracks | SeqNotice::parts);
        turn(20);
        open(hour);
        open(small);
    }
    void open(CPart* part) {
        win->openPart(part);
        win->onTimer();
        app.dispatchEvents();
        paint();
    }
    CCompEditor* editor() { return win->pages->editorOf(seq()->editorComp.get()); }
    WaveView* wave() {
        return find<WaveView>("wave", find<CGroup>("wavebody", editor()->clientGroup));
    }
    /// All of it, and then so much nearer that a pixel has about so many frames.
    void show(double framesPerPixel) {
        open(small);
        open(hour);
        WaveView* view = wave();
        for (double now = double(rate) * seconds / view->width; now / 1.25 > framesPerPixel;
             now /= 1.25)
            view->mouseWheel(view->width / 2, 100, modControl, 32, 0);
        paint();
    }

private:
    static void writeHour(const std::string& path) {
        AudioFormat format;
        format.rate = rate;
        format.bits = 16;
        format.chs = 2;
        format.frames = rate * seconds;
        unsigned char header[aiffHeaderBytes];
        const int bytes = makeAudioHeader(format, header);
        std::vector<int16_t> second(2 * rate);
        for (int i = 0; i < rate; i++) {
            second[size_t(2 * i)] = int16_t(20000 * std::sin(i * 0.05) * (rate - i) / rate);
            second[size_t(2 * i + 1)] = int16_t(i * 7919 % 16000 - 8000);
        }
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (!file) return;
        std::fwrite(header, 1, size_t(bytes), file);
        for (int i = 0; i < seconds; i++) std::fwrite(second.data(), 4, size_t(rate), file);
        std::fclose(file);
    }
};

Program& program() {
    static Program one;
    return one;
}

/// Runs `step(i)` and a paint, and reports how long each took.
template <class F>
void measure(benchmark::State& state, int count, F&& step) {
    Program& p = program();
    if (!p.hour) return state.SkipWithError("no display, or no room for the file");
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < count; i++) step(p, i, times);
    times.report(state);
}

void open(benchmark::State& state) {
    measure(state, 20, [](Program& p, int, StepTimes& times) {
        p.open(p.small);
        times.time([&] { p.open(p.hour); });
    });
}

/// From all of it to single frames at once.
void zoomToSamples(benchmark::State& state) {
    measure(state, 20, [](Program& p, int, StepTimes& times) {
        p.show(1e9);
        times.time([&] {
            WaveView* view = p.wave();
            for (int k = 0; k < 120; k++) view->mouseWheel(view->width / 2, 100, modControl, 32, 0);
            p.paint();
        });
    });
}

void scroll(benchmark::State& state) {
    program().show(double(state.range(0)));
    measure(state, steps, [](Program& p, int i, StepTimes& times) {
        times.time([&] {
            p.wave()->mouseWheel(500, 300, modShift, i / 30 % 2 ? -32 : 32, 0);
            p.paint();
        });
    });
}

void zoomStep(benchmark::State& state) {
    program().show(double(state.range(0)));
    measure(state, steps, [](Program& p, int i, StepTimes& times) {
        times.time([&] {
            p.wave()->mouseWheel(500, 300, modControl, i % 2 ? 32 : -32, 0);
            p.paint();
        });
    });
}

void dragRange(benchmark::State& state) {
    program().show(double(state.range(0)));
    if (program().hour) program().wave()->mouseDown(300, 200, modLeft);
    measure(state, 100, [](Program& p, int i, StepTimes& times) {
        times.time([&] {
            p.app.drag.moved(asPoint(310 + i * 8, 200), modLeft);
            p.paint();
        });
    });
    program().app.drag.cancel();
}

// Frames a pixel.
#define VIEWS                                                                                      \
    ->Iterations(1)->Unit(benchmark::kMillisecond)->Arg(1 << 30)->Arg(2000)->Arg(50)->Arg(1)
BENCHMARK(open)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(zoomToSamples)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(scroll) VIEWS;
BENCHMARK(zoomStep) VIEWS;
BENCHMARK(dragRange) VIEWS;

} // namespace

BENCHMARK_MAIN();
