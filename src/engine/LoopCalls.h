#pragma once

#include <chrono>
#include <functional>
#include <poll.h>
#include <vector>

/// Timers, and files that are waited for, of what has no loop of its own, such as plug-ins. Who
/// runs the loop of the interface serves them; where there is none, idle passes do. Interface
/// thread.
class LoopCalls {
public:
    enum FileUse : unsigned { readable = 1, writable = 2, broken = 4 };

    /// A number for `remove`, above 0. Periods are kept within 10 ms and a minute.
    unsigned addTimer(unsigned periodMs, std::function<void()> due);
    unsigned watch(int file, unsigned uses, std::function<void(unsigned uses)> ready);
    bool remove(unsigned number); ///< also from inside a call; false for one that is not there

    bool empty() const { return timers.empty() && files.empty(); }
    /// Calls what is due or ready. What is late is not made up for.
    void serve();
    /// Serves where no loop does, as `onWanted` tells.
    void idle();
    /// What a loop has to wait for: appends the files, and lowers `ms` to the next timer.
    void await(std::vector<pollfd>& awaited, int& ms) const;

    /// Of who runs a loop: the first has come.
    std::function<void()> onWanted;
    /// Kept with what comes, and told to `onCall` before it is called; 0 afterwards.
    int mark = 0;
    std::function<void(int mark)> onCall;

private:
    using Clock = std::chrono::steady_clock;
    struct Timer {
        unsigned number;
        int mark;
        std::chrono::milliseconds period;
        Clock::time_point next;
        std::function<void()> due;
    };
    struct Watched {
        unsigned number;
        int mark, file;
        unsigned uses;
        std::function<void(unsigned)> ready;
    };

    unsigned noteWanted();
    void serveTimers();
    void serveFiles();
    template <class F>
    void call(int marked, F&& made);

    std::vector<Timer> timers;
    std::vector<Watched> files;
    unsigned last = 0;
};

/// Those of the program.
LoopCalls& loopCalls();
