#pragma once

#include "base/CStr.h"

#include <vector>

class CSeq;
class CSongTrack;

/// Some time of some tracks of the current program.
struct TimeRange {
    int from = 0, to = 0; ///< ticks of the song, the last one exclusive
    std::vector<CSongTrack*> tracks;
    bool markers = false; ///< markers that begin in that time are meant as well
};

/// Edits of what lies in a range, whatever the parts: those that reach beyond it are cut at its
/// ends as by `splitPart`, with their points of automation, those that lie in it stay what they
/// are. What was in it is selected afterwards, and nothing else. Locked tracks are left out. Each
/// is one step of the title told, and done whole or not at all: why not, empty if it was done or
/// there is nothing to do. Interface thread.

/// "Split": at both ends.
CStr splitRange(CSeq* seq, const TimeRange& range);
/// "Move" by so many ticks and rows, not to before tick 0. What is there stays.
CStr moveRange(CSeq* seq, const TimeRange& range, int deltaTicks, int deltaTracks);
/// "Copy": ghosts give ghosts where they lie in the range.
CStr copyRange(CSeq* seq, const TimeRange& range, int deltaTicks, int deltaTracks);
/// "Duplicate": copies follow right behind it.
CStr duplicateRange(CSeq* seq, const TimeRange& range);
/// "Delete": that time is empty afterwards.
CStr deleteRange(CSeq* seq, const TimeRange& range);
/// "Mute part": mutes it, or lets it be heard when all of it is mute.
CStr muteRange(CSeq* seq, const TimeRange& range);
/// "Stretch": it lasts so many ticks, at least 1. Clips at their own speed are stretched from then
/// on; ghosts become parts of their own.
CStr stretchRange(CSeq* seq, const TimeRange& range, int ticks);
