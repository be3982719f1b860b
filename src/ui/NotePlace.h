#pragma once

#include "base/CStr.h"
#include "base/Geometry.h"
#include "sequencer/song/EventFind.h"
#include "sequencer/song/EventIndex.h"
#include "sequencer/song/Events.h"
#include "ui/DragSnap.h"
#include "ui/EventRows.h"

class CPart;
class CSeq;
class CTrack;
class TimeAxis;

/// A note or a hit, as far as it is seen and told.
struct NoteFacts {
    int row = 0;      ///< key or sound
    int tick = 0;     ///< in the part's own time
    int length = 0;   ///< ticks; 0 for what is neither
    int velocity = 0; ///< 0 to 127
    int channel = 0;  ///< of a note, 0 to 15
    HitStyle style;
};
NoteFacts factsOf(const CPart* part, CBaseEvent* event, int tick);

/// The notes of a MIDI part or the hits of a drum part as a view shows them: time along an axis,
/// rows scrolled by some pixels. Interface thread.
struct NotePlace {
    CSeq* seq = nullptr;
    CTrack* track = nullptr;
    CPart* part = nullptr;
    EventRows rows;
    ViewGrid grid;
    const EventIndex* events = nullptr; ///< of the part; not owned

    double ticksOf(const TimeAxis& axis, double x) const; ///< in the part's own time
    int xOf(const TimeAxis& axis, int tick) const;
    /// Calls `visit(entry)` for those of `shown`, the events of the part or of a draft for it,
    /// whose marks may meet `asked`: a mark reaches no more than `markReach` pixels past its event.
    template <class F>
    void eachNear(const EventIndex& shown, const TimeAxis& axis, CRect asked, F&& visit) const {
        shown.eachWithin(ticksOf(axis, asked.left - markReach),
                         ticksOf(axis, asked.right + markReach), visit);
    }
    static constexpr int markReach = 8;
    /// Where a note or hit is painted and hit, at least two pixels wide: in an opened sound the
    /// upper part of its row. Empty for what is neither.
    CRect boxOf(const TimeAxis& axis, int scrollY, const NoteFacts& facts) const;
    /// A note on the track's channel, or a hit, owned by the caller; velocity 1 to 127.
    CBaseEvent* newEvent(int row, int length, int velocity) const;
    /// "C4, bar 3.2, 1 beat, velocity 90", or with the name of the sound; and what of its style is
    /// not usual, ", chance 50%, 3 times, flam 20 ms, muted".
    CStr text(const NoteFacts& facts) const;
};
