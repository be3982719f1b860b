#pragma once

#include "sequencer/song/EventLanes.h"

#include <functional>
#include <memory>
#include <vector>

class CPart;
class CSeq;
struct CBaseEvent;
struct CEnvEvent;

/// Edits of the events of a part that stands on a track, or of its master. Ticks count from the
/// part's own tick 0. Each is one step; where nothing changes, and on a locked track, there is
/// none. Clips are edited one by one only in a part that holds several. Interface thread.

/// By how much the selected events of a lane change.
struct EventDelta {
    int ticks = 0;
    int length = 0;     ///< of notes, hits, clips; at least a tick remains
    int pitch = 0;      ///< semitones of notes, rows of drum hits
    int velocity = 0;   ///< of notes and hits, in 127ths; kept within 1 to 127
    float value = 0.0f; ///< on a lane of values or automation; kept within 0 to 1
};

/// How far all selected events of a lane can go: those that begin within the part stay within it,
/// at least a tick of their length remains, notes and rows of a kit stay such. All 0 without any.
struct EventRange {
    int minTicks = 0, maxTicks = 0;
    int minLength = 0; ///< change of the length
    int minPitch = 0, maxPitch = 0;
};
EventRange eventRange(CSeq* seq, CPart* part, const EventLane& lane);

/// "Move", or "Edit" where neither place nor pitch changes: the selected events, in ticks and pitch
/// within `eventRange`.
void dragEvents(CSeq* seq, CPart* part, const EventLane& lane, const EventDelta& delta);
/// "Copy": copies, changed so, come beside the selected events and are selected in their place.
void copyEvents(CSeq* seq, CPart* part, const EventLane& lane, const EventDelta& delta);
/// "Resize": the selected notes, hits or clips end so many ticks later.
void resizeEvents(CSeq* seq, CPart* part, int delta);
/// "Resize": they begin so many ticks later, and end where they did. Each goes as far as it can.
void resizeEventStart(CSeq* seq, CPart* part, int delta);
/// "Delete": the selected events and points.
void deleteEvents(CSeq* seq, CPart* part);

/// "Delete": the selected points of slots of parts, and nothing else of them.
struct PartSlot {
    CPart* part = nullptr;
    int slot = 0;
};
void deletePoints(CSeq* seq, const std::vector<PartSlot>& places);

/// "Insert": takes the event and puts it at a tick, the only one of its list that is selected. Null
/// and freed where it can't be.
CBaseEvent* insertEvent(CSeq* seq, CPart* part, int tick, CBaseEvent* event);
CEnvEvent* insertPoint(CSeq* seq, CPart* part, int slot, int tick, CEnvEvent* point);

/// "Edit curve": the segments that end at the selected points of a slot bend by `amount`, up or
/// down as they lead, or with `absolute` take it as their bend.
void curveEvents(CSeq* seq, CPart* part, int slot, float amount, bool absolute);

/// A straight line of values, 0 to 1, between two ticks in either order.
struct ValueLine {
    int fromTick = 0, toTick = 0;
    float from = 0.0f, to = 0.0f;
};
/// "Edit": the events of the lane that stand from one end of the line to the other take the value
/// that it has at their tick. The line counts in ticks of the song.
void lineEditParts(CSeq* seq, const std::vector<CPart*>& parts, const EventLane& lane,
                   const ValueLine& line);

// A gesture may work on a copy of the content, which is what is on screen until it ends.

std::unique_ptr<CPart> contentDraft(CPart* part);
/// Changes the selected events of the lane in a draft for `part`, as `dragEvents` does.
void changeEvents(CSeq* seq, CPart* part, CPart* draft, const EventLane& lane,
                  const EventDelta& delta);
/// Puts every event of a draft's own list where `change` says, which may alter the record too.
void placeEvents(CPart* draft, const std::function<int(CBaseEvent* event, int tick)>& change);
/// Adds to it what `copyEvents` makes.
void addCopies(CSeq* seq, CPart* part, CPart* draft, const EventLane& lane,
               const EventDelta& delta);
void trimEvents(CSeq* seq, CPart* part, CPart* draft, int delta); ///< as `resizeEventStart` does
void bendPoints(CPart* draft, int slot, float amount, bool absolute); ///< as `curveEvents` does
/// Sets the value of the lane's events from one tick to before another; without any a new one
/// comes to the first of them, where the lane can have it.
void setController(CPart* draft, const EventLane& lane, int from, int to, float value);
/// One step of that title: the draft becomes the content of the part. None if it is the same.
void applyDraft(CSeq* seq, CPart* part, std::unique_ptr<CPart> draft, const char* title);
