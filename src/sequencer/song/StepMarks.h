#pragma once

#include "sequencer/song/PartIndex.h"

#include <memory>
#include <vector>

class CPart;
class CSeq;
class CSongTrack;
class CUndo;
class UndoPlan;

/// What a step means to playback: collected for each song track while the step is prepared, and
/// served once for each when it has been carried out.
class StepMarks {
public:
    /// Interface thread.
    void collect(CSeq* seq, const UndoPlan& plan, const CUndo* step);
    /// Graph holder; takes no memory.
    void serve();

private:
    struct Mark {
        CSongTrack* songTrack;
        unsigned requests = 0;     ///< to playback
        std::vector<CPart*> parts; ///< that leave or show other content; sorted
        int coming = 0;            ///< parts
        PartIndex::Room room;      ///< for them and those that are there
        bool touches(const CPart* part) const;
    };
    std::vector<Mark> marks;
};
