#pragma once

#include "base/CStr.h"

#include <map>
#include <memory>

class CComp;
class CQV;
class CSeq;
class CTrack;
class CUndo;

// How a track comes to its instrument. Interface thread; without a step it is done at once, and the
// graph is held for that.

/// Puts an instrument that is complete and linked nowhere into the graph: the track plays it, and
/// it is heard at the first audio out. The host owns it.
void linkInstrument(CComp* instrument, CTrack* track, CUndo* undo);
/// Gives a component a free place in the graph, in a row below the song; null for below the top.
/// `undo` may be about to add others, or null.
void placeInstrument(CComp* instrument, const CComp* song, const CUndo* undo);
/// A synthesizer with all its factory programs, complete and linked nowhere.
std::unique_ptr<CComp> newSynthesizer(CQV* host);
/// The same, linked like that.
CComp* addTrackInstrument(CSeq* seq, CTrack* track, CUndo* undo);
/// The built-in kit, at the end of that of a drum track, as part of a step.
void addDrums(CSeq* seq, CTrack* track, CUndo* undo);
/// Whether the notes of a track go anywhere.
bool feedsAnything(CTrack* track);
/// The names of the sounds that the track's instrument plays, by key, where it plays drums: all its
/// sounds have less than an octave. Empty else.
std::map<int, CStr> drumKeys(CTrack* track);
