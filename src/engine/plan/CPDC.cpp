#include "engine/plan/CPDC.h"

#include "base/ZeroPages.h"

namespace {

constexpr size_t lineBytes = CPDC::capacity * sizeof(float);

float* newLine() {
    return static_cast<float*>(takeZeroPages(lineBytes));
}

} // namespace

CPDC::CPDC() : left(newLine()), right(newLine()) {
}

CPDC::~CPDC() {
    for (float* line : {left, right}) GiveZeroPages{lineBytes}(line);
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
