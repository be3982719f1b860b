#pragma once

class CPart;
class CSeq;
class EventIndex;
struct CBaseEvent;

/// What of an event is under the pointer.
enum EventZone : int {
    zoneBody = 0,
    zoneEnd = 2,
    zoneCurve = 3, ///< the middle of the segment that ends at a point
    zoneStart = 4,
    zoneParam = 5,          ///< the bar of a parameter of a drum hit
    zoneSelectionEnd = 6,   ///< of the selected range of the part that is edited
    zoneSelectionStart = 7, ///< of it
};

struct FoundEvent {
    CBaseEvent* event = nullptr; ///< null if there is none
    int tick = 0;                ///< in the part's own time
    EventZone zone = zoneBody;
};

/// Key of a note or sound of a hit; -1 of what is neither.
int rowOf(const CPart* part, const CBaseEvent* event);
/// The zone of an event that lasts from one tick to before another: its edges, each `edge` ticks
/// wide but at most a fifth of it.
EventZone edgeZone(double tick, int from, int to, double edge);
/// The note of that key, the hit of that row, or the clip of any row that lasts over a tick of the
/// part's own time; the latest of them. `events` are those of the part.
FoundEvent findEvent(const CPart* part, const EventIndex& events, double tick, int row,
                     double edge);

/// A place on a lane of automation, and what the pointer reaches around it.
struct PointProbe {
    double tick = 0.0; ///< in the part's own time
    double value = 0.0;
    double ticks = 0.0, values = 0.0; ///< reach to either side
};
/// The nearest point of a slot that is reached; else the point whose segment is, at its middle.
FoundEvent findPoint(CPart* part, int slot, const PointProbe& probe);
