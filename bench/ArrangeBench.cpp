#include "ProgramDesk.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeView.h"
#include "gui/Keys.h"

// The arrangement of a song of 200 tracks, 5,000 parts and 500,000 notes in a window of 1600 x
// 1000: from an event in the program to the moment at which the server has drawn what it changed.
// Median and 99th percentile in milliseconds of 300 steps each.

namespace {

constexpr int trackCount = 200, partsPerTrack = 25, notesPerPart = 100;
constexpr int partTicks = 4 * barTicks, steps = 300;

/// The program with the large song, once for all figures.
class Program : public ProgramDesk {
public:
    Program() {
        if (!ready()) return;
        fillSong();
        turn(50);
    }
    ArrangeView* song() { return find<ArrangeView>("song", songPage()); }
    ArrangeGrid* grid() { return find<ArrangeGrid>("grid", song()); }

private:
    void fillSong() {
        CSeqProg* prog = seq()->getProg();
        for (int t = 0; t < trackCount; t++) {
            CSongTrack* track = seq()->addTrack(trackMIDI, prog, nullptr);
            if (!track) break; // a song has no room for more
            for (int p = 0; p < partsPerTrack; p++) {
                auto* part = new CMIDIPart;
                part->pos = p * partTicks;
                part->length = partTicks - (t * 37 % 8) * 240;
                EventCollector notes;
                for (int n = 0; n < notesPerPart; n++) {
                    CMIDIEvent* note = createMIDIEvent();
                    note->data = 0x640090 | (40 + (n * 7 + t) % 40) << 8;
                    note->length = 120;
                    notes.add(n * partTicks / notesPerPart, note);
                }
                part->setEvents(notes.takeList());
                track->addPart(part, nullptr);
            }
        }
        seq()->songNotices.raise(SeqNotice::tracks | SeqNotice::parts);
    }
};

Program& program() {
    static Program one;
    return one;
}

/// Runs `step(i)` and a paint, and reports how long each took.
template <class F>
void measure(benchmark::State& state, F&& step) {
    Program& p = program();
    if (!p.ready()) return state.SkipWithError("no display");
    p.turn(5);
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < steps; i++)
            times.time([&] {
                step(p, i);
                p.paint();
            });
    times.report(state);
}

int zigzag(int i) {
    return i / 30 % 2 ? 1 : -1;
}

/// At a zoom at which so many bars show.
void showBars(Program& p, int bars) {
    p.song()->zoom(p.grid()->width * 960.0 / (bars * barTicks));
    p.grid()->mouseWheel(0, 0, 0, 32 * 1000, 32 * 100000); // to the start
}

void scrollAlong(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    measure(state,
            [](Program& p, int i) { p.grid()->mouseWheel(500, 300, modShift, 32 * zigzag(i), 0); });
}

void scrollDown(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    measure(state, [](Program& p, int i) { p.grid()->mouseWheel(500, 300, 0, 32 * zigzag(i), 0); });
}

void zoomStep(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    const double first = program().song()->zoomNow();
    measure(state, [first](Program& p, int i) { p.song()->zoom(first * (i % 2 ? 1.0 : 1.25)); });
}

void paintWhole(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    measure(state, [](Program& p, int) { p.grid()->redraw(); });
}

void changeSong(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    measure(state, [](Program& p, int) {
        p.seq()->songNotices.raise(SeqNotice::parts);
        p.win->idle();
    });
}

/// All of 1,000 selected parts, drawn as outlines.
void dragThousand(benchmark::State& state) {
    Program& p = program();
    showBars(p, int(state.range(0)));
    int count = 0;
    p.seq()->unselectParts();
    for (auto* track : p.seq()->getProg()->tracks)
        for (auto* part : track->parts)
            if (count++ < 1000) part->setSelected(true);
    ArrangeGrid* grid = p.grid();
    grid->mouseDown(100, 20, modLeft);
    measure(state, [grid](Program& q, int i) {
        q.app.drag.moved(asPoint(100 + i % 200 * 2, 20 + i % 50), modLeft);
    });
    p.app.drag.cancel();
    p.seq()->unselectParts();
}

void playLine(benchmark::State& state) {
    showBars(program(), int(state.range(0)));
    measure(state, [](Program& p, int i) {
        p.seq()->getProg()->pos = i * 40.0;
        p.song()->refresh();
    });
}

#define SIZES ->Arg(16)->Arg(100)->Iterations(1)->Unit(benchmark::kMillisecond)
BENCHMARK(scrollAlong) SIZES;
BENCHMARK(scrollDown) SIZES;
BENCHMARK(zoomStep) SIZES;
BENCHMARK(paintWhole) SIZES;
BENCHMARK(changeSong) SIZES;
BENCHMARK(dragThousand) SIZES;
BENCHMARK(playLine) SIZES;

} // namespace

BENCHMARK_MAIN();
