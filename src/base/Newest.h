#pragma once

#include "base/Atomic.h"

/// Hands the newest value from one thread to another without a lock or a copy: of three slots the
/// writer fills one, the reader looks at one, and one waits. What nobody has taken when the next
/// value comes is lost.
template <class T>
class Newest {
public:
    /// The slot to fill, with what an older value left in it. Writer.
    T& draft() { return slots[drafted]; }
    /// Makes the draft the newest value. Writer.
    void publish() { drafted = waiting.exchange(drafted | fresh) & ~fresh; }

    /// Goes on to the newest value; false when it is taken already. Reader.
    bool take() {
        if (!(waiting & fresh)) return false;
        read = waiting.exchange(read) & ~fresh;
        return true;
    }
    /// What was taken last, at first a `T` of its default. Reader.
    const T& taken() const { return slots[read]; }

    /// Gives every slot this value; nothing is fresh then. Neither writer nor reader may be at
    /// work.
    void fill(const T& value) {
        for (T& slot : slots) slot = value;
        waiting &= ~fresh;
    }

private:
    static constexpr int fresh = 4; ///< added to the number of the waiting slot

    T slots[3] = {};
    int drafted = 0, read = 1;
    Shared<int> waiting{2};
};
