#pragma once

#include "ui/Signs.h"

/// The signs on the heads of tracks. Interface thread.
class HeadSigns {
public:
    enum Sign { folder, notes, wave, drum, closed, open, lock, frozen };
    static constexpr int side = 14;

    HeadSigns();
    static Sign ofKind(int kind); ///< of a kind of track (TrackKind)
    /// Draws it in the middle of a rectangle on a plain ground.
    void draw(CGraphic* g, Sign sign, CRect rect, int color, int ground);

private:
    SignSet set;
};
