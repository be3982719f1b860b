#include "ProgramDesk.h"

#include "arrange/ArrangeView.h"
#include "engine/MidiBytes.h"
#include "gui/Keys.h"
#include "gui/access/Accessible.h"
#include "notes/LaneView.h"
#include "notes/NoteGrid.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/Quantize.h"
#include "sequencer/song/CEditorComp.h"
#include "shell/Pages.h"
#include "ui/CCompEditor.h"

#include <random>

// The note editor with a part of 100,000 notes, or of as many messages of a controller, in a
// window of 1600 x 1000: from an event in the program to the moment at which the server has drawn
// what it changed. Median and 99th percentile in milliseconds.

namespace {

constexpr int noteCount = 100000, bars = 1000, steps = 300;
constexpr int songTicks = bars * barTicks;

/// The program with the large parts, once for all figures.
class Program : public ProgramDesk {
public:
    CPart *notes = nullptr, *messages = nullptr, *small = nullptr;

    Program() {
        if (!ready()) return;
        CSongTrack* track = seq()->addTrack(trackMIDI, seq()->getProg(), nullptr);
        notes = addPart(track, [](int n) {
            CMIDIEvent* note = createMIDIEvent();
            note->data = asData(midiNoteOn, 40 + n * 7 % 40, 1 + n % 127);
            note->length = n % 1000 == 0 ? 200 * barTicks : 120;
            return note;
        });
        track = seq()->addTrack(trackMIDI, seq()->getProg(), nullptr);
        messages = addPart(track, [](int n) {
            CMIDIEvent* message = createMIDIEvent();
            message->data = asData(midiController, 7, n % 128);
            return message;
        });
        track = seq()->addTrack(trackMIDI, seq()->getProg(), nullptr);
        small = new CMIDIPart;
        track->addPart(small, nullptr);
        seq()->songNotices.raise(SeqNotice::tracks | SeqNotice::parts);
        turn(20);
        open(small);
    }
    void open(CPart* part) {
        win->openPart(part);
        win->onTimer();
        app.dispatchEvents();
        paint();
    }
    CCompEditor* editor() { return win->pages->editorOf(seq()->editorComp.get()); }
    NoteGrid* grid() { return below<NoteGrid>(editor()->clientGroup); }
    LaneView* lane() { return below<LaneView>(editor()->clientGroup); }
    /// So many notes in the middle of the part.
    void select(int count) {
        int n = (count - noteCount) / 2;
        for (CBaseEvent* e = notes->getEvents(); e; e = e->next, n++)
            ::select(e, n >= 0 && n < count);
    }

private:
    template <class F>
    static CPart* addPart(CSongTrack* track, F&& make) {
        auto* part = new CMIDIPart;
        part->length = songTicks;
        EventCollector events;
        for (int n = 0; n < noteCount; n++)
            events.add(int(int64_t(n) * songTicks / noteCount), make(n));
        part->setEvents(events.takeList());
        track->addPart(part, nullptr);
        return part;
    }
    template <class T>
    static T* below(CGroup* group) {
        for (auto* c : group->controls) {
            if (auto* found = dynamic_cast<T*>(c)) return found;
            T* inner = c->category == catGroup ? below<T>(static_cast<CGroup*>(c)) : nullptr;
            if (inner) return inner;
        }
        return nullptr;
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
    if (!p.ready()) return state.SkipWithError("no display");
    p.turn(5);
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < count; i++)
            times.time([&] {
                step(p, i);
                p.paint();
            });
    times.report(state);
}

/// Some steps there, and as many back.
int zigzag(int i, int times) {
    return i / times % 2 ? -1 : 1;
}

/// So many bars in view, from the middle of the part on.
void show(Program& p, CPart* part, int shownBars) {
    p.open(p.small);
    p.open(part);
    NoteGrid* grid = p.grid();
    p.lane()->lane = {part == p.notes ? laneVelocity : laneController, 7};
    for (double now = bars; now / 1.25 >= shownBars; now /= 1.25)
        grid->mouseWheel(grid->width / 2, 100, modControl, 32, 0);
    p.paint();
}

CPart* partOf(const benchmark::State& state) {
    return state.range(1) ? program().messages : program().notes;
}

void open(benchmark::State& state) {
    Program& p = program();
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < 20; i++) {
            p.open(p.small);
            times.time([&] { p.open(partOf(state)); });
        }
    times.report(state);
}

void scrollAlong(benchmark::State& state) {
    show(program(), partOf(state), int(state.range(0)));
    measure(state, steps, [](Program& p, int i) {
        p.grid()->mouseWheel(500, 300, modShift, 32 * zigzag(i, 30), 0);
    });
}

void scrollDown(benchmark::State& state) {
    show(program(), partOf(state), int(state.range(0)));
    measure(state, steps,
            [](Program& p, int i) { p.grid()->mouseWheel(500, 300, 0, 32 * zigzag(i, 3), 0); });
}

void zoomStep(benchmark::State& state) {
    show(program(), partOf(state), int(state.range(0)));
    measure(state, steps, [](Program& p, int i) {
        p.grid()->mouseWheel(500, 300, modControl, i % 2 ? 32 : -32, 0);
    });
}

/// Where one of the selected notes in view lies.
CRect selectedNote(NoteGrid* grid) {
    for (int i = 0; i < grid->accessParts(); i++) {
        Description d;
        grid->describe(d, i);
        if (d.has(stateSelected) && d.bounds.width() > 2) return d.bounds;
    }
    return {};
}

/// Drags all selected notes by one of them: its body, its end with `atEnd`, copies with Control.
void drag(benchmark::State& state, bool atEnd, int mods) {
    Program& p = program();
    show(p, p.notes, int(state.range(0)));
    p.select(int(state.range(1)));
    NoteGrid* grid = p.grid();
    const CRect box = selectedNote(grid);
    const int x = atEnd ? box.right - 1 : (box.left + box.right) / 2;
    grid->mouseDown(x, box.top + 2, modLeft | mods);
    if (!p.app.drag.of(grid)) return state.SkipWithError("nothing was pressed");
    measure(state, 60, [&](Program& q, int i) {
        q.app.drag.moved(asPoint(x + 10 + i % 50 * 3, box.top + i % 20 * 10), modLeft);
    });
    p.app.drag.cancel();
    p.select(0);
}

void dragNotes(benchmark::State& state) {
    drag(state, false, 0);
}

void dragCopies(benchmark::State& state) {
    drag(state, false, modControl);
}

void dragEnds(benchmark::State& state) {
    drag(state, true, 0);
}

/// Values are drawn in the lane below.
void drawLane(benchmark::State& state) {
    Program& p = program();
    show(p, partOf(state), int(state.range(0)));
    LaneView* lane = p.lane();
    lane->mouseDown(300, 40, modLeft);
    measure(state, 60, [lane](Program& q, int i) {
        q.app.drag.moved(asPoint(300 + i * 10, 20 + i % 60), modLeft);
    });
    p.app.drag.cancel();
}

/// Of all notes, as one step.
void quantizeAll(benchmark::State& state) {
    Program& p = program();
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < 10; i++) {
            times.time([&] {
                CUndo* undo = p.host->undoStart("Quantize", p.seq(), {.seq = SeqNotice::parts});
                quantize(undo, p.notes, 960, false);
                p.host->undoEnd(undo, false);
            });
            p.turn(2);
            p.host->undoClicked(nullptr);
            p.turn(2);
        }
    times.report(state);
}

/// The notes under the pointer, as they are looked for wherever it moves.
void hitTest(benchmark::State& state) {
    Program& p = program();
    show(p, p.notes, int(state.range(0)));
    NoteGrid* grid = p.grid();
    std::mt19937 chance(1);
    StepTimes times;
    for (auto _ : state)
        for (int i = 0; i < steps; i++)
            times.time([&] {
                grid->mouseMove(int(chance() % unsigned(grid->width)),
                                int(chance() % unsigned(grid->height)), 0);
            });
    times.report(state);
}

/// The arrangement, where the part is seen in little.
void sketch(benchmark::State& state) {
    Program& p = program();
    p.win->pages->bringToFront(p.win->pages->editorOf(p.seq()));
    p.turn(5);
    auto* song = ProgramDesk::find<ArrangeView>("song", p.songPage());
    song->zoom(1400.0 * 960 / (int(state.range(0)) * barTicks));
    measure(state, steps, [song](Program& q, int i) {
        if (i % 2) q.seq()->songNotices.raise(SeqNotice::parts);
        song->redraw();
        q.win->idle();
    });
    p.win->pages->bringToFront(p.editor());
}

// Bars in view, and whether the part holds notes (0) or messages (1).
#define VIEWS ->Iterations(1)->Unit(benchmark::kMillisecond)->ArgsProduct({{16, 100, 1000}, {0, 1}})
#define BARS ->Iterations(1)->Unit(benchmark::kMillisecond)->Arg(16)->Arg(100)->Arg(1000)
#define PARTS ->Iterations(1)->Unit(benchmark::kMillisecond)->Args({0, 0})->Args({0, 1})
// Bars in view, and how many notes are selected.
#define CHOSEN                                                                                     \
    ->Iterations(1)->Unit(benchmark::kMillisecond)->ArgsProduct({{16, 100}, {10000, 80000}})
BENCHMARK(open) PARTS;
BENCHMARK(scrollAlong) VIEWS;
BENCHMARK(scrollDown) VIEWS;
BENCHMARK(zoomStep) VIEWS;
BENCHMARK(dragNotes) CHOSEN;
BENCHMARK(dragCopies) CHOSEN;
BENCHMARK(dragEnds) CHOSEN;
BENCHMARK(drawLane) VIEWS;
BENCHMARK(quantizeAll)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(hitTest) BARS;
BENCHMARK(sketch) BARS;

} // namespace

BENCHMARK_MAIN();
