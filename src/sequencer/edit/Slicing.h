#pragma once

#include "base/CStr.h"
#include "sequencer/edit/PartRange.h"

#include <vector>

class CPart;
class CSample;
class CSeq;

/// Slices come in place of the selected audio parts of a single clip, selected: each plays its
/// frames without fades, keeps its place in the song, and is no ghost. One step, "Beatslice", for
/// both. Why nothing was done, empty if it was or there is nothing to do. Interface thread.

/// At each step of the song's grid, from the start of the part on.
CStr beatsliceParts(CSeq* seq);
/// Where the sound sets in.
CStr autosliceParts(CSeq* seq);
/// The same for one part, at frames of its sample in rising order; none outside of what it plays
/// counts.
CStr slicePart(CSeq* seq, CPart* part, const std::vector<int>& frames);

/// Frames of a range of a sample at which the sound sets in, its first one before all. The sample
/// has at least one channel.
std::vector<int> onsets(const CSample* sample, const FrameRange& range);
