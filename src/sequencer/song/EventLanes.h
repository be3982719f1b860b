#pragma once

#include "sequencer/song/CSubTrack.h"

struct CBaseEvent;
struct CDrumEvent;

/// What an edit of events reaches in a part.
struct EventLane {
    int kind = 0;   ///< a LaneKind; any other number means notes, drum hits or clips
    int number = 0; ///< the slot of an automation lane, or the number of a controller

    bool automation() const { return kind == laneAutomation; }
    /// Whether it shows values of the events of a part: -1 to -9.
    bool values() const { return kind <= laneController && kind >= laneFlam; }
    /// Whether these are of notes and hits, and not of messages by themselves.
    bool ofNotes() const { return kind <= laneVelocity && kind >= laneFlam; }
};

/// Whether an event of a part of that class (PartType) belongs to the lane. Of a MIDI part all
/// events belong to its notes, so that they are edited together where they are selected together.
bool onLane(const EventLane& lane, int partType, const CBaseEvent* event);
/// The value of an event on a lane of values or automation, 0 to 1; what has none gives 0.
float laneValue(const EventLane& lane, int partType, const CBaseEvent* event);
/// Sets it, kept within 0 to 1; the velocity of a note is at least 1 of 127.
void setLaneValue(const EventLane& lane, int partType, CBaseEvent* event, float value);
/// A new event of the lane with that value, owned by the caller; null for notes, what notes have,
/// clips, and the aftertouch of single notes, which take more than a value.
CBaseEvent* newLaneEvent(const EventLane& lane, int partType, float value);

/// The numbers of lanes of styles (HitStyle): percent of chance, repeats, milliseconds of flam; and
/// the value, 0 to 1, at which a lane shows one.
int styleOf(int laneKind, float value);
float styleShare(int laneKind, double number);

/// A parameter of a hit: 0 velocity and 2 tune, 0 to 1, 1 pan, for which 0 to 1 leads from left to
/// right. Others are ignored.
void setDrumParam(CDrumEvent* event, int param, float value);
float drumParam(const CDrumEvent* event, int param); ///< 0 to 1, of those; 0 of others
