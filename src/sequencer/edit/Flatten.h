#pragma once

#include "base/CStr.h"

class CSeq;

/// One step, "Flatten": a part of one clip comes in place of each selected audio part of several,
/// selected, with what they sound like together in a new file of 44100 Hz and 16 bits, in stereo if
/// one of them is. All or none: why nothing was done, empty if it was or there is nothing to do.
/// Interface thread.
CStr flattenParts(CSeq* seq);
