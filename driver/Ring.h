#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <vector>

/// A fixed queue between one thread that puts and one that takes, without locks.
template <class T>
class Ring {
public:
    /// Holds at least `wanted` items, 1 or more.
    explicit Ring(size_t wanted) : items(std::bit_ceil(wanted)), mask(items.size() - 1) {}

    /// Room left, as the putting thread sees it.
    size_t room() const { return items.size() - (head.load(own) - tail.load(theirs)); }
    /// Items waiting, as the taking thread sees it.
    size_t waiting() const { return head.load(theirs) - tail.load(own); }

    /// Puts all or nothing; false when they do not fit.
    bool put(const T* from, size_t count) {
        if (count > room()) return false;
        const size_t at = head.load(own);
        const size_t first = std::min(count, items.size() - (at & mask));
        std::copy_n(from, first, items.data() + (at & mask));
        std::copy_n(from + first, count - first, items.data());
        head.store(at + count, std::memory_order_release);
        return true;
    }
    bool put(const T& item) { return put(&item, 1); }

    /// Takes up to `count` items and says how many.
    size_t take(T* to, size_t count) {
        count = std::min(count, waiting());
        const size_t at = tail.load(own);
        const size_t first = std::min(count, items.size() - (at & mask));
        std::copy_n(items.data() + (at & mask), first, to);
        std::copy_n(items.data(), count - first, to + first);
        tail.store(at + count, std::memory_order_release);
        return count;
    }
    bool take(T& item) { return take(&item, 1) == 1; }

    /// Taking thread: forgets what waits.
    void drop() { tail.store(head.load(theirs), std::memory_order_release); }

private:
    static constexpr auto own = std::memory_order_relaxed;
    static constexpr auto theirs = std::memory_order_acquire;
    std::vector<T> items;
    size_t mask;
    std::atomic<size_t> head{0}, tail{0};
};
