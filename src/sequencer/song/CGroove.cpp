#include "sequencer/song/CGroove.h"

namespace {
constexpr float thirdLate = 0.33f;
}

CGroove::CGroove() {
    initGroove();
}

void CGroove::initGroove() {
    for (auto& offset : offsets) offset = 0.0f;
    offsets[1] = thirdLate;
    steps = 2;
    stepTicks = 240;
}
