#pragma once

#include "sequencer/edit/AutomationEdits.h"

#include <vector>

class CSeq;
class CSongTrack;
class CSubTrack;
class CTrack;

/// Points of automation that were copied, by lanes. Interface thread.
class PointClipboard {
public:
    bool empty() const { return lanes.empty(); }
    void clear() { lanes.clear(); }
    /// The selected points of the lanes that show are what it holds from now on. Without any it
    /// keeps what it has.
    void copy(CSeq* seq);
    /// One step, "Paste": what it holds comes to a tick of the song and takes the place of what is
    /// there. Points of one lane go to the first lane that shows of a selected track, unless their
    /// own is on one; others to their own lanes. Beyond the parts of a track nothing can go.
    void paste(CSeq* seq, int tick) const;

private:
    struct Lane {
        CTrack* track;                 ///< not owned; only to be used while the song has it
        CSubTrack* lane;               ///< the same
        std::vector<LanePlace> points; ///< ticks from the first of all lanes
    };
    std::vector<Lane> lanes;
};

/// Whether points are selected on lanes that show, and where they are.
bool anyChosenPoint(CSeq* seq);
std::vector<PartSlot> chosenPoints(CSeq* seq);
