#pragma once

#include "base/CStr.h"
#include "sequencer/edit/MoveEdits.h"

#include <vector>

class CUndo;
struct TimeRange;

/// What goes along with an edit of parts: nothing, later parts of the tracks concerned, or all that
/// is later: parts of all tracks, markers, tempos and signatures. Locked tracks never move. Points
/// within time that leaves come to where it began, so that the last of them holds from there.
enum class Ripple { off, track, all };

/// A part or point that goes along, by so many ticks.
struct RippleShift {
    CPart* part;
    int ticks;
};

// What would go along, so that it can be shown before. Interface thread.

/// With the selected parts, if they move by so many ticks within `moveRange`: what begins with the
/// first of them or later.
std::vector<RippleShift> rippleOfMove(CSeq* seq, Ripple ripple, int deltaTicks);
/// If the selected parts leave: what begins behind one of them closes up by the time that it took.
std::vector<RippleShift> rippleOfDelete(CSeq* seq, Ripple ripple);
/// If so many ticks come in at a place of some tracks, or below 0 leave: what begins there or
/// later.
std::vector<RippleShift> rippleOfInsert(CSeq* seq, Ripple ripple,
                                        const std::vector<CSongTrack*>& tracks, int tick,
                                        int ticks);
/// Records them.
void recordRipple(CUndo* undo, const std::vector<RippleShift>& shifts);

// The edits, each one step as without a ripple. Why nothing was done, empty if it was or there is
// nothing to do.

/// Refused where a track does not take all that comes to it.
CStr moveParts(CSeq* seq, int deltaTicks, int deltaTracks, Ripple ripple);
CStr deleteParts(CSeq* seq, Ripple ripple = Ripple::off);
/// `made` is the part; untouched if there is none.
CStr insertPart(CSeq* seq, CSongTrack* songTrack, const PartPlace& place, Ripple ripple,
                CPart*& made);
/// What is later than the range closes up, as does what is left behind it of parts that are cut.
CStr deleteRange(CSeq* seq, const TimeRange& range, Ripple ripple);
