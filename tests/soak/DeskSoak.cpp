#include "AskModule.h"
#include "Hands.h"
#include "WriteFence.h"

#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "sequencer/song/CSeq.h"
#include "shell/CMainWin.h"
#include "shell/ProjectFlows.h"
#include "shell/runapp.h"
#include "ui/Song.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// Random keys, clicks, wheel turns and drags over the whole program while the demo song plays on
// the Silent clock. A copy of this program that lies with the driver module in a folder of its own,
// the only one in which it can write, runs as the real one, with a watch on its timer.

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* asDesk = "--desk";
constexpr int watchMs = 250, reportMs = 30000, patienceMs = 3000;
/// Blocks of fewer frames may be late on a machine that is busy with painting; they are counted
/// apart, for the hands choose the size as well.
constexpr int fairFrames = 512;
constexpr double settledMegabytes = 12.0; ///< growth behind the first third that is accepted

enum DeskStatus { deskGood = 0, deskLate = 3, deskGrew = 4, deskNoServer = 5 };

double residentMegabytes() {
    long total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

bool hasParts(CSeq* seq) {
    return seq && seq->getProg() && seq->getProg()->hasParts();
}

/// Counts late blocks, whatever device the hands open, and keeps a song playing.
class Watch : public CCtrl {
public:
    Watch(CMainWin* window, int forSeconds)
        : CCtrl(window, "watch", 0, 0, 0, 0), mainWin(window), lengthMs(forSeconds * 1000) {}

    void onTimer() override {
        ms = int(
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun).count());
        count();
        keepPlaying();
        if (firstMegabytes == 0.0 && ms > lengthMs / 3) firstMegabytes = residentMegabytes();
        if (ms - reportedMs >= reportMs || ms >= lengthMs) report();
        if (ms >= lengthMs) _exit(verdict()); // whatever dialog is open
    }
    int verdict() const {
        if (late > 0) return deskLate;
        const bool grew =
            firstMegabytes > 0.0 && residentMegabytes() > firstMegabytes + settledMegabytes;
        return grew ? deskGrew : deskGood;
    }
    void report() {
        reportedMs = ms;
        std::printf("%4d s: %lld blocks, %lld late, %lld of small blocks late, %.1f MB\n",
                    ms / 1000, static_cast<long long>(blocks), static_cast<long long>(late),
                    static_cast<long long>(lateSmall), residentMegabytes());
        std::fflush(stdout);
    }

private:
    void count() {
        const AamStatistics now = askStatistics();
        if (now.blocks < last.blocks) last = {}; // opened anew
        blocks += now.blocks - last.blocks;
        (aam->frames >= fairFrames ? late : lateSmall) += now.lateBlocks - last.lateBlocks;
        last = now;
    }
    void keepPlaying() {
        CQV* host = qv;
        const bool waits = mainWin->app->modalWin || mainWin->flows->loading() || host->playing;
        idleMs = waits ? 0 : idleMs + watchMs;
        if (idleMs < patienceMs) return;
        idleMs = 0;
        if (hasParts(songOf(host)))
            host->start();
        else
            mainWin->flows->requestProject(kindDemo, "");
    }

    CMainWin* mainWin;
    const Clock::time_point begun = Clock::now();
    const int lengthMs;
    int ms = 0, reportedMs = 0, idleMs = 0;
    AamStatistics last{};
    int64_t blocks = 0, late = 0, lateSmall = 0;
    double firstMegabytes = 0.0;
};

int runDesk(int seconds) {
    ProgramRun program;
    if (!program.open()) return deskNoServer;
    auto* watch = new Watch(program.mainWindow(), seconds);
    program.mainWindow()->addControl(watch);
    program.application()->addTimer(watch, watchMs, true);
    program.run();
    watch->report();
    return watch->verdict();
}

/// The program, its driver module and settings that begin with the demo song.
void install(const fs::path& folder) {
    const fs::path self = fs::read_symlink("/proc/self/exe");
    fs::copy_file(self, folder / "desk");
    fs::copy_file(self.parent_path() / "libaam.so", folder / "libaam.so");
    std::ofstream(folder / "Sondrava.ini") << "[options]\nstartwith=2\n";
}

pid_t startDesk(const fs::path& folder, int seconds) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    setenv("HOME", folder.c_str(), 1);
    if (chdir(folder.c_str()) != 0 || !fenceWrites(folder)) {
        std::fprintf(stderr, "this system cannot keep the program from writing elsewhere\n");
        _exit(2);
    }
    execl((folder / "desk").c_str(), "desk", asDesk, std::to_string(seconds).c_str(), nullptr);
    _exit(127);
}

/// The hands play until the program ends; its exit status, or 128 and the signal that killed it.
int play(pid_t desk, Hands& hands, int64_t& acts) {
    int status = 0;
    while (waitpid(desk, &status, WNOHANG) == 0) {
        hands.act();
        ++acts;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int soak(const fs::path& folder, int seconds, unsigned seed) {
    Hands hands(seed);
    if (!hands.open()) return std::fprintf(stderr, "no display\n"), 2;
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    int64_t acts = 0;
    int starts = 0, status = deskGood;
    while (status == deskGood) { // again when the hands have closed it
        const auto left = std::chrono::duration_cast<std::chrono::seconds>(end - Clock::now());
        if (left.count() < 1) break;
        ++starts;
        status = play(startDesk(folder, int(left.count())), hands, acts);
    }
    std::printf("%lld acts, %d starts, seed %u: status %d\n", static_cast<long long>(acts), starts,
                seed, status);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == asDesk) return runDesk(std::atoi(argv[2]));
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (seconds < 1) return std::fprintf(stderr, "desk_soak SECONDS [SEED]\n"), 2;
    std::string folder = "/tmp/desksoakXXXXXX";
    if (!mkdtemp(folder.data())) return 2;
    install(folder);
    const int status = soak(folder, seconds, argc > 2 ? unsigned(std::atoi(argv[2])) : 1);
    fs::remove_all(folder);
    return status;
}
