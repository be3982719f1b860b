#pragma once

#include "base/CStr.h"

class CSeq;
class CSeqProg;

/// One step, "Remix": a new program, which becomes the current one, plays as a song what the
/// arranger played of `prog` since the last start: the sections of its `session` one behind the
/// other, with the tempos and signatures that held in them. Without a session there is no step, and
/// why. Interface thread.
CStr remix(CSeq* seq, CSeqProg* prog);
