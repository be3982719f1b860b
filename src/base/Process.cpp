#include "base/Process.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int exitNotFound = 127;

/// Starts a program without our other files; false if that failed.
bool spawn(const CStringList& argv, pid_t& pid) {
    std::vector<CStr> texts;
    for (const CStringItem* item : argv.list) texts.push_back(item->text);
    if (texts.empty()) return false;
    std::vector<char*> args;
    args.reserve(texts.size() + 1);
    for (CStr& text : texts) args.push_back(text.buffer());
    args.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    const int error = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0;
}

int exitStatus(int status) {
    constexpr int signalBase = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : signalBase + WTERMSIG(status);
}

int waitForExit(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return exitNotFound;
    }
    return exitStatus(status);
}

bool openByDesktop(const CStr& target) {
    if (target.empty() || target[0] == '-') return false;
    CStringList argv;
    argv.append("xdg-open");
    argv.append(target);
    return startProcess(argv);
}

} // namespace

int runProcess(const CStringList& argv) {
    pid_t pid = 0;
    return spawn(argv, pid) ? waitForExit(pid) : exitNotFound;
}

int runProcess(const CStringList& argv, const std::function<bool()>& goOn) {
    constexpr auto pause = std::chrono::milliseconds(10);
    pid_t pid = 0;
    if (!spawn(argv, pid)) return exitNotFound;
    int status = 0;
    for (pid_t ended = 0; ended != pid; ended = waitpid(pid, &status, WNOHANG)) {
        if (ended < 0 && errno != EINTR) return exitNotFound;
        if (!goOn()) {
            kill(pid, SIGTERM);
            return waitForExit(pid);
        }
        std::this_thread::sleep_for(pause);
    }
    return exitStatus(status);
}

bool startProcess(const CStringList& argv) {
    pid_t pid = 0;
    if (!spawn(argv, pid)) return false;
    try {
        std::thread(waitForExit, pid).detach();
    } catch (const std::system_error&) {
        return true; // it runs, and stays a zombie until we end
    }
    return true;
}

void raiseFileLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = std::min<rlim_t>(limit.rlim_max, mostOpenFiles);
    if (limit.rlim_cur >= wanted) return;
    limit.rlim_cur = wanted;
    setrlimit(RLIMIT_NOFILE, &limit);
}

bool showFolder(const CStr& path) {
    return openByDesktop(path);
}

bool openURL(const CStr& url) {
    return openByDesktop(url);
}
