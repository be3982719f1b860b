#pragma once

class CPart;
class CTrack;
struct CBaseEvent;

/// Sounds a note or hit of a part of the track through what the track plays, while
/// `CSeq::preview` is on: an event, or for null the chord that the first of the selected ones
/// belongs to; all of a long phrase at once would be a blow to the ears. `transpose` counts
/// semitones, or sounds of the kit; what it leads beyond them is silent. Other events have no
/// sound. Interface thread.
void playEvent(CTrack* track, CPart* part, const CBaseEvent* event, int transpose);
