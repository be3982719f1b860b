#include "engine/CPDC.h"

#include <cstdlib>
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

void CPDC::setDelay(int total) {
    const int wanted = total - base;
    if (wanted == delay) return;
    delay = wanted;
    clear();
}

void CPDC::enter(unsigned block) {
    if (block - lastBlock > 1) clear();
    lastBlock = block;
}
