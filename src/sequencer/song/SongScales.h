#pragma once

#include "base/Stored.h"
#include "sequencer/song/Scales.h"

/// The scales of a song: one from its beginning on, and others from points on. Each stands at a
/// fixed place, so that any thread may read while one is set.
class SongScales {
public:
    static constexpr int most = 16;
    static constexpr int never = -1; ///< the tick of a change that is not in use

    /// From a tick on: the root, 0 for C to 11, and a ScaleKind.
    struct Change {
        Stored<int> tick{never}, root{0}, kind{scaleNone};
    };
    Change changes[most]; ///< in no order, but for the first: it is that of tick 0

    SongScales();

    Scale at(double tick) const;
    int indexAt(double tick) const;   ///< of the change in force
    int nextAfter(double tick) const; ///< the tick of the next change, or one behind all songs
    int unused() const;               ///< the index of one, or -1
    bool any() const;                 ///< somewhere is a scale
};
