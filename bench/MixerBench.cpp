#include "OwnDisplay.h"
#include "ProgramDesk.h"

#include "mixer/CMixerPanel.h"
#include "mixer/CMixerStrip.h"
#include "mixer/CMixerWin.h"

#include <unistd.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <thread>

// The mixer of 128 strips, all of whose meters move 25 times a second, in a window of 1600 x 1000
// on a server of its own: what the interface and that server take of a core, and how long steps
// take that a user waits for.

namespace {

constexpr int stripCount = 128, ticksPerSecond = 25, seconds = 8, steps = 300;
constexpr double pi = 3.14159265358979;

OwnDisplay& server() {
    static OwnDisplay one(1600, 1000);
    return one;
}

class Program : public ProgramDesk {
public:
    Program() {
        if (!ready()) return;
        for (int i = 0; i < stripCount; i++) seq()->addTrack(trackAudio, seq()->getProg(), nullptr);
        seq()->songNotices.raise(SeqNotice::tracks);
        win->onAction(win->getAction("mixer"));
        turn(20);
    }
    CMixerPanel* panel() {
        return static_cast<CMixerWin*>(win->pages->editorOf(&win->flows->mixer))->strips();
    }
    /// Each strip has its own tune.
    void moveMeters(int tick) {
        int i = 0;
        for (const CMixerStrip* s : panel()->strips()) {
            COutputChannel* ch = s->strip().channel;
            const double phase = tick * 0.21 + i++ * 0.7;
            ch->peakL = float(0.5 + 0.45 * std::sin(phase));
            ch->peakR = float(0.5 + 0.45 * std::sin(phase * 1.3));
            ch->holdL = std::max(float(ch->holdL), float(ch->peakL));
            ch->holdR = std::max(float(ch->holdR), float(ch->peakR));
        }
    }
    int stripsInView() {
        int count = 0;
        for (const CMixerStrip* s : panel()->strips()) count += !s->visibleRect().empty();
        return count;
    }
};

Program& program() {
    server();
    static Program one;
    return one;
}

/// Seconds of processor time that a process has taken.
double takenBy(pid_t process) {
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    std::istringstream rest(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 0; i < 11; i++) rest >> skipped;
    double user = 0, system = 0;
    rest >> user >> system;
    return (user + system) / double(sysconf(_SC_CLK_TCK));
}

double takenByThread() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

void playMeters(benchmark::State& state) {
    Program& p = program();
    if (!p.ready()) return state.SkipWithError("no display");
    p.panel()->setWide(state.range(0) != 0);
    p.turn(5);
    for (auto _ : state) {
        const double before = takenByThread(), serverBefore = takenBy(server().server);
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < seconds * ticksPerSecond; i++) {
            p.moveMeters(i);
            p.win->onTimer();
            p.app.dispatchEvents();
            p.paint();
            std::this_thread::sleep_until(
                start + std::chrono::microseconds(1000000 / ticksPerSecond * (i + 1)));
        }
        state.counters["interface_percent"] = 100 * (takenByThread() - before) / seconds;
        state.counters["server_percent"] =
            100 * (takenBy(server().server) - serverBefore) / seconds;
    }
    state.counters["in_view"] = p.stripsInView();
}

template <class F>
void measure(benchmark::State& state, F&& step) {
    Program& p = program();
    if (!p.ready()) return state.SkipWithError("no display");
    p.panel()->setWide(true);
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

void scrollAlong(benchmark::State& state) {
    measure(state, [](Program& p, int i) {
        p.panel()->mouseWheel(300, 300, 0, i / 30 % 2 ? 32 : -32, 0);
    });
}

void paintWhole(benchmark::State& state) {
    measure(state, [](Program& p, int) { p.panel()->redraw(); });
}

/// A fader of all strips at once.
void moveAllFaders(benchmark::State& state) {
    Program& p = program();
    if (!p.ready()) return state.SkipWithError("no display");
    p.panel()->state.selectAll();
    measure(state, [](Program& q, int i) {
        const CMixerStrip* first = q.panel()->strips()[1];
        for (auto* c : first->controls)
            if (c->id == "volume") c->enterNumber(Accessible::wholeCtrl, 0.3 + i % 50 * 0.01);
        q.panel()->refresh();
    });
    p.panel()->state.unselect();
}

BENCHMARK(playMeters)->Arg(1)->Arg(0)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(scrollAlong)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(paintWhole)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(moveAllFaders)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
