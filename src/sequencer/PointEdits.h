#pragma once

class CMarkerPart;
class CPart;
class CSeq;
class CStr;
class CTempoPart;

// What a user does to the points of the current program's timeline: markers, tempos and signatures.
// Each edit is one step, called "Add marker", "Move tempo", "Delete time signature" and so on; none
// where nothing would change. Places are kept within the song. Interface thread.

/// The point comes to be the program's, at its place.
void addPoint(CSeq* seq, CPart* point);
/// A new one there: a marker "Marker 3" as long as the bar, the tempo or signature in force.
CPart* newMarker(CSeq* seq, int tick);
/// `bpm` 0 takes the tempo in force.
CPart* newTempo(CSeq* seq, int tick, float bpm = 0.0f);
CPart* newTimesig(CSeq* seq, int tick);
void movePoint(CSeq* seq, CPart* point, int tick);
/// To another place and tempo (beats per minute) in one step.
void moveTempo(CSeq* seq, CTempoPart* point, int tick, float bpm);
void resizeMarker(CSeq* seq, CMarkerPart* marker, int length); ///< at least a tick
void deletePoint(CSeq* seq, CPart* point);
