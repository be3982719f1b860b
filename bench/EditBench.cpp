#include "audiofiles/CSample.h"
#include "base/Delegates.h"
#include "engine/CQV.h"
#include "engine/Cycle.h"
#include "engine/DeviceComps.h"
#include "engine/ForgetHooks.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/BarEdits.h"
#include "sequencer/edit/PartActions.h"
#include "sequencer/edit/PartClipboard.h"
#include "sequencer/edit/PartMerge.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/edit/Ripple.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

// What an edit of a whole song costs while it plays: 5,000 parts with 100 events each, on 200
// tracks or on one. `hold` is the time for which the step itself holds the graph, `block` what the
// block in which it does takes longer than others, which finds the caches full of what the
// interface has just prepared, `next` what the one behind takes longer, `ui` what the interface
// thread spends, each in ms and the worst of all runs: of doing, undoing and redoing. `forget` is
// how long the song takes to let go of what a redo tail holds, `idle` a pass of the interface with
// every track selected. Processor time throughout.

namespace {

constexpr int rate = 44100, blockFrames = 256;
constexpr int songParts = 5000, eventsOfPart = 100, eventTicks = 38;
constexpr int quietBlocks = 40;

double cpuMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
}

/// Between these two hooks, entered before and behind all others, the song lets go.
struct Forgetting {
    static inline double began = 0.0, ended = 0.0;

    static void begin(CQV*, const ForgetSet&) { began = cpuMs(); }
    static void end(CQV*, const ForgetSet&) { ended = cpuMs(); }
    static void enter() {
        enterForgetHook(begin);
        enterSequencer();
        enterForgetHook(end);
    }
};

/// A song in which every third track plays clips, the others notes; one track alone has notes.
class Song {
public:
    explicit Song(int tracks) : left(blockFrames), right(blockFrames) {
        Forgetting::enter();
        host = std::make_unique<CQV>();
        qv = host.get();
        host->settingsEnabled = false;
        host->setFrames(blockFrames);
        host->setRate(rate);
        host->init();
        addSample();
        seq = new CSeq(host.get());
        seq->init();
        seq->createBuffers(blockFrames);
        {
            const GraphHold hold(host.get());
            host->comps.add(seq);
        }
        for (int i = 0; i < tracks; i++) addTrack(i % 3 == 1, songParts / tracks);
        seq->orderParts(nullptr, nullptr, true);
        seq->selectAll();
        host->loop = 0;
        host->start();
        block();
    }
    ~Song() {
        host->stop();
        block();
        host->undoClear();
    }
    Song(const Song&) = delete;
    Song& operator=(const Song&) = delete;

    double block() {
        float* outs[] = {left.data(), right.data()};
        const double from = cpuMs();
        libio(nullptr, outs, 0, 2, blockFrames, nullptr, 0);
        return cpuMs() - from;
    }
    /// The median of blocks without an edit.
    double quietBlock() {
        std::vector<double> times;
        for (int i = 0; i < quietBlocks; i++) times.push_back(block());
        std::nth_element(times.begin(), times.begin() + quietBlocks / 2, times.end());
        return times[quietBlocks / 2];
    }

    std::unique_ptr<CQV> host;
    CSeq* seq;

private:
    std::vector<float> left, right;
    CSample* sample = nullptr;

    void addSample() {
        constexpr int frames = 2000;
        sample = new CSample;
        sample->setFormat(rate, 16, 1);
        sample->takeData(static_cast<unsigned char*>(std::calloc(frames, 2)), frames);
        const GraphHold hold(host.get());
        host->samples.add(sample);
    }
    CBaseEvent* event(bool audio, int n) {
        if (!audio) {
            CMIDIEvent* made = createMIDIEvent();
            made->data = asData(midiNoteOn, n & 127, 100);
            made->length = eventTicks;
            return made;
        }
        CAudioEvent* made = createAudioEvent();
        made->sample = sample;
        made->end = 500;
        return made;
    }
    void addTrack(bool audio, int parts) {
        CSongTrack* t = seq->addTrack(audio ? trackAudio : trackMIDI, seq->getProg(), nullptr);
        for (int n = 0; n < parts; n++) {
            CPart* part = audio ? static_cast<CPart*>(new CAudioPart) : new CMIDIPart;
            part->pos = n * barTicks;
            if (audio) static_cast<CAudioPart*>(part)->multiclip = 1;
            EventCollector events;
            for (int i = 0; i < eventsOfPart; i++) events.add(i * eventTicks, event(audio, i));
            part->setEvents(events.takeList());
            t->linkPart(part);
        }
    }
};

/// Tells when the tasks of a block get to it.
class Clock : public CObject {
public:
    double at = 0.0;
    void queue(CQV* host) { host->addTask(new _COnChange<Clock>(this, &Clock::read), nullptr); }

private:
    void read(CObject*) { at = cpuMs(); }
};

/// The worst of each, in ms.
struct Costs {
    double hold = 0.0, block = 0.0, next = 0.0, ui = 0.0;

    /// Has the interface thread make or take back a step, and blocks carry it out.
    template <class F>
    void measure(Song& song, F act) {
        const double quiet = song.quietBlock();
        Clock before, behind;
        before.queue(song.host.get());
        const double from = cpuMs();
        act();
        double spent = cpuMs() - from;
        behind.queue(song.host.get());
        block = std::max(block, song.block() - quiet);
        hold = std::max(hold, behind.at - before.at);
        next = std::max(next, song.block() - quiet);
        const double settling = cpuMs();
        song.host->settle();
        spent += cpuMs() - settling;
        ui = std::max(ui, spent);
    }
    void report(benchmark::State& state, const std::string& what) const {
        state.counters[what + ".hold"] = hold;
        state.counters[what + ".block"] = block;
        state.counters[what + ".next"] = next;
        state.counters[what + ".ui"] = ui;
    }
};

/// What the next step costs that makes the history forget the last one.
double forgetTail(Song& song) {
    Forgetting::began = Forgetting::ended = 0.0;
    song.host->undoClicked();
    song.block();
    static int field = 0;
    CUndo* step = song.host->undoStart("Next", song.seq);
    step->asInt(&field);
    song.host->undoEnd(step, false);
    song.block();
    song.host->settle();
    return Forgetting::ended - Forgetting::began;
}

void atMiddles(Song& song) {
    song.seq->unselectTracks();
    song.seq->getProg()->leftLocator = barTicks / 2;
    song.seq->getProg()->rightLocator = barTicks / 2 + barTicks;
}

struct Edit {
    const char* name;
    void (*ready)(Song&); ///< before the clock runs
    void (*act)(CSeq*);
};

const Edit edits[] = {
    {"quantize", nullptr, quantizeParts},
    {"duplicate", nullptr, duplicateParts},
    {"paste", [](Song& song) { copyParts(song.seq); }, pasteParts},
    {"cut", nullptr, cutParts},
    {"delete", nullptr, [](CSeq* seq) { deleteParts(seq); }},
    {"glue", nullptr, glueParts},
    {"split", nullptr, [](CSeq* seq) { seq->splitAtCursorClicked(); }},
    {"mute", nullptr, toggleMutes},
    {"insert bars", atMiddles, insertBars},
    {"remove bars", atMiddles, removeBars},
};

/// The interface's tick of a song of which every track is selected.
void selectedIdle(benchmark::State& state) {
    Song song(int(state.range(0)));
    for (int i = 0; i < quietBlocks; i++) {
        song.seq->idle();
        song.block();
    }
    for (auto _ : state) song.seq->idle();
}

void run(benchmark::State& state, const Edit& edit) {
    Costs done, undone, redone;
    double forget = 0.0;
    for (auto _ : state) {
        Song song(int(state.range(0)));
        if (edit.ready) edit.ready(song);
        done.measure(song, [&] { edit.act(song.seq); });
        undone.measure(song, [&] { song.host->undoClicked(); });
        redone.measure(song, [&] { song.host->redoClicked(); });
        forget = std::max(forget, forgetTail(song));
    }
    done.report(state, "1do");
    undone.report(state, "2undo");
    redone.report(state, "3redo");
    state.counters["4forget"] = forget;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const Edit& edit : edits)
        benchmark::RegisterBenchmark(edit.name, run, edit)
            ->ArgName("tracks")
            ->Arg(200)
            ->Arg(1)
            ->Iterations(3)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("idle", selectedIdle)
        ->ArgName("tracks")
        ->Arg(200)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RunSpecifiedBenchmarks();
}
