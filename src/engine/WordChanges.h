#pragma once

#include "base/Atomic.h"

#include <vector>

/// What a step changes in single words of the graph: flat lists of their addresses, collected by
/// the interface thread, so that the graph changes all of them without looking at anything else.
/// The words outlive it, and others read them by relaxed atomic access.
class WordChanges {
public:
    /// Two words will hold what the other one held.
    template <class T>
    void exchange(Shared<T*>& a, Shared<T*>& b) {
        exchanges.push_back(
            {reinterpret_cast<void**>(a.address()), reinterpret_cast<void**>(b.address())});
    }
    void add(int* number, int by) { additions.push_back({number, by}); }
    /// Other threads may change other bits of the word meanwhile.
    void toggle(unsigned* flags, unsigned bits) { toggles.push_back({flags, bits}); }
    void clear();

    /// Changes them, those of a kind in the order in which they came. Graph holder; no allocation.
    void carryOut() const;

private:
    struct Exchange {
        void **a, **b;
    };
    struct Addition {
        int* number;
        int by;
    };
    struct Toggle {
        unsigned* flags;
        unsigned bits;
    };
    std::vector<Exchange> exchanges;
    std::vector<Addition> additions;
    std::vector<Toggle> toggles;
};
