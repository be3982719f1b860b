#pragma once

#include "audiofiles/CElastiqueIf.h"
#include "base/Atomic.h"
#include "base/CObject.h"

#include <vector>

/// A stretcher that one voice at a time may have, with room for the source frames of a block. Made
/// and deleted on the interface thread, used by whoever holds the graph.
class CElastiqueRender : public CObject {
public:
    std::unique_ptr<CElastiqueIf> instance; ///< null if there is none to be had
    Shared<bool> busy{false};
    std::vector<float> inLeft, inRight; ///< source frames, `blockFrames` * 10 + 12280 each

    CElastiqueRender(int blockFrames, float rate);

    /// Takes it for a voice, with all sound forgotten; false if it is taken or has no instance.
    bool start();
    void end() { busy = false; }
};
