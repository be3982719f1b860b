#pragma once

#include "base/CStr.h"

class CSeq;

/// Slices come in place of the selected audio parts of a single clip, selected: each plays its
/// frames without fades, keeps its place in the song, and is no ghost. One step, "Beatslice", for
/// both. Why nothing was done, empty if it was or there is nothing to do. Interface thread.

/// At each step of the song's grid, from the start of the part on.
CStr beatsliceParts(CSeq* seq);
/// Where the sound sets in.
CStr autosliceParts(CSeq* seq);
