#include "tools/plugins/PluginServer.h"

#include "base/Denormals.h"
#include "base/Futex.h"
#include "engine/LoopCalls.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <sched.h>
#include <thread>
#include <utility>

namespace {

constexpr int editorPauseMs = 30, usualPauseMs = 100;

Shared<int>* culprit = nullptr; ///< for `tellCulprit`, which nothing else can tell where it is
thread_local int workingAt = 0;

/// In a handler of the signals that this process dies of.
void tellCulprit(int) {
    *culprit = workingAt;
}

void watchSignals(Shared<int>& told) {
    culprit = &told;
    struct sigaction act {};
    act.sa_handler = tellCulprit;
    act.sa_flags = int(SA_RESETHAND); // it comes again, and ends the process
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        sigaction(number, &act, nullptr);
}

/// Marks the plug-in at which this thread works.
class AtWork {
public:
    AtWork(Shared<int>& mark, int number) : word(mark) { word = workingAt = number; }
    ~AtWork() { word = workingAt = 0; }
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;

private:
    Shared<int>& word;
};

/// The same for what the interface asks: the timers that come now are its own.
class AtCall : public AtWork {
public:
    AtCall(Shared<int>& mark, int number) : AtWork(mark, number) { loopCalls().mark = number; }
    ~AtCall() { loopCalls().mark = 0; }
    AtCall(const AtCall&) = delete;
    AtCall& operator=(const AtCall&) = delete;
};

std::string bytesOf(const Plugin::Bytes& chunk) {
    return {chunk.begin(), chunk.end()};
}

} // namespace

PluginServer::PluginServer(int socketFile, int roomFile) : socket(socketFile), room(roomFile, 0) {
}

void PluginServer::run() {
    watchSignals(room->culprit);
    std::thread([this] { makeTrips(); }).detach();
    using Clock = std::chrono::steady_clock;
    using Ms = std::chrono::milliseconds;
    LoopCalls& calls = loopCalls();
    calls.onWanted = [] {}; // it is looked for in each turn
    calls.onCall = [this](int number) { room->inCall = workingAt = number; };
    auto due = Clock::now();
    while (!socket.closed()) {
        while (const auto message = socket.receive()) serve(*message);
        const auto now = Clock::now();
        if (now >= due) {
            idle();
            due = Clock::now() + Ms(pauseMs());
        }
        calls.serve();
        int ms = int(std::chrono::duration_cast<Ms>(due - Clock::now()).count()) + 1;
        std::vector<pollfd> files;
        calls.await(files, ms);
        socket.wait(std::max(ms, 0), std::move(files));
    }
}

int PluginServer::pauseMs() const {
    for (const auto& [number, served] : plugins)
        if (served->editorIsOpen()) return editorPauseMs;
    return usualPauseMs;
}

void PluginServer::idle() {
    for (const auto& [number, served] : plugins) {
        const AtCall mark(room->inCall, number);
        served->idle();
    }
}

// What is asked.

void PluginServer::serve(const HelperMessage& message) {
    const int number = message.head.plugin;
    const AtCall mark(room->inCall, number);
    if (message.head.what == HelperCall::load) return load(message);
    const auto at = plugins.find(number);
    if (message.head.what == HelperCall::unload) unload(number);
    if (message.head.what == HelperCall::unload || at == plugins.end()) return answer(message, 0);
    at->second->takeWanted();
    serve(message, *at->second);
}

void PluginServer::answer(const HelperMessage& call, int index, std::string bytes, double number) {
    HelperMessage made;
    made.head = call.head;
    made.head.index = index;
    made.head.number = number;
    made.bytes = std::move(bytes);
    socket.send(std::move(made));
}

void PluginServer::load(const HelperMessage& message) {
    const size_t end = message.bytes.find('\0');
    const CStr path = message.bytes.substr(0, end).c_str();
    const CStr folder = message.bytes.substr(end + 1).c_str();
    auto served = std::make_unique<ServedPlugin>(message.file, folder, message.head.number,
                                                 message.head.index);
    CStr why;
    if (!served->load(path, why)) return answer(message, 0, bytesOf(why));
    Plugin& p = served->get();
    const int facts = loaded | (p.isInstrument() ? isInstrument : 0) |
                      (p.sendsMidi() ? canSendMidi : 0) | (p.hasChunks() ? hasState : 0) |
                      (p.hasEditor() ? hasWindow : 0) | (p.files().empty() ? 0 : hasFiles);
    std::string names = bytesOf(p.vendor()) + '\0' + bytesOf(p.product());
    const int id = p.uniqueId();
    {
        const std::scoped_lock lock(trips);
        plugins[message.head.plugin] = std::move(served);
    }
    answer(message, facts, std::move(names), id);
}

void PluginServer::unload(int number) {
    std::unique_ptr<ServedPlugin> gone;
    const std::scoped_lock lock(trips);
    const auto at = plugins.find(number);
    if (at == plugins.end()) return;
    gone = std::move(at->second);
    plugins.erase(at);
}

void PluginServer::serve(const HelperMessage& message, ServedPlugin& served) {
    const HelperMessage::Head& head = message.head;
    Plugin& p = served.get();
    const CStr text = message.bytes.c_str();
    bool good = true;
    switch (head.what) {
    case HelperCall::stereoPair:
        return answer(message, p.stereoPair(head.number != 0.0, head.index));
    case HelperCall::paramName:
        return answer(message, 1, bytesOf(p.paramName(head.index)));
    case HelperCall::paramText:
        return answer(message, 1, bytesOf(p.paramText(head.index)));
    case HelperCall::paramTexts: {
        std::string all;
        for (const CStr& one : p.paramTexts()) all += ::bytesOf(one) + '\0';
        return answer(message, 1, std::move(all));
    }
    case HelperCall::programName:
        return answer(message, 1, bytesOf(p.programName(head.index)));
    case HelperCall::currentProgramName:
        return answer(message, 1, bytesOf(p.currentProgramName()));
    case HelperCall::chunk:
        served.waitForTrip();
        return answer(message, 1, bytesOf(p.chunk(head.index != 0)));
    case HelperCall::files: {
        std::string all;
        for (const Plugin::File& one : p.files())
            all += ::bytesOf(one.name) + '\0' + ::bytesOf(one.path) + '\0';
        return answer(message, 1, std::move(all));
    }
    case HelperCall::setFile:
        served.changeWhole([&](Plugin& plugin) { plugin.setFile(head.index, text); });
        break;
    case HelperCall::setProgram:
        served.changeWhole([&](Plugin& plugin) { plugin.setProgram(head.index); });
        break;
    case HelperCall::renameProgram:
        served.changeWhole([&](Plugin& plugin) { plugin.renameProgram(text); });
        break;
    case HelperCall::setChunk:
        served.changeWhole([&](Plugin& plugin) {
            good = plugin.setChunk({message.bytes.begin(), message.bytes.end()}, head.index != 0);
        });
        break;
    case HelperCall::setRate:
        served.setRate(head.number);
        break;
    case HelperCall::setBlock:
        served.setBlock(head.index);
        break;
    case HelperCall::setRunning:
        served.changeWhole([&](Plugin& plugin) { plugin.setRunning(head.index != 0); });
        break;
    case HelperCall::openEditor:
        served.openEditor(static_cast<unsigned long>(head.number));
        break;
    case HelperCall::closeEditor:
        served.closeEditor();
        break;
    case HelperCall::load:
    case HelperCall::unload:
        break;
    }
    answer(message, good);
}

// Trips.

void PluginServer::makeTrips() {
    flushDenormals();
    for (unsigned place = 0;; place++) {
        const int number = nextTrip(place);
        const AtWork mark(room->inTrip, number);
        followSchedule();
        const std::scoped_lock lock(trips);
        const auto at = plugins.find(number);
        if (at == plugins.end()) continue;
        ServedPlugin& served = *at->second;
        const int trip = served.makeTrip();
        room->inTrip = 0;
        served.answer(trip);
    }
}

/// The number of the plug-in that stands in that place, once there is one.
int PluginServer::nextTrip(unsigned place) {
    Shared<int>& here = room->waiting[place % HelperRoom::places];
    for (int looked = 0;; looked++) {
        if (const int number = here.loadAcquire()) {
            here = 0;
            return number;
        }
        if (looked < room->spins)
            spinPause();
        else
            sleep(place);
    }
}

void PluginServer::sleep(unsigned place) {
    constexpr int64_t longestNs = 1'000'000'000;
    const int seen = room->bell.loadAcquire();
    room->asleep.exchange(1);
    if (room->waiting[place % HelperRoom::places].loadAcquire() == 0)
        sharedFutexWait(room->bell, seen, longestNs);
    room->asleep.exchange(0);
}

void PluginServer::followSchedule() {
    if (room->policy == policy && room->priority == priority) return;
    policy = room->policy;
    priority = room->priority;
    sched_param param{};
    param.sched_priority = priority;
    sched_setscheduler(0, policy, &param);
}
