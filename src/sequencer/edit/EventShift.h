#pragma once

#include "sequencer/edit/EventEdits.h"

/// What becomes of the selected events of a lane in a part that stands on a track. All are handed
/// over with their tick in the part's own time. Interface thread.
class EventShift {
public:
    /// All but the lane outlive it.
    EventShift(CSeq* seq, CPart* part, const EventLane& lane, const EventDelta& delta);

    bool concerns(const CBaseEvent* event) const;
    int change(CBaseEvent* event, int tick) const; ///< returns the new tick
    /// It begins later by so many ticks, as far as it can, and ends where it did. Returns the new
    /// tick.
    int trim(CBaseEvent* event, int tick, int by) const;
    int lengthOf(CBaseEvent* event, int tick) const; ///< 0 for what has none

private:
    int songTick(int tick) const;
    void changeLength(CBaseEvent* event, int tick) const;
    void changePitch(CBaseEvent* event) const;
    void changeVelocity(CBaseEvent* event) const;

    CSeq* seq;
    CPart* part;
    const EventLane lane;
    const EventDelta& delta;
    const int rows; ///< of the kit
};

/// The list of a lane in a part.
CBaseEvent* listOf(CPart* part, const EventLane& lane);
/// How far the selected events of a list can go that `part` has, or is to have.
EventRange rangeOf(CSeq* seq, CPart* part, CBaseEvent* list, const EventLane& lane);
/// As far as that allows.
EventDelta limited(EventDelta delta, const EventRange& range);
