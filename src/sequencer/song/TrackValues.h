#pragma once

#include "engine/StoredValue.h"

class CPart;
class CSeq;
class CStr;
class CMarkerPart;
class CSubTrack;
class CTrack;

// The values of tracks and parts that a user sets through `CQV::values`. Numbers beyond their range
// become its ends.

StoredValue colourOf(CTrack* track);      ///< 0xRRGGBB, -1 the theme's
StoredValue colourOf(CPart* part);        ///< 0xRRGGBB, -1 the track's
StoredValue lockedOf(CTrack* track);      ///< 0 or 1
StoredValue liveOf(CTrack* track);        ///< 0 or 1: what it plays waits for nothing
StoredValue armOf(CTrack* track);         ///< 0 or 1: takes are recorded here, selected or not
StoredValue monitorOf(CTrack* track);     ///< 0 or 1, of use in the manual monitor mode
StoredValue channelOf(CTrack* track);     ///< 0 to 15, -1 leaves messages on theirs
StoredValue sensitivityOf(CTrack* track); ///< percent, 0 to 100
StoredValue
colourOf(CMarkerPart* marker);            ///< 0 the look's own, else 1 to 16 of the tracks' palette
StoredValue bypassOf(CSubTrack* lane);    ///< 0 or 1: shown and edited, but not played
StoredValue recChannelsOf(CTrack* track); ///< 1 or 2
/// The swing table: on, amount (0 to 1), steps (1 to 128), ticks of a step (at least 1).
StoredValue swingOf(CTrack* track);
/// By how much of a step the swing is late there, -1 to 1; of a step from 0 on.
StoredValue swingStepOf(CTrack* track, int step);

/// One step, "Rename": a track, part, marker or program of the song takes the name. None where it
/// has that name already. Interface thread.
void renameObject(CSeq* seq, CObject* object, const CStr& name);
