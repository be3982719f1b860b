#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CCanvas.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/DrawBatch.h"
#include "gui/Fonts.h"
#include "gui/PixelPaper.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <sys/socket.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <memory>
#include <vector>

// Views of 1600 x 1000 full of small things, at 100 and 200 percent: what a step of scrolling,
// zooming and dragging, of one or a hundred, and a whole repaint cost, in processor time of the
// program and the X server together. The server's is asked by its process, so it has to run on this
// machine.

namespace {

constexpr int viewWidth = 1600, viewHeight = 1000;
constexpr int groundColour = 0x23262b;
constexpr int partCount = 2000, noteCount = 10000, cableCount = 200, meterCount = 100;

double secondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

/// Processor time of this process and the server.
class BothClocks {
public:
    BothClocks() {
        ucred peer{};
        socklen_t size = sizeof peer;
        if (getsockopt(ConnectionNumber(liveDisplay()), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0)
            known = clock_getcpuclockid(peer.pid, &server) == 0;
    }
    bool known = false;
    double seconds() const { return secondsOf(CLOCK_PROCESS_CPUTIME_ID) + secondsOf(server); }

private:
    clockid_t server = 0;
};

/// Stands for the views of a song: its marks lie on a plain that can be scrolled and zoomed.
class DemoView : public CCanvas {
public:
    int zoom = 100;  // percent
    int dragged = 0; // how far the marks that are dragged have been moved

    explicit DemoView(CWin* owner) : CCanvas(owner, "view", 0, 0, viewWidth, viewHeight) {}
    void zoomTo(int percent) {
        zoom = percent;
        redraw();
    }
    /// Moves one mark on, or a hundred all over the view, to and fro.
    void dragStep(int turn, int apart) {
        for (int i = dragFirst; i < markCount(); i += apart) contentChanged(markAt(i));
        dragged = turn % 100;
        dragApart = apart;
        for (int i = dragFirst; i < markCount(); i += apart) contentChanged(markAt(i));
    }
    virtual int markCount() const = 0;
    virtual CRect markAt(int) const = 0;

protected:
    static constexpr int dragFirst = 7;

    CRect placed(CRect mark, int index) const {
        const bool moves = index % dragApart == dragFirst % dragApart;
        const int by = moves ? dragged : 0;
        return asRect(mark.left * zoom / 100 + by, mark.top, mark.right * zoom / 100 + by,
                      mark.bottom);
    }
    /// Each mark as a box with a frame.
    void paintBoxes(CGraphic* g, CRect asked) const {
        PixelPaper paper(g, asked);
        paper.fill(groundColour, asked);
        for (int i = 0; i < markCount(); i++) {
            const CRect box = markAt(i);
            if (!g->wants(box)) continue;
            paper.fill(0x305060 + i % 16 * 8, box);
            paper.frame(0x80a0c0, box);
        }
    }
    int dragApart = 1000000;
};

class PartsView : public DemoView {
public:
    using DemoView::DemoView;
    int markCount() const override { return partCount; }
    CRect markAt(int i) const override {
        const int x = i % columns * 32, y = i / columns * 25;
        return placed(asRect(x, y, x + 30, y + 23), i);
    }

protected:
    static constexpr int columns = 50;
    void paintContent(CGraphic* g, CRect asked) override {
        paintBoxes(g, asked);
        DrawBatch batch(g);
        for (int i = 0; i < partCount; i++)
            if (const CRect box = markAt(i); g->wants(box))
                batch.text(0xe0e0e0, "Bass 12", sizeRect(box, 2, 0, -1, 0), textLeft);
    }
};

class NotesView : public DemoView {
public:
    using DemoView::DemoView;
    int markCount() const override { return noteCount; }
    CRect markAt(int i) const override {
        const int x = i % columns * 16, y = i / columns * 10;
        return placed(asRect(x, y, x + 14, y + 9), i);
    }

protected:
    static constexpr int columns = 100;
    void paintContent(CGraphic* g, CRect asked) override { paintBoxes(g, asked); }
};

class CablesView : public DemoView {
public:
    using DemoView::DemoView;
    int markCount() const override { return cableCount; }
    CRect markAt(int i) const override {
        const int x = i % 20 * 70, y = i / 20 * 90;
        return placed(asRect(x, y, x + 240, y + 100), i);
    }

protected:
    void paintContent(CGraphic* g, CRect asked) override {
        PixelPaper paper(g, asked);
        paper.fill(groundColour, asked);
        for (int i = 0; i < cableCount; i++) {
            const CRect box = markAt(i);
            if (!g->wants(box)) continue;
            CPath path;
            path.moveTo(box.left, box.top);
            path.curveTo(box.left + 100, box.top, box.right - 100, box.bottom, box.right,
                         box.bottom);
            paper.stroke(0x58a9ff, path, 1.5);
        }
    }
};

/// Rows of waves, a line for each column of the screen.
class WavesView : public DemoView {
public:
    using DemoView::DemoView;
    int markCount() const override { return rows; }
    CRect markAt(int i) const override {
        return placed(asRect(0, i * 50, 2 * viewWidth, i * 50 + 48), i);
    }

protected:
    static constexpr int rows = 20;
    void paintContent(CGraphic* g, CRect asked) override {
        PixelPaper paper(g, asked);
        paper.fill(groundColour, asked);
        for (int i = 0; i < rows; i++) {
            const CRect box = intersect(markAt(i), asked);
            if (box.empty() || !g->wants(box)) continue;
            const CRect place = paper.deviceRect(markAt(i)), seen = paper.deviceRect(box);
            const int middle = (place.top + place.bottom) / 2;
            for (int x = seen.left; x < seen.right; x++) {
                const int tall = (x - place.left) * 7919 % (place.height() / 2);
                paper.fillDevice(0x3fbf7f, asRect(x, middle - tall, x + 1, middle + tall + 1));
            }
        }
    }
};

/// A window with one of the views, in a scale of its own.
template <class View>
class Stage {
public:
    explicit Stage(benchmark::State& state) {
        textSettings = {};
        wantedScale = int(state.range(0));
        if (app.open()) clocks = std::make_unique<BothClocks>();
        if (!clocks || !clocks->known) {
            state.SkipWithError("no display, or none whose clock can be read");
            return;
        }
        win = std::make_unique<CWin>(&app, nullptr, "Canvas", 0, 0, viewWidth, viewHeight,
                                     winNoBorder);
        view = new View(win.get());
        win->addControl(view);
        win->show(true);
        settle();
    }
    void settle() {
        XSync(liveDisplay(), False);
        app.dispatchEvents();
        app.paintFrame();
        XSync(liveDisplay(), False);
    }
    template <class Step>
    void measure(benchmark::State& state, Step step) {
        if (!win) return;
        int turn = 0;
        for (auto _ : state) {
            const double start = clocks->seconds();
            step(turn++);
            settle();
            state.SetIterationTime(clocks->seconds() - start);
        }
    }
    CApp app;
    std::unique_ptr<BothClocks> clocks;
    std::unique_ptr<CWin> win;
    View* view = nullptr;
};

template <class View>
void scrollStep(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int turn) {
        stage.view->scrollTo(stage.view->scrollX + (turn / 5 % 2 ? -20 : 20), 0);
    });
}

template <class View>
void zoomStep(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int turn) { stage.view->zoomTo(90 + turn % 20); });
}

template <class View>
void dragStep(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int turn) { stage.view->dragStep(turn, 1000000); });
}

template <class View>
void dragHundred(benchmark::State& state) {
    Stage<View> stage(state);
    if (!stage.view) return;
    const int apart = std::max(1, stage.view->markCount() / 100);
    stage.measure(state, [&](int turn) { stage.view->dragStep(turn, apart); });
}

template <class View>
void wholeRepaint(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int) { stage.view->redraw(); });
}

/// What no scroll can be quicker than.
void bareCopy(benchmark::State& state) {
    Stage<PartsView> stage(state);
    stage.measure(state,
                  [&](int) { stage.win->graphic->moveContent(stage.win->clientRect(), 20, 0); });
}

/// Stands for a channel's meter.
class DemoMeter : public CCtrl {
public:
    int level = 0;

    using CCtrl::CCtrl;
    void paint(CGraphic* g, CRect) override {
        g->fillRect(0x101010, clientRect());
        g->fillRect(0x3fbf7f, asRect(0, height - level, width / 2, height));
        g->fillRect(0x3fbf7f, asRect(width / 2 + 1, height - level, width, height));
    }
};

/// All of them move.
void hundredMeters(benchmark::State& state) {
    constexpr int columns = 50, rowHeight = 500;
    struct Nothing : CCtrl {
        explicit Nothing(CWin* owner) : CCtrl(owner, "none", 0, 0, 0, 0) {}
    };
    Stage<Nothing> stage(state);
    if (!stage.win) return;
    std::vector<DemoMeter*> meters;
    for (int i = 0; i < meterCount; i++) {
        auto* meter = new DemoMeter(stage.win.get(), "meter", i % columns * 32 + 8,
                                    i / columns * rowHeight + 50, 12, 200);
        stage.win->addControl(meter);
        meters.push_back(meter);
    }
    stage.win->redraw();
    stage.settle();
    stage.measure(state, [&](int turn) {
        for (DemoMeter* meter : meters) {
            meter->level = asRound(100 + 90 * std::sin(turn * 0.3 + meter->left));
            meter->redraw();
        }
    });
}

void atBothScales(benchmark::internal::Benchmark* b) {
    b->ArgName("scale")->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond)->UseManualTime();
}

} // namespace

#define CANVAS_CASES(view)                                                                         \
    BENCHMARK(scrollStep<view>)->Apply(atBothScales);                                              \
    BENCHMARK(zoomStep<view>)->Apply(atBothScales);                                                \
    BENCHMARK(dragStep<view>)->Apply(atBothScales);                                                \
    BENCHMARK(dragHundred<view>)->Apply(atBothScales);                                             \
    BENCHMARK(wholeRepaint<view>)->Apply(atBothScales)

CANVAS_CASES(PartsView);
CANVAS_CASES(NotesView);
CANVAS_CASES(CablesView);
CANVAS_CASES(WavesView);
BENCHMARK(bareCopy)->Apply(atBothScales);
BENCHMARK(hundredMeters)->Apply(atBothScales);
