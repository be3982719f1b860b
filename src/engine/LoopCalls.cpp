#include "engine/LoopCalls.h"

#include <algorithm>
#include <utility>

LoopCalls& loopCalls() {
    static LoopCalls calls;
    return calls;
}

unsigned LoopCalls::noteWanted() {
    if (empty() && onWanted) onWanted();
    return ++last;
}

unsigned LoopCalls::addTimer(unsigned periodMs, std::function<void()> due) {
    constexpr unsigned least = 10, most = 60000;
    const unsigned number = noteWanted();
    const std::chrono::milliseconds period(std::clamp(periodMs, least, most));
    timers.push_back({number, mark, period, Clock::now() + period, std::move(due)});
    return number;
}

unsigned LoopCalls::watch(int file, unsigned uses, std::function<void(unsigned)> ready) {
    const unsigned number = noteWanted();
    files.push_back({number, mark, file, uses, std::move(ready)});
    return number;
}

bool LoopCalls::remove(unsigned number) {
    const auto isIt = [number](const auto& one) { return one.number == number; };
    return std::erase_if(timers, isIt) + std::erase_if(files, isIt) > 0;
}

template <class F>
void LoopCalls::call(int marked, F&& made) {
    if (onCall) onCall(marked);
    made();
    if (onCall) onCall(0);
}

/// A call may take itself or others away, so each is looked for anew, and called as a copy.
void LoopCalls::serveTimers() {
    const auto now = Clock::now();
    std::vector<unsigned> due;
    for (Timer& t : timers) {
        if (now < t.next) continue;
        t.next = now + t.period;
        due.push_back(t.number);
    }
    for (const unsigned number : due) {
        const auto at = std::ranges::find(timers, number, &Timer::number);
        if (at == timers.end()) continue;
        call(at->mark, [made = at->due] { made(); });
    }
}

void LoopCalls::serveFiles() {
    std::vector<pollfd> asked;
    std::vector<unsigned> numbers;
    int ms = 0;
    await(asked, ms);
    for (const Watched& w : files) numbers.push_back(w.number);
    if (asked.empty() || poll(asked.data(), asked.size(), 0) <= 0) return;
    for (size_t i = 0; i < asked.size(); i++) {
        const short told = asked[i].revents;
        const unsigned uses = (told & POLLIN ? readable : 0u) | (told & POLLOUT ? writable : 0u) |
                              (told & (POLLERR | POLLHUP | POLLNVAL) ? broken : 0u);
        const auto at = std::ranges::find(files, numbers[i], &Watched::number);
        if (!uses || at == files.end()) continue;
        call(at->mark, [made = at->ready, uses] { made(uses); });
    }
}

void LoopCalls::serve() {
    serveTimers();
    serveFiles();
}

void LoopCalls::idle() {
    if (!onWanted) serve();
}

void LoopCalls::await(std::vector<pollfd>& awaited, int& ms) const {
    for (const Watched& w : files) {
        const int events = (w.uses & readable ? POLLIN : 0) | (w.uses & writable ? POLLOUT : 0);
        awaited.push_back({w.file, short(events), 0});
    }
    const auto now = Clock::now();
    for (const Timer& t : timers) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(t.next - now).count();
        ms = std::clamp(int(left), 0, ms);
    }
}
