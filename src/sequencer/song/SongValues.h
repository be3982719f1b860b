#pragma once

#include "engine/Notices.h"
#include "engine/StoredValue.h"
#include "sequencer/song/SongOptions.h"

class CSeq;
class CSeqProg;
class CSongTrack;
class CTempoPart;
class CTimesigPart;

// The values of a song that a user sets through `CQV::values`.

StoredValue mutedOf(CSongTrack* track);  ///< 0 or 1
StoredValue soloedOf(CSongTrack* track); ///< 0 or 1
/// The loop switch of the host and that of a program, 0 or 1 each.
StoredValue loopOf(CSeqProg* prog);
StoredValue locatorsOf(CSeqProg* prog); ///< left and right, in ticks
StoredValue programOf(CSeq* seq);       ///< index of the current program
/// Beats, and the note that is one, in force at the song's position: those of the last signature
/// there or before, else the song's own.
StoredValue signatureHereOf(CSeq* seq);
StoredValue signatureOf(CTimesigPart* point); ///< the same of a point
/// The grid: what `CSnap::index` takes, and whether it is active, triplet, dotted.
StoredValue gridOf(CSeq* seq);
/// The tempo in force at the song's position, in beats per minute: that of the last tempo point
/// there or before, else the song's own.
StoredValue tempoHereOf(CSeq* seq);
StoredValue tempoOf(CTempoPart* point); ///< beats per minute
/// 0 or 1: the tempo goes to that of the next point in a line.
StoredValue rampOf(CTempoPart* point);
StoredValue punchOf(CSeq* seq);   ///< 0 or 1: takes go from the left to the right locator
StoredValue preRollOf(CSeq* seq); ///< bars, 0 to 16
/// Of a change of the song's scale: root, ScaleKind, and tick, or SongScales::never to drop it; the
/// first one keeps to tick 0.
StoredValue scaleOf(CSeq* seq, int change = 0);
StoredValue optionOf(CSeq* seq, SongOptions::Index index); ///< a byte

/// Tells the views of the song, if there is one, of a value of what does not know it: a part, a
/// point or a lane. Any thread.
void raiseSong(SeqNotice notice);
