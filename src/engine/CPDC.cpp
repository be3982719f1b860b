#include "engine/CPDC.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Not `new float[n]()`: that would touch every page, and most lines are never used.
float* zeroPages() {
    void* line = std::calloc(CPDC::capacity, sizeof(float));
    if (!line) throw std::bad_alloc();
    return static_cast<float*>(line);
}

} // namespace

CPDC::CPDC() : left(zeroPages()), right(zeroPages()) {
}

CPDC::~CPDC() {
    std::free(left);
    std::free(right);
}

void CPDC::clear() {
    if (!written) return;
    std::memset(left, 0, capacity * sizeof(float));
    std::memset(right, 0, capacity * sizeof(float));
    written = false;
}

void CPDC::setDelay(int total) {
    const int wanted = total - base;
    if (wanted == delay) return;
    delay = wanted;
    clear();
}
