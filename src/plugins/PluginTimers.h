#pragma once

#include <chrono>
#include <vector>

/// The timers that a plug-in asks its host for, and the files that it waits for. Interface thread,
/// which serves them as often as it can.
class PluginTimers {
public:
    enum FileUse : unsigned { readable = 1, writable = 2, broken = 4 };

    unsigned add(unsigned periodMs); ///< its number
    bool remove(unsigned number);    ///< false for one that is not there
    bool watch(int file, unsigned uses);
    bool unwatch(int file);

    /// Calls `timer(number)` for those that are due and `file(number, uses)` for those that are
    /// ready. These may add and remove.
    template <class T, class F>
    void serve(T&& timer, F&& file) {
        for (const unsigned number : due()) timer(number);
        for (const Watched& w : ready()) file(w.file, w.uses);
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        unsigned number;
        std::chrono::milliseconds period;
        Clock::time_point next;
    };
    struct Watched {
        int file;
        unsigned uses;
    };

    std::vector<unsigned> due();
    std::vector<Watched> ready() const;

    std::vector<Timer> timers;
    std::vector<Watched> files;
    unsigned last = 0;
};
