#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <sys/socket.h>

#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <memory>
#include <vector>

// Views of 1600 x 1000 full of small things, at 100 and 200 percent: what a step of scrolling,
// zooming and dragging and a whole repaint cost, in processor time of the program and the X server
// together. The server's is asked by its process, so it has to run on this machine.

namespace {

constexpr int viewWidth = 1600, viewHeight = 1000;
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

/// Stands for the views of a song: its marks lie on a grid that can be scrolled and zoomed.
class DemoView : public CCtrl {
public:
    int zoom = 100; // percent
    CPoint scroll;
    int dragged = 0; // how far the first mark has been moved

    explicit DemoView(CWin* owner) : CCtrl(owner, "view", 0, 0, viewWidth, viewHeight) {}
    void paint(CGraphic* g, CRect) override {
        g->fillRect(hexColor(0x23262b), clientRect());
        paintMarks(g, g->intersectClip(clientRect()));
    }
    void scrollBy(int dx, int dy) {
        scroll = addPos(scroll, asPoint(dx, dy));
        redraw();
    }
    void zoomTo(int percent) {
        zoom = percent;
        redraw();
    }
    /// Moves a mark on, to and fro.
    virtual void dragStep(int turn) {
        const CRect before = markAt(dragIndex);
        dragged = turn % 100;
        redraw(unite(before, markAt(dragIndex)));
    }
    virtual CRect markAt(int) const { return {}; }

protected:
    static constexpr int dragIndex = 777;

    virtual void paintMarks(CGraphic* g, CRect asked) = 0;
    CRect placed(CRect mark, int index) const {
        const int moved = (index == dragIndex ? dragged : 0) - scroll.x;
        return asRect(mark.left * zoom / 100 + moved, mark.top - scroll.y,
                      mark.right * zoom / 100 + moved, mark.bottom - scroll.y);
    }
};

/// A few more lie outside, so that what is scrolled in is as full.
class PartsView : public DemoView {
public:
    using DemoView::DemoView;
    CRect markAt(int i) const override {
        const int x = i % columns * 32, y = i / columns * 25;
        return placed(asRect(x, y, x + 30, y + 23), i);
    }

protected:
    static constexpr int columns = 50;
    void paintMarks(CGraphic* g, CRect asked) override {
        for (int i = 0; i < partCount; i++) {
            const CRect box = markAt(i);
            if (intersect(box, asked).empty()) continue;
            g->fillRect(0x305060 + i % 16 * 8, box);
            g->frameRect(0x80a0c0, box);
            g->drawText(0xe0e0e0, "Bass 12", sizeRect(box, 2, 0, -1, 0), textLeft);
        }
    }
};

class NotesView : public DemoView {
public:
    using DemoView::DemoView;
    CRect markAt(int i) const override {
        const int x = i % columns * 16, y = i / columns * 10;
        return placed(asRect(x, y, x + 14, y + 9), i);
    }

protected:
    static constexpr int columns = 100;
    void paintMarks(CGraphic* g, CRect asked) override {
        for (int i = 0; i < noteCount; i++) {
            const CRect box = markAt(i);
            if (intersect(box, asked).empty()) continue;
            g->fillRect(0x305060 + i % 16 * 8, box);
            g->frameRect(0x80a0c0, box);
        }
    }
};

class CablesView : public DemoView {
public:
    using DemoView::DemoView;
    CRect markAt(int i) const override {
        const int x = i % 20 * 70, y = i / 20 * 90;
        return placed(asRect(x, y, x + 240, y + 100), i);
    }

protected:
    static constexpr int pieces = 32;
    void paintMarks(CGraphic* g, CRect asked) override {
        for (int i = 0; i < cableCount; i++) {
            const CRect box = markAt(i);
            if (intersect(box, asked).empty()) continue;
            g->setLineCol(0x58a9ff);
            CPoint from = asPoint(box.left, box.top);
            for (int k = 1; k <= pieces; k++) {
                const double t = double(k) / pieces, s = t * t * (3 - 2 * t);
                const CPoint to = asPoint(box.left + asRound(t * box.width()),
                                          box.top + asRound(s * box.height()));
                g->drawLine(from.x, from.y, to.x, to.y);
                from = to;
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
    stage.measure(state, [&](int turn) { stage.view->scrollBy(turn / 5 % 2 ? -20 : 20, 0); });
}

template <class View>
void zoomStep(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int turn) { stage.view->zoomTo(90 + turn % 20); });
}

template <class View>
void dragStep(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int turn) { stage.view->dragStep(turn); });
}

template <class View>
void wholeRepaint(benchmark::State& state) {
    Stage<View> stage(state);
    stage.measure(state, [&](int) { stage.view->redraw(); });
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
            stage.app.drawNow(stage.win.get(), meter);
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
    BENCHMARK(wholeRepaint<view>)->Apply(atBothScales)

CANVAS_CASES(PartsView);
CANVAS_CASES(NotesView);
CANVAS_CASES(CablesView);
BENCHMARK(hundredMeters)->Apply(atBothScales);
