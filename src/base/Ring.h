#pragma once

#include "base/Atomic.h"

#include <type_traits>

/// A ring of `Capacity` records from one thread to another. No allocation, no waiting.
template <class T, int Capacity>
class Ring {
    static_assert(Capacity > 0 && std::is_trivially_copyable_v<T>);

public:
    Ring() = default;
    Ring(const Ring&) = delete;
    Ring& operator=(const Ring&) = delete;
    ~Ring() = default;

    /// Producer. False when the ring is full: then only this record is lost.
    bool push(const T& record) {
        const int at = tail.load();
        const int next = following(at);
        if (next == head.loadAcquire()) return false;
        slots[at] = record;
        tail.storeRelease(next);
        return true;
    }
    /// Consumer. False, with `record` as it was, when there is none.
    bool pop(T& record) {
        const int at = head.load();
        if (at == tail.loadAcquire()) return false;
        record = slots[at];
        head.storeRelease(following(at));
        return true;
    }
    bool empty() const { return head.loadAcquire() == tail.loadAcquire(); }
    /// Consumer. Drops what waits.
    void clear() { head.storeRelease(tail.loadAcquire()); }

private:
    static constexpr int size = Capacity + 1; ///< one slot stays free, to tell full from empty
    static constexpr int cacheLine = 64;
    static int following(int at) { return at + 1 == size ? 0 : at + 1; }

    alignas(cacheLine) Shared<int> head{0}; ///< next to be read; the consumer's
    alignas(cacheLine) Shared<int> tail{0}; ///< next to be written; the producer's
    T slots[size]{};
};
