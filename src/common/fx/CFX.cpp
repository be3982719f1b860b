#include "common/fx/CFX.h"

#include "base/Numbers.h"
#include "common/WaveTables.h"

#include <cstdlib>
#include <new>

namespace {

/// Untouched memory until written, since most effects rest.
float* zeros(int n) {
    void* memory = std::calloc(std::size_t(n), sizeof(float));
    if (!memory) throw std::bad_alloc();
    return static_cast<float*>(memory);
}

} // namespace

CFX::CFX(float hz, int frames) : rate(hz) {
    makeWaveforms();
    CFX::setFrames(frames);
}

CFX::~CFX() {
    CFX::setFrames(0);
}

void CFX::setRate(float hz) {
    rate = hz;
}

void CFX::setFrames(int n) {
    std::free(bufL);
    std::free(bufR);
    bufL = n > 0 ? zeros(n) : nullptr;
    bufR = n > 0 ? zeros(n) : nullptr;
}

void CFX::process(float*, float*, float*, float*, long) {
}

void CFX::setEnabled(int on) {
    if (on) takeRoom();
    enabled = on;
}

void CFX::clear() {
}

void CFX::start() {
}

void CFX::store(Stored<float>& field, float value, float low, float high) {
    if (std::isfinite(value)) field = fLimit(value, low, high);
}

void CFX::store(Stored<int>& field, int value, int low, int high) {
    field = asMinMax(value, low, high);
}

void CFX::setDry(ToStore<float> value) {
    dry = value;
}

void CFX::setWet(ToStore<float> value) {
    wet = value;
}
