#include "plugins/scan/PluginScan.h"

#include "base/Numbers.h"
#include "base/Paths.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* silent = "It told nothing of itself.";

/// The variables of this process, but with another home; empty for the same one.
std::vector<std::string> variables(const std::string& home) {
    constexpr const char* placed[] = {
        "HOME=", "XDG_CONFIG_HOME=", "XDG_DATA_HOME=", "XDG_STATE_HOME=", "XDG_CACHE_HOME="};
    std::vector<std::string> all;
    for (char** at = environ; *at; at++) {
        const std::string_view one = *at;
        const auto begins = [one](const char* name) { return one.starts_with(name); };
        if (home.empty() || std::ranges::none_of(placed, begins)) all.emplace_back(one);
    }
    if (home.empty()) return all;
    const char* own = std::getenv("HOME");
    if (own && !std::getenv("XAUTHORITY")) // a display may be asked for
        all.push_back(std::string("XAUTHORITY=") + own + "/.Xauthority");
    all.push_back("HOME=" + home);
    return all;
}

} // namespace

/// A process that looks at one file, and what it writes.
class PluginScan::Child {
public:
    const CStr file;
    const FileMark mark;
    bool wantsHome = false; ///< it was not loaded, and may be with the user's home

    Child(const CStr& path, const FileMark& known) : file(path), mark(known) {}
    ~Child() {
        if (pid > 0) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        if (output >= 0) close(output);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// With this home folder; empty for the user's.
    bool start(const CStr& program, const std::string& home) {
        atHome = home.empty();
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) return false;
        output = ends[0];
        fcntl(output, F_SETFL, O_NONBLOCK);
        CStr name = program, option = "--scan", path = file;
        char* argv[] = {name.buffer(), option.buffer(), path.buffer(), nullptr};
        std::vector<std::string> given = variables(home);
        std::vector<char*> env;
        env.reserve(given.size() + 1);
        for (std::string& one : given) env.push_back(one.data());
        env.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
        const bool started =
            posix_spawn(&pid, program.asChar(), &actions, nullptr, argv, env.data()) == 0;
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        if (!started) pid = 0;
        return started;
    }

    /// Whether it has come to its end; `why` tells what went wrong, empty for nothing.
    bool ended(std::chrono::milliseconds limit, CStr& why) {
        take();
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) {
            pid = 0;
            take();
            if (WIFSIGNALED(status))
                why = CStr("It crashed (") + strsignal(WTERMSIG(status)) + ").";
            else if (WEXITSTATUS(status) != 0)
                why = said.empty() ? CStr("It could not be loaded.") : lastLine();
            wantsHome = !atHome && WIFEXITED(status) && WEXITSTATUS(status) != 0;
            return true;
        }
        if (Clock::now() - began < limit) return false;
        why = "It took longer than " + asStr(int(limit.count() / 1000)) +
              (limit.count() < 2000 ? " second." : " seconds.");
        return true;
    }
    CStr text() const { return CStr(said.c_str()).trim(); }

private:
    CStr lastLine() const {
        const CStr all = text();
        const std::string lines = all.asChar();
        return lines.substr(lines.rfind('\n') + 1).c_str();
    }
    void take() {
        char room[1024];
        constexpr size_t most = 1 << 20;
        for (ssize_t n; (n = read(output, room, sizeof room)) > 0;)
            if (said.size() < most) said.append(room, size_t(n));
    }

    pid_t pid = 0;
    int output = -1;
    bool atHome = true;
    std::string said;
    const Clock::time_point began = Clock::now();
};

PluginScan::PluginScan(PluginList& to, const CStr& helperProgram)
    : helper(helperProgram), list(to) {
}

PluginScan::~PluginScan() {
    cancel();
    std::error_code ignored;
    if (!home.empty()) std::filesystem::remove_all(home, ignored);
}

void PluginScan::add(const std::vector<CStr>& files) {
    if (!busy()) finished = 0;
    for (const CStr& file : files)
        if (std::ranges::find(waiting, file) == waiting.end()) waiting.push_back(file);
}

void PluginScan::cancel() {
    waiting.clear();
    running.clear();
}

/// The user's where none can be made.
const std::string& PluginScan::strangeHome() {
    if (!home.empty()) return home;
    std::string room = (addSep(getTempFolder()) + "plugins-XXXXXX").asChar();
    if (mkdtemp(room.data())) home = room;
    return home;
}

bool PluginScan::startAtHome(std::unique_ptr<Child>& child) {
    auto again = std::make_unique<Child>(child->file, child->mark);
    const bool started = again->start(helper, "");
    if (started) child = std::move(again);
    return started;
}

bool PluginScan::start(const CStr& file) {
    const auto mark = FileMark::of(file);
    if (!mark) return false;
    auto child = std::make_unique<Child>(file, *mark);
    if (child->start(helper, strangeHome())) {
        running.push_back(std::move(child));
        return false;
    }
    note(file, *mark, "", "The program that looks at plug-ins does not start.");
    return true;
}

bool PluginScan::poll() {
    bool changed = false;
    for (size_t i = 0; i < running.size();) {
        CStr why;
        Child& child = *running[i];
        if (!child.ended(limit, why)) {
            i++;
            continue;
        }
        if (child.wantsHome && startAtHome(running[i])) continue;
        note(child.file, child.mark, child.text(), why);
        running.erase(running.begin() + long(i));
        changed = true;
    }
    while (int(running.size()) < together && !waiting.empty()) {
        const CStr next = waiting.front();
        waiting.pop_front();
        changed = start(next) || changed;
    }
    return changed;
}

/// What a file has told before its end counts.
void PluginScan::note(const CStr& file, const FileMark& mark, const CStr& said, const CStr& why) {
    std::vector<PluginList::Entry> found;
    std::istringstream lines(said.asChar());
    for (std::string line; std::getline(lines, line);)
        if (const auto facts = PluginFacts::fromLine(line.c_str()))
            found.push_back({PluginFile(file, facts->inside).text(), mark, *facts, ""});
    const bool empty = said == PluginFacts::none;
    if (found.empty() || !why.empty())
        found.push_back({file, mark, {}, why.empty() && !empty ? CStr(silent) : why});
    list.put(file, std::move(found));
    finished++;
}
