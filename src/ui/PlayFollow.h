#pragma once

#include "ui/Options.h"

#include <cstdint>

/// Whether a view goes along with what plays, by the choices that all views share: page after page,
/// or with the position in its middle. Each view has its own. Interface thread.
class PlayFollow {
public:
    Option follows; ///< views go along
    Option glides;  ///< the position stands in the middle

    explicit PlayFollow(CQV* host);

    /// The user has moved the view: it stays until the position comes into sight again, or when it
    /// glides until the next start.
    void stray() { strayed = true; }
    /// By how many pixels the view has to go on, when the position is at `x` of its width.
    int64_t shift(bool playing, int64_t x, int width);

private:
    bool strayed = false;
};
