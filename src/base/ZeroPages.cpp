#include "base/ZeroPages.h"

#include <bit>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <vector>

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1 // as other compilers say it
#endif
#endif

#ifdef __SANITIZE_ADDRESS__

// From the heap, which watches the ends of what it gave.

void* takeZeroPages(std::size_t bytes) {
    void* pages = std::calloc(bytes, 1);
    if (!pages) throw std::bad_alloc();
    return pages;
}

void GiveZeroPages::operator()(void* pages) const {
    std::free(pages);
}

#else

namespace {

constexpr std::size_t pageBytes = 4096, arenaBytes = std::size_t(8) << 20;

void* map(std::size_t bytes) {
    void* pages =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    ::madvise(pages, bytes, MADV_NOHUGEPAGE); // a byte written is not to cost two megabytes
    return pages;
}

/// Cuts blocks from large mappings, as a mapping for each of the thousands that a bank of programs
/// asks for would take longer than all the rest of it. Blocks that come back are zeros without
/// room again, and wait for the next of their size.
class Arena {
public:
    void* take(std::size_t bytes) {
        const std::scoped_lock guard(lock);
        std::vector<void*>& waiting = free[bytes];
        if (!waiting.empty()) {
            void* block = waiting.back();
            waiting.pop_back();
            return block;
        }
        waiting.reserve(std::bit_ceil(++taken[bytes])); // so that `give` cannot fail
        if (left < bytes) {
            rest = static_cast<unsigned char*>(map(arenaBytes));
            left = arenaBytes;
        }
        void* block = rest;
        rest += bytes;
        left -= bytes;
        return block;
    }
    void give(void* block, std::size_t bytes) {
        ::madvise(block, bytes, MADV_DONTNEED);
        const std::scoped_lock guard(lock);
        free[bytes].push_back(block);
    }

private:
    std::mutex lock;
    std::map<std::size_t, std::vector<void*>> free; ///< by bytes
    std::map<std::size_t, std::size_t> taken;       ///< blocks ever cut, by bytes
    unsigned char* rest = nullptr;
    std::size_t left = 0;
};

Arena& arena() {
    static Arena* const one = new Arena; // outlives every static object that gives blocks back
    return *one;
}

std::size_t wholePages(std::size_t bytes) {
    return (bytes + pageBytes - 1) / pageBytes * pageBytes;
}

} // namespace

void* takeZeroPages(std::size_t bytes) {
    const std::size_t whole = wholePages(bytes);
    return whole < arenaBytes / 8 ? arena().take(whole) : map(whole);
}

void GiveZeroPages::operator()(void* pages) const {
    if (!pages) return;
    const std::size_t whole = wholePages(bytes);
    if (whole < arenaBytes / 8)
        arena().give(pages, whole);
    else
        ::munmap(pages, whole);
}

#endif
