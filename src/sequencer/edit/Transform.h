#pragma once

#include "sequencer/song/Scales.h"

#include <array>
#include <functional>
#include <span>

class CPart;

/// What can be done to the selected notes and hits of a part at once, with numbers that the user
/// turns. Interface thread.
enum TransformKind : int {
    transformQuantize = 0, ///< tick + strength * (line - tick); every second line `swing` later
    transformHumanise = 1, ///< each by a random amount, the same for the same variation
    transformLegato = 2,   ///< notes last until the next later one, less the gap
    transformVelocity = 3, ///< velocity * scale + add, within the limits
    transformRamp = 4,     ///< velocities along a line from the first to the last
    transformCompress = 5, ///< velocities nearer to their mean, or farther from it
    transformTranspose = 6,
    transformStretch = 7,     ///< places and lengths, from the first note on
    transformReverse = 8,     ///< mirrored in time between the first start and the last end
    transformMirror = 9,      ///< mirrored in pitch between the lowest and the highest
    transformArpeggiate = 10, ///< notes of a chord one behind the other, in steps
    transformStrum = 11,      ///< notes of a chord a little later each
    transformThin = 12,       ///< messages too near in time or value to the one before go
    transformDegrees = 13,    ///< each so many degrees of the scale higher
    transformInvert = 14,     ///< of a chord the lowest note an octave up, or the highest one down
    transformSpread = 15,     ///< of a chord every second note an octave or more up
};

struct TransformValue {
    const char* name; ///< null behind the last one
    int least, most, usual;
};
struct TransformShape {
    static constexpr int mostValues = 4;
    const char* title; ///< in menus and in the history
    std::array<TransformValue, mostValues> values;
};
/// By TransformKind.
std::span<const TransformShape> transformShapes();

using TransformValues = std::array<int, TransformShape::mostValues>;
TransformValues usualValues(int kind);

/// Changes the selected events of a draft's own list, or all where none is, of a part whose `grid`
/// is that many ticks. Places stay at or above `firstTick`, velocities within 1 to 127, keys and
/// sounds within 0 to `topRow`, lengths at a tick or more.
struct TransformScope {
    int grid = 240;
    int firstTick = 0; ///< in the part's own time
    int topRow = 127;
    std::function<Scale(int tick)> scale = [](int) { return Scale(); }; ///< at a note's own tick
};
void transformEvents(CPart* draft, int kind, const TransformValues& values,
                     const TransformScope& scope);
