#include "engine/WordChanges.h"

#include <atomic>

namespace {

/// So many changes ahead a word is asked for, which none of the caches may hold: by then it is
/// there.
constexpr size_t ahead = 16;

template <class T>
T load(T* word) {
    return std::atomic_ref<T>(*word).load(std::memory_order_relaxed);
}

template <class T>
void store(T* word, T value) {
    std::atomic_ref<T>(*word).store(value, std::memory_order_relaxed);
}

/// Calls `change` for each, and `fetch(word)` for the words of one that comes later.
template <class C, class Words, class Change>
void run(const std::vector<C>& all, Words fetchWords, Change change) {
    for (size_t i = 0; i < all.size(); i++) {
        if (i + ahead < all.size()) fetchWords(all[i + ahead]);
        change(all[i]);
    }
}

void fetch(const void* word) {
    __builtin_prefetch(word, 1);
}

} // namespace

void WordChanges::clear() {
    exchanges.clear();
    additions.clear();
    toggles.clear();
}

void WordChanges::carryOut() const {
    run(
        exchanges,
        [](const Exchange& e) {
            fetch(e.a);
            fetch(e.b);
        },
        [](const Exchange& e) {
            void* held = load(e.a);
            store(e.a, load(e.b));
            store(e.b, held);
        });
    run(
        additions, [](const Addition& a) { fetch(a.number); },
        [](const Addition& a) { store(a.number, load(a.number) + a.by); });
    run(
        toggles, [](const Toggle& t) { fetch(t.flags); },
        [](const Toggle& t) {
            std::atomic_ref<unsigned>(*t.flags).fetch_xor(t.bits, std::memory_order_relaxed);
        });
}
