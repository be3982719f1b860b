#pragma once

class CPart;
class CSongTrack;
class CSubTrack;
struct CBaseEvent;
struct CEnvEvent;

/// Additions to the content of a part that may be playing: play pointers that stand behind the new
/// record keep their place in time, so that it is not played in the pass that it was recorded in.
/// Graph holder; nothing allocates.

/// Takes the event and links it at a tick of the list of a part of `on`; the part grows to the
/// quarter after it.
void addLiveEvent(CSongTrack* on, CPart* part, int tick, CBaseEvent* event);

/// One recorded point of automation, at ticks of the part's list. Made and deleted on the interface
/// thread, and with it what is not, or no longer, in the list.
struct LivePoint {
    CPart* part = nullptr;
    CSubTrack* lane = nullptr; ///< with room in the part
    int tick = 0;
    bool replace = false; ///< what the lane has from `cutFrom` to before `cutTo` goes
    double cutFrom = 0.0, cutTo = 0.0;
    int pass = 0;                ///< count of loop wraps when it was played
    CEnvEvent* point = nullptr;  ///< owned
    CEnvEvent* anchor = nullptr; ///< owned; the same value for the beginning
    CBaseEvent* cut = nullptr;   ///< owned; what went

    LivePoint() = default;
    ~LivePoint();
    LivePoint(const LivePoint&) = delete;
    LivePoint& operator=(const LivePoint&) = delete;
};

/// Links the point. The first of a pass replaces: points in the way are cut, and the value begins
/// where the pass does. In a lane without points it begins with the part. The lane is not played
/// for the rest of the pass. The part grows as above.
void addLivePoint(CSongTrack* on, LivePoint& write);
