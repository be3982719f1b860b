#include "base/ZeroPages.h"

#include <cstdlib>
#include <new>
#include <sys/mman.h>

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

void* takeZeroPages(std::size_t bytes) {
    void* pages =
        ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    return pages;
}

void GiveZeroPages::operator()(void* pages) const {
    if (pages) ::munmap(pages, bytes);
}

#endif
