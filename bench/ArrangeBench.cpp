#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeView.h"
#include "base/CIniFile.h"
#include "engine/CQV.h"
#include "engine/GraphHold.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"
#include "project/CompTable.h"
#include "sequencer/CSeq.h"
#include "shell/AppHooks.h"
#include "shell/CMainWin.h"
#include "shell/ProjectFlows.h"
#include "ui/Song.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// The arrangement of a song of 200 tracks, 5,000 parts and 500,000 notes in a window of 1600 x
// 1000: from an event in the program to the moment at which the server has drawn what it changed.
// Median and 99th percentile in milliseconds of 300 steps each.

namespace {

constexpr int trackCount = 200, partsPerTrack = 25, notesPerPart = 100;
constexpr int partTicks = 4 * barTicks, steps = 300;

using Clock = std::chrono::steady_clock;

/// The program with the large song, once for all figures.
class Program {
public:
    Program() {
        inifile = (folder.path + "/settings.ini").c_str();
        CIniFile(inifile).writeString("options", "startwith", "1");
        enterCompTypes();
        if (!app.open()) return;
        host = std::make_unique<CQV>();
        host->editorStruct.width = 1600;
        host->editorStruct.height = 1000;
        win = std::make_unique<CMainWin>(&app, host.get());
        hooks = std::make_unique<AppHooks>(&app, win.get());
        win->show(true);
        host->init();
        win->init();
        win->flows->start();
        app.addTimer(win.get(), 40, true);
        win->flows->newProject(kindEmpty, "");
        while (!songOf(host.get()) || win->flows->loading()) {
            app.dispatchEvents();
            app.idle();
        }
        fillSong();
        turn(50);
    }
    bool ready() const { return win != nullptr; }
    CSeq* seq() { return songOf(host.get()); }
    template <class T>
    T* find(const char* id, CGroup* group) {
        for (auto* c : each<CCtrl>(group->controls))
            if (c->id == id) return static_cast<T*>(c);
        return nullptr;
    }
    ArrangeView* song() { return find<ArrangeView>("song", win->clientGroup); }
    ArrangeGrid* grid() { return find<ArrangeGrid>("grid", song()); }
    /// Shows what has changed, and waits until the server has.
    void paint() {
        app.paintFrame();
        XSync(liveDisplay(), False);
    }
    void turn(int times) {
        for (int i = 0; i < times; i++) {
            win->onTimer();
            app.dispatchEvents();
            paint();
        }
    }

    CApp app;
    std::unique_ptr<CQV> host;
    std::unique_ptr<CMainWin> win;

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

    static std::string makeFolder() {
        std::string path = "/tmp/arrange_bench.XXXXXX";
        return mkdtemp(path.data()) ? path : ".";
    }
    struct Folder {
        const std::string path = makeFolder();
        ~Folder() {
            std::error_code none;
            std::filesystem::remove_all(path, none);
        }
    };
    const Folder folder;
    std::unique_ptr<AppHooks> hooks;
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
    std::vector<double> took;
    for (auto _ : state) {
        for (int i = 0; i < steps; i++) {
            const auto start = Clock::now();
            step(p, i);
            p.paint();
            took.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        }
    }
    std::sort(took.begin(), took.end());
    state.counters["median_ms"] = took[took.size() / 2];
    state.counters["p99_ms"] = took[took.size() * 99 / 100];
    state.counters["most_ms"] = took.back();
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
    for (auto* track : each<CSongTrack>(p.seq()->getProg()->tracks))
        for (auto* part : each<CPart>(track->parts))
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
