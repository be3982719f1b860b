#pragma once

#include "base/CObject.h"

/// A player beside the song, for a file that the user listens to before taking it.
class CPreviewBase : public CObject {
public:
    /// Interface tick.
    virtual void idle() = 0;
    virtual bool getPlaying() = 0;
    /// Adds `frames` to `left` and `right`; the other two, of at least as many frames, are scratch.
    /// Graph holder.
    virtual void process(float* left, float* right, float* tmpLeft, float* tmpRight,
                         int frames) = 0;
};
