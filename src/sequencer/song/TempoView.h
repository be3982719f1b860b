#pragma once

#include "base/Atomic.h"
#include "sequencer/song/TempoMap.h"

#include <utility>
#include <vector>

class CSeq;
class CSeqProg;
class CTempoPart;
class CTimesigPart;
class UndoPlan;

/// The tempo of a song's current program; while there is none the host's.
class TempoView {
public:
    Shared<unsigned> changes{0}; ///< counts what may have changed tempos besides their lists

    explicit TempoView(CSeq* of) : seq(of) {}
    TempoView(const TempoView&) = delete;
    TempoView& operator=(const TempoView&) = delete;

    /// What holds before the first tempo point; without one the tempo of this block.
    float before(const CSeqProg* prog) const;
    double framesToTicks(double ticks, double frames, int rate) const;
    double ticksToFrames(int from, int ticks, int rate) const;
    CTempoPart* pointAt(int tick) const;    ///< the last one at a tick or before, or null
    CTempoPart* pointAfter(int tick) const; ///< or null
    int ticksToNext(double tick) const;     ///< to the next point, or -1

    // Of the position. Interface thread.
    /// The point whose tempo is in force; null before the first, where `CQV::songTempo` is.
    CTempoPart* pointHere() const;
    double here() const;                 ///< beats per minute
    CTimesigPart* signatureHere() const; ///< the last one at the position or before, or null

    /// Has the host adopt the tempo of the coming stride, which ends at the next tempo point, or
    /// where the loop turns; before the first point the song's own. Graph holder.
    void follow();
    /// Something was changed: what is in force is heard from the next block on. Any thread.
    void changed();

    /// Room for the points that a step leaves, made ahead on the interface thread, and handed out
    /// by the graph holder.
    void planRooms(UndoPlan& plan);
    void takeRooms();

private:
    CSeq* seq;
    std::vector<std::pair<CSeqProg*, TempoMap::Room>> rooms; ///< of the step on its way
};
