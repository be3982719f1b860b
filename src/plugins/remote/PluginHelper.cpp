#include "plugins/remote/PluginHelper.h"

#include "base/Futex.h"
#include "engine/Cycle.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

bool spawn(const CStr& program, int socket, int room, pid_t& pid) {
    CStr name = program, option = "--serve";
    char* argv[] = {name.buffer(), option.buffer(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, socket, socketFile);
    posix_spawn_file_actions_adddup2(&actions, room, roomFile);
    posix_spawn_file_actions_addclosefrom_np(&actions, helperFilesEnd);
    const int error = posix_spawn(&pid, program.asChar(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0;
}

/// A copy above the numbers that the helper knows its files by, closed in it and at the end.
class HighFile {
public:
    explicit HighFile(int file) : number(fcntl(file, F_DUPFD_CLOEXEC, lowest)) {}
    ~HighFile() { close(number); }
    HighFile(const HighFile&) = delete;
    HighFile& operator=(const HighFile&) = delete;

    const int number;

private:
    static constexpr int lowest = 64;
};

} // namespace

std::shared_ptr<PluginHelper> PluginHelper::start(const CStr& program) {
    auto room = std::make_unique<HelperShare>();
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return nullptr;
    pid_t pid = 0;
    const bool started =
        spawn(program, HighFile(ends[1]).number, HighFile(room->file()).number, pid);
    close(ends[1]);
    if (started)
        return std::shared_ptr<PluginHelper>(new PluginHelper(pid, ends[0], std::move(room)));
    close(ends[0]);
    return nullptr;
}

PluginHelper::PluginHelper(int process, int socketEnd, std::unique_ptr<HelperShare> made)
    : shared(std::move(made)), socket(socketEnd), pid(process), watcher([this] { watch(); }) {
}

PluginHelper::~PluginHelper() {
    end();
    watcher.join();
    giveUp();
}

void PluginHelper::end() {
    if (!gone()) kill(pid, SIGKILL);
}

void PluginHelper::endHanging(bool inTrip) {
    hung = true;
    hungAt = inTrip ? room().inTrip : room().inCall;
    end();
}

/// Whoever waits for an answer is woken.
void PluginHelper::watch() {
    int how = 0;
    siginfo_t about{};
    while (waitid(P_PID, id_t(pid), &about, WEXITED | WNOWAIT) != 0 && errno == EINTR) continue;
    status = about.si_code == CLD_EXITED ? 0 : about.si_status;
    dead.storeRelease(true);
    waitpid(pid, &how, 0);
    const std::scoped_lock lock(guard);
    for (const auto& [number, room] : rooms) sharedFutexWake((*room)->answered, 1);
}

CStr PluginHelper::why() const {
    if (hung) return "It did not come back.";
    return status == 0 ? CStr("It has ended by itself.")
                       : CStr("It crashed (") + strsignal(status) + ").";
}

int PluginHelper::join(std::shared_ptr<Room> of) {
    const std::scoped_lock lock(guard);
    int number = 1;
    while (rooms.count(number) > 0) number++;
    if (number >= int(HelperRoom::places)) return 0;
    rooms[number] = std::move(of);
    return number;
}

void PluginHelper::leave(int number) {
    const std::scoped_lock lock(guard);
    rooms.erase(number);
}

int PluginHelper::culprit() const {
    return hung ? hungAt : int(room().culprit);
}

/// The thread that works out trips gets the priority of the one that waits for them.
void PluginHelper::followSchedule() {
    if (scheduled || !insideCallback()) return;
    scheduled = true;
    sched_param param{};
    const int policy = sched_getscheduler(0);
    if (policy < 0 || sched_getparam(0, &param) != 0) return;
    room().priority = param.sched_priority;
    room().policy = policy;
}

void PluginHelper::ring(int number) {
    followSchedule();
    room().waiting[room().taken.fetchAdd(1) % HelperRoom::places].storeRelease(number);
    if (!room().asleep.exchange(0)) return;
    room().bell.fetchAdd(1);
    sharedFutexWake(room().bell, 1);
}

unsigned PluginHelper::post(HelperMessage message, Answer answer, Time limit) {
    message.head.turn = ++turns;
    if (gone()) {
        if (answer) answer(nullptr);
        return turns;
    }
    pending[turns] = {std::move(answer), Clock::now() + limit};
    socket.send(std::move(message));
    return turns;
}

bool PluginHelper::waitFor(unsigned turn, Time wait) {
    const auto until = Clock::now() + wait;
    for (;;) {
        poll();
        const auto at = pending.find(turn);
        if (at == pending.end()) return true;
        const auto left = std::chrono::duration_cast<Time>(until - Clock::now()).count();
        at->second.late = left <= 0;
        if (left <= 0) return false;
        socket.wait(int(left));
    }
}

std::optional<HelperMessage> PluginHelper::call(HelperMessage message, Time wait) {
    for (const auto& [turn, p] : pending)
        if (p.late) return std::nullopt;
    auto found = std::make_shared<std::optional<HelperMessage>>();
    const auto keep = [found](const HelperMessage* answer) {
        if (answer) *found = *answer;
    };
    waitFor(post(std::move(message), keep, std::max(wait, hangs)), wait);
    return std::move(*found);
}

void PluginHelper::take(const HelperMessage& message) {
    const auto at = pending.find(message.head.turn);
    if (message.file >= 0) close(message.file);
    if (at == pending.end()) return;
    const Answer answer = std::move(at->second.answer);
    pending.erase(at);
    if (answer) answer(&message);
}

void PluginHelper::poll() {
    while (const auto message = socket.receive()) take(*message);
    const auto now = Clock::now();
    for (const auto& [turn, p] : pending)
        if (now > p.until && !gone() && !hung) endHanging(false);
    if (!gone() && !socket.closed()) return;
    end();
    giveUp();
}

void PluginHelper::giveUp() {
    for (auto all = std::exchange(pending, {}); auto& [turn, p] : all)
        if (p.answer) p.answer(nullptr);
}
