#include "plugins/PluginTimers.h"

#include <algorithm>
#include <poll.h>

unsigned PluginTimers::add(unsigned periodMs) {
    constexpr unsigned least = 10, most = 60000;
    const std::chrono::milliseconds period(std::clamp(periodMs, least, most));
    timers.push_back({++last, period, Clock::now() + period});
    return last;
}

bool PluginTimers::remove(unsigned number) {
    return std::erase_if(timers, [number](const Timer& t) { return t.number == number; }) > 0;
}

bool PluginTimers::watch(int file, unsigned uses) {
    unwatch(file);
    files.push_back({file, uses});
    return true;
}

bool PluginTimers::unwatch(int file) {
    return std::erase_if(files, [file](const Watched& w) { return w.file == file; }) > 0;
}

/// One that is late is not made up for.
std::vector<unsigned> PluginTimers::due() {
    std::vector<unsigned> found;
    const auto now = Clock::now();
    for (Timer& t : timers) {
        if (now < t.next) continue;
        t.next = now + t.period;
        found.push_back(t.number);
    }
    return found;
}

std::vector<PluginTimers::Watched> PluginTimers::ready() const {
    std::vector<pollfd> asked;
    for (const Watched& w : files)
        asked.push_back(
            {w.file, short((w.uses & readable ? POLLIN : 0) | (w.uses & writable ? POLLOUT : 0)),
             0});
    std::vector<Watched> found;
    if (asked.empty() || poll(asked.data(), asked.size(), 0) <= 0) return found;
    for (const pollfd& p : asked) {
        const unsigned uses = (p.revents & POLLIN ? readable : 0u) |
                              (p.revents & POLLOUT ? writable : 0u) |
                              (p.revents & (POLLERR | POLLHUP) ? broken : 0u);
        if (uses) found.push_back({p.fd, uses});
    }
    return found;
}
