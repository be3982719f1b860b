#pragma once

#include <cstddef>
#include <memory>

/// Gives back what `takeZeroPages` gave.
struct GiveZeroPages {
    std::size_t bytes = 0;
    void operator()(void* pages) const;
};

/// An array for what is long and seldom used.
template <class T>
using ZeroPages = std::unique_ptr<T[], GiveZeroPages>;

/// Memory of zeros that takes no room until it is written to, page by page. The heap promises that
/// only until it hands out a second time what was freed. Never null: throws std::bad_alloc.
void* takeZeroPages(std::size_t bytes);

/// `count` objects that are fit to be used with all of their bytes 0.
template <class T>
ZeroPages<T> makeZeroPages(std::size_t count) {
    const std::size_t bytes = count * sizeof(T);
    return {static_cast<T*>(takeZeroPages(bytes)), GiveZeroPages{bytes}};
}
