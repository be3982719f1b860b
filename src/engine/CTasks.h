#pragma once

#include "base/Atomic.h"

class CObject;
class COnChange;
class CQV;

/// Work that the interface thread leaves for the end of a block. A ring: the interface thread adds,
/// whoever holds the graph runs. The delegates are owned, and freed by the interface thread when
/// their slot is used again.
class CTasks {
public:
    static constexpr int slots = 128;
    static constexpr int maxWaiting = slots - 1;

    explicit CTasks(CQV* host);
    ~CTasks();
    CTasks(const CTasks&) = delete;
    CTasks& operator=(const CTasks&) = delete;

    /// False, with the delegate deleted, when 127 tasks are waiting. Interface thread.
    bool add(COnChange* delegate, CObject* arg);
    /// Runs what waits, but not what those tasks add. From idle only if this thread holds the
    /// graph or no block has run for eleven passes; then takes the graph for it.
    void exec(bool fromIdle);
    /// A turn of a loop in which the interface thread waits for tasks: runs them unless blocks do.
    /// Such turns count as one idle pass every 40 ms.
    void pump();
    int count() const; ///< tasks that wait
    bool full() const { return count() >= maxWaiting; }
    /// True while blocks run the tasks, false when the interface thread does.
    bool blocksComing() const { return !idleOwns; }
    /// No block will come for now: the interface thread takes over at once.
    void audioStopped() { idleOwns = true; }

private:
    struct Slot {
        COnChange* delegate = nullptr;
        CObject* arg = nullptr;
    };
    bool idleMayRun();
    void runAll();

    CQV* qv;
    Slot ring[slots];
    Shared<int> written{0}, done{0}; ///< places in `ring`
    Shared<bool> busy{false};        ///< graph holder
    Shared<bool> idleOwns{true};
    Shared<int> idleRounds{0};
    int lastTurn = 0; ///< asTimeInMS of the last counted turn of `pump`
};
