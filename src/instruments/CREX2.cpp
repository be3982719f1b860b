#include "instruments/CREX2.h"

CREX2::CREX2(const CStr&, int) {
}
CREX2::~CREX2() = default;

int CREX2::getNumSlices() {
    return 0;
}
CSampleClip* CREX2::render(int) {
    return nullptr;
}
CSampleClip* CREX2::renderCompact() {
    return nullptr;
}
CSampleClip* CREX2::renderAll(float) {
    return nullptr;
}
const CREXSlice* CREX2::getSlice(int) {
    return nullptr;
}
