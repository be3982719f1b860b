#include "../tests/soak/AskModule.h"

#include "gui/CApp.h"
#include "shell/CMainWin.h"
#include "shell/runapp.h"

#include <csignal>
#include <cstdio>

// The program, which tells when it is asked to end how long the blocks of its device took.

namespace {

volatile std::sig_atomic_t asked = 0;

class Watch : public CCtrl {
public:
    explicit Watch(CMainWin* window) : CCtrl(window, "watch", 0, 0, 0, 0) {}
    void onTimer() override {
        if (!asked) return;
        const AamStatistics s = askStatistics();
        const auto count = [](int64_t n) { return static_cast<long long>(n); };
        std::printf("%lld blocks, %.3f %% over half of their time, %lld late, longest %lld us\n",
                    count(s.blocks), 100.0 * double(s.heavyBlocks) / double(s.blocks),
                    count(s.lateBlocks), count(s.worstMicros));
        std::fflush(stdout);
        std::_Exit(0);
    }
};

} // namespace

int main() {
    std::signal(SIGTERM, [](int) { asked = 1; });
    ProgramRun program;
    if (!program.open()) return 1;
    auto* watch = new Watch(program.mainWindow());
    program.mainWindow()->addControl(watch);
    program.application()->addTimer(watch, 50, true);
    program.run();
    return 0;
}
