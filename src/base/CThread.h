#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"

#include <condition_variable>
#include <mutex>
#include <thread>

/// A mutex; not recursive.
class CLock {
public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }

private:
    std::mutex mutex;
};

/// A worker. A subclass writes `execute` as a loop that calls `checkPark` at its top, works, waits
/// in `suspend` or `asSleep`, and returns once `terminated` is set. Over `checkPark` and `suspend`
/// it keeps no pointer to anything that may be deleted. Its destructor calls `finish` first.
class CThread : public CObject {
public:
    Shared<bool> terminated{false}; ///< shall end, or has
    bool joinable = true;           ///< false: `waitFor` does nothing

    CThread() = default;
    ~CThread() override;
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    virtual void execute() = 0;

    /// Once. Where the system gives no thread, this one counts as ended.
    void start();
    /// Asks for round-robin real-time scheduling, priority 1 to 99. Where that is not granted the
    /// thread stays as it is.
    void setPriority(int priority);
    /// The same with a policy of the system.
    void takeSchedule(int policy, int priority);
    /// Wakes the thread, or keeps it from its next `suspend`. Takes a lock: not for the audio
    /// thread.
    void resume();
    void waitFor(); ///< until `execute` has returned
    /// Sets `terminated`, wakes the thread and waits for its end. Any number of times.
    void finish();

    /// Returns once the thread stands still in `checkPark` or `suspend`, or does not run. Nests:
    /// each call needs its `unpark`.
    void park();
    void unpark();

    /// The thread itself: waits for `resume`, the end, or, unless below 0, `ms` milliseconds.
    void suspend(int ms = -1);
    /// The thread itself: stands still while it is asked to.
    void checkPark();
    /// Whether it is asked to end or to stand still: long work stops then and goes on later.
    bool shallPause() const { return terminated || parkWanted > 0; }

private:
    using Lock = std::unique_lock<std::mutex>;
    void run();
    bool isSelf() const;
    bool mayGoOn() const { return terminated || parkWanted == 0; }

    std::thread handle;
    std::mutex mutex;                   ///< of all below
    std::condition_variable wake;       ///< the thread waits
    std::condition_variable stillOrEnd; ///< `park` waits
    Shared<int> parkWanted{0};          ///< pending calls of `park`; peeked at without the mutex
    bool woken = false, parked = false, running = false;
};
