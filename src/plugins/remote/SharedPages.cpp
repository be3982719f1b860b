#include "plugins/remote/SharedPages.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace {

int makeFile(size_t bytes) {
    const int made = memfd_create("plug-ins", MFD_CLOEXEC);
    if (made < 0) throw std::bad_alloc();
    if (ftruncate(made, off_t(bytes)) == 0) return made;
    close(made);
    throw std::bad_alloc();
}

} // namespace

SharedPages::SharedPages(size_t bytes) : SharedPages(makeFile(bytes), bytes) {
}

SharedPages::SharedPages(int file, size_t bytes) : size(bytes), descriptor(file) {
    pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (pages != MAP_FAILED) return;
    close(descriptor);
    throw std::bad_alloc();
}

SharedPages::~SharedPages() {
    munmap(pages, size);
    close(descriptor);
}
