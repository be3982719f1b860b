#pragma once

#include "interchange/BeatClock.h"
#include "interchange/DawSong.h"

class CSeq;

/// The tempos of a song of a file, and those of the current program.
BeatClock clockOf(const DawSong& song);
BeatClock clockOf(CSeq* seq);
