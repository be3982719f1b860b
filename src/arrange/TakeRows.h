#pragma once

#include "arrange/Press.h"
#include "base/CStr.h"

class ArrangeState;
class CPart;
class CSongTrack;
class Takes;
struct ArrangeRow;

// The rows under a track that show the takes of its parts, one below the other.

/// Where the take of a row shows in a part: in ticks of the song, as far as the part goes; `from`
/// is not before `to` where it does not.
struct TakeSpan {
    int from = 0, to = 0;
    bool empty() const { return from >= to; }
};
TakeSpan takeSpan(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// The part whose take shows at x of such a row, null without one.
CPart* takePartAt(const ArrangeState& state, const ArrangeRow& row, int x);
/// "Take 2 of Bass, bar 5, 4 bars".
CStr takeText(const ArrangeState& state, const ArrangeRow& row, CPart* part);
/// Whether the part plays anything of it.
bool playsTake(CPart* part, int take);
/// As `pressed`, on such a row.
Press pressedTake(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn);
/// All of the take is played, in the selected parts of the track or, without any, in all; a step
/// for each.
void useTake(const ArrangeState& state, CSongTrack* track, int take);
