#pragma once

#include "base/Geometry.h"

/// What all strips of a mixer have in common, so that their rows stand side by side.
struct StripPlan {
    int rows = 0;   ///< bits of `StripRows` that show
    int slots = 0;  ///< of inserts
    int sends = 0;  ///< buses
    int height = 0; ///< pixels that there are
    bool operator==(const StripPlan&) const = default;
};

/// Rows that can be hidden: bits of `CMixer::mxv`.
enum StripRows : int {
    rowsInserts = 1,
    rowsSends = 2,
    rowsRouting = 4,
    rowsLoad = 8,
    rowsLoudness = 16
};

/// Where the parts of a strip stand, from its corner: from top to bottom the name, what it plays,
/// trim, the choice of inserts or equaliser and what is chosen, sends, where it leads, pan, the
/// figures, fader and meter, switches, how loud it is and what it costs. What is
/// hidden is empty.
struct StripLayout {
    static constexpr int wideStrip = 88, narrowStrip = 56;
    static constexpr int slotHeight = 18, sendHeight = 16, leastFader = 104;
    static constexpr int capHeight = 24; ///< of a fader, whose scale runs between the middles of it
    static constexpr int clipHeight = 8; ///< of a meter, above its scale

    StripLayout(const StripPlan& plan, bool wide);
    /// The height below which strips do not go.
    static int leastHeight(const StripPlan& plan);

    CRect slot(int index) const;
    CRect send(int index) const;

    CRect name, source, trim, mode, inserts, sends, target, pan, gain, peak, fader, scale, meter,
        switches, loudness, truePeak, load;

private:
    int width;
};
