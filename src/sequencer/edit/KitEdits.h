#pragma once

#include "base/CStr.h"
#include "engine/StoredValue.h"

#include <vector>

class CDrumSound;
class CSeq;
class CTrack;
class CUndo;

// What a user does to the kit of a drum track: hits go with their sounds in all parts, and so do
// the lengths of rows. Nothing happens on a locked track. Interface thread.

constexpr int mostKitSounds = 256; ///< events name them by a byte

/// One step: new sounds behind the others, "Add drum". What can't be read, or has no room, is left
/// out: the result is the first of them, empty when all have come.
CStr addDrums(CSeq* seq, CTrack* track, const std::vector<CStr>& paths);
/// One step: the sound plays another file and takes its name, "Replace drum". False where the file
/// can't be read.
bool setDrumSample(CSeq* seq, CDrumSound* sound, const CStr& path);
/// One step: the sound goes to another place, "Move drum".
void moveDrum(CSeq* seq, CDrumSound* sound, int place);
/// One step: the sound goes with its hits, "Delete drum".
void removeDrum(CSeq* seq, CDrumSound* sound);

// Of a step of the caller's.
CStr recordDrums(CSeq* seq, CTrack* track, const std::vector<CStr>& paths, CUndo* undo);
bool recordSample(CSeq* seq, CDrumSound* sound, const CStr& path, CUndo* undo);
/// The hits of each sound name the place that `places` tells for it; those of -1 are deleted.
void moveHits(CSeq* seq, CTrack* track, const std::vector<int>& places, CUndo* undo);

// Set through `CQV::values`.
StoredValue levelOf(CDrumSound* sound); ///< 0 to 1, squared when applied
StoredValue panOf(CDrumSound* sound);   ///< -1 to 1
StoredValue muteOf(CDrumSound* sound);  ///< 0 or 1
StoredValue soloOf(CDrumSound* sound);  ///< 0 or 1
