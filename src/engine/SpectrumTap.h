#pragma once

#include "base/Newest.h"

#include <vector>

class CComp;
class CDFT;

/// Carries what reaches the audio out from the audio thread, a block at a time, to the spectrum of
/// the interface thread. Blocks that it does not get to are left out.
class SpectrumTap {
public:
    /// Room for blocks of `frames`; forgets the block that waits. Holder of the graph.
    void setFrames(int frames);
    /// Leaves a copy of the first input of `out`, which may be null. Audio thread.
    void leave(CComp* out, int frames);
    /// Raises the bands by the newest block, if that is not done yet. Interface thread.
    void transform(CDFT& dft);

private:
    struct Block {
        std::vector<float> left, right;
        int frames = 0;
    };
    Newest<Block> blocks;
};
