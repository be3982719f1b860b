// The loop of the interface on a real X server: how long a key waits for its answer on the screen,
// and what the loop costs while nothing happens. Needs a display, such as that of xvfb-run.
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr int heartbeatMs = 40;

/// A window of 960 x 640 whose content takes keys and follows the pointer.
class Content : public CCtrl {
public:
    int answered = 0; ///< of the keys, those that were painted
    Clock::time_point answeredAt;
    int keys = 0, moves = 0, paints = 0;

    explicit Content(CWin* owner) : CCtrl(owner, "content", 0, 0, 960, 640) {}
    bool keyDown(int, int) override {
        keys++;
        redraw();
        return true;
    }
    void mouseMove(int, int, int) override {
        moves++;
        redraw();
    }
    void paint(CGraphic* g, CRect rect) override {
        paints++;
        for (int y = 0; y < rect.bottom; y += 4) // about what a view of a song draws
            for (int x = 0; x < rect.right; x += 80)
                g->fillRect((x + y + keys) * 0x10101, asRect(x, y, x + 78, y + 3));
        if (keys == answered) return;
        XSync(liveDisplay(), False); // on the screen
        answeredAt = Clock::now();
        answered = keys;
    }
};

class Desk {
public:
    CApp app;
    std::unique_ptr<CWin> win;
    Content* content = nullptr;

    Desk() {
        if (!app.open()) return;
        win = std::make_unique<CWin>(&app, nullptr, "bench", 0, 0, 960, 640, winNoBorder);
        content = new Content(win.get());
        win->addControl(content);
        win->show(true);
        win->setFocus(true);
        win->setKeyCtrl(content);
        app.addTimer(content, heartbeatMs, true);
    }
    void turn() {
        app.dispatchEvents();
        app.longIdle();
    }
};

void send(Display* display, Window window, int type, int at) {
    XEvent event{};
    event.type = type;
    if (type == KeyPress) {
        event.xkey.window = window;
        event.xkey.keycode = 38;
    } else {
        event.xmotion.window = window;
        event.xmotion.x = at % 900;
        event.xmotion.y = at % 600;
    }
    XSendEvent(display, window, False, NoEventMask, &event);
    XFlush(display);
}

/// A key at a random moment, while the pointer moves `motionsPerSecond` times.
void KeyToScreen(benchmark::State& state) {
    Desk desk;
    if (!desk.win) {
        state.SkipWithError("no display");
        return;
    }
    const auto motionsPerSecond = int(state.range(0));
    std::atomic<bool> ended{false};
    std::thread mover([&] {
        Display* display = XOpenDisplay(nullptr);
        for (int i = 0; motionsPerSecond && !ended; i++) {
            send(display, desk.win->handle, MotionNotify, i);
            std::this_thread::sleep_for(std::chrono::microseconds(1000000 / motionsPerSecond));
        }
        XCloseDisplay(display);
    });
    Display* typist = XOpenDisplay(nullptr);
    std::mt19937 random(1);
    std::vector<double> times; // milliseconds
    for (auto _ : state) {
        const auto until = Clock::now() + std::chrono::microseconds(5000 + random() % 40000);
        while (Clock::now() < until) {
            desk.app.dispatchEvents();
            desk.app.idle();
        }
        const int before = desk.content->answered;
        std::atomic<Clock::time_point> sent{Clock::time_point()};
        std::thread finger([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
            sent = Clock::now();
            send(typist, desk.win->handle, KeyPress, 0);
        });
        while (desk.content->answered == before) desk.turn();
        finger.join();
        const std::chrono::duration<double> took = desk.content->answeredAt - sent.load();
        state.SetIterationTime(took.count());
        times.push_back(took.count() * 1000);
    }
    ended = true;
    mover.join();
    XCloseDisplay(typist);
    std::sort(times.begin(), times.end());
    state.counters["p50_ms"] = times[times.size() / 2];
    state.counters["p99_ms"] = times[times.size() * 99 / 100];
    state.counters["worst_ms"] = times.back();
}

/// What the process takes of a core with its window open and the heartbeat on.
void Idle(benchmark::State& state) {
    const auto used = [] {
        timespec t;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
    };
    Desk desk;
    if (!desk.win) {
        state.SkipWithError("no display");
        return;
    }
    while (desk.content->paints == 0) desk.turn();
    double share = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const double before = used();
        while (Clock::now() - start < std::chrono::seconds(5)) desk.turn();
        const std::chrono::duration<double> passed = Clock::now() - start;
        share = (used() - before) / passed.count();
    }
    state.counters["percent_of_core"] = share * 100;
}

BENCHMARK(KeyToScreen)
    ->Arg(0)
    ->Arg(1000)
    ->UseManualTime()
    ->Iterations(300)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Idle)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

BENCHMARK_MAIN();
