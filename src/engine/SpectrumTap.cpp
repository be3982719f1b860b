#include "engine/SpectrumTap.h"

#include "common/fx/CDFT.h"
#include "engine/CComp.h"

#include <algorithm>

void SpectrumTap::setFrames(int frames) {
    const std::vector<float> silence(size_t(std::max(frames, 0)));
    blocks.fill({silence, silence, 0});
}

void SpectrumTap::leave(CComp* out, int frames) {
    const CInputChannel* in = out ? out->input() : nullptr;
    if (!in) return;
    Block& b = blocks.draft();
    b.frames = std::min(frames, int(b.left.size()));
    std::copy_n(in->bufL, b.frames, b.left.begin());
    std::copy_n(in->bufR, b.frames, b.right.begin());
    blocks.publish();
}

void SpectrumTap::transform(CDFT& dft) {
    if (!blocks.take()) return;
    const Block& b = blocks.taken();
    dft.transform(b.left.data(), b.right.data(), b.frames);
}
