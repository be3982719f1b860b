#include "audiofiles/CElastiqueRender.h"

#include <algorithm>

namespace {

constexpr int sourcePerBlock = 10, extraSource = 12280; // frames

} // namespace

CElastiqueRender::CElastiqueRender(int blockFrames, float rate) {
    CElastiqueIf* made = nullptr;
    CElastiqueIf::CreateInstance(made, blockFrames, 2, rate, 0.0f);
    instance.reset(made);
    const int room = std::max(blockFrames, 0) * sourcePerBlock + extraSource;
    inLeft.resize(std::size_t(room));
    inRight.resize(std::size_t(room));
}

bool CElastiqueRender::start() {
    if (!instance || busy.exchange(true)) return false;
    instance->reset();
    return true;
}
