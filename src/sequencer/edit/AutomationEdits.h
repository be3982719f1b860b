#pragma once

#include "sequencer/edit/EventEdits.h"

#include <memory>
#include <vector>

class CPart;
class CSeq;

// Edits of automation over several parts and lanes together. Each is one step; where nothing
// changes there is none, and what stands on a locked track stays as it is. Interface thread.

/// How far the selected points of all these slots can go together.
EventRange pointRange(CSeq* seq, const std::vector<PartSlot>& places);
/// "Move", or "Edit" without `ticks`: they go by ticks, within `pointRange`, and by value.
void changePoints(CSeq* seq, const std::vector<PartSlot>& places, const EventDelta& delta);
/// "Edit": they take a value, 0 to 1.
void setPoints(CSeq* seq, const std::vector<PartSlot>& places, float value);
/// "Edit curve": the segments that end at them bend by so much.
void bendPoints(CSeq* seq, const std::vector<PartSlot>& places, float amount);

/// A tick and the value there.
struct LanePlace {
    int tick;
    float value;
    float curve = 0.0f;      ///< of the way to it
    unsigned char shape = 0; ///< as that of a point
};
/// "Draw": over what lies between two of the `line`'s ends, in ticks of the song, the slot of the
/// parts follows it. Its places are in order of tick.
void drawPoints(CSeq* seq, const std::vector<PartSlot>& places, const std::vector<LanePlace>& line);
/// The same under another title, with a line for each of the parts.
struct LaneLine {
    PartSlot place;
    std::vector<LanePlace> line;
};
void drawPoints(CSeq* seq, const std::vector<LaneLine>& lines, const char* title);
/// The same in a draft for a part.
void drawPoints(CPart* draft, const PartSlot& place, int ticks, const std::vector<LanePlace>& line);
/// The line without the places that lie on the way between their neighbours, as far as `reach`, a
/// value, tells.
std::vector<LanePlace> thinned(const std::vector<LanePlace>& line, float reach);

/// The value of a slot at a tick of the part's own time: that on the line between its points, of
/// the first before it and of the last behind it. `none` without points.
float pointValueAt(CPart* part, int slot, int tick, float none);
