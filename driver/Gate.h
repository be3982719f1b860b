#pragma once

#include <atomic>
#include <cstdint>

/// The door between the interface thread and the thread that calls back. One thread passes at a
/// time; the other one opens and shuts it and knows afterwards that nobody is inside.
class Gate {
public:
    /// Audio thread: false when shut. True must be followed by `leave`.
    bool enter() {
        passes.fetch_add(1);
        if (open.load()) return true;
        leave();
        return false;
    }
    void leave() { passes.fetch_add(1); }

    void unlock() { open.store(true); }
    /// Returns once nobody is inside; nobody enters from then on.
    void shut();
    /// Returns once whoever is inside now has left, though others may have entered meanwhile.
    /// What was stored before the call is seen by all who enter later.
    void settle() const;

private:
    std::atomic<bool> open{false};
    std::atomic<uint64_t> passes{0}; ///< odd while somebody is inside
};
