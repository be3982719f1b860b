#pragma once

#include "project/GraphIndex.h"

class CSeq;

/// Hands the ports and channels that a file has for a sequencer (`read`, in its order) to the
/// tracks, by position. Where the numbers of input ports or inputs do not fit the tracks, new ones
/// are made, and the cables that arrive there are lost; outputs and output ports that are missing
/// are made, and what is left over goes with its cables. No buffers yet. Graph held.
void bindSeqChannels(CSeq* seq, const CompIO& read);
