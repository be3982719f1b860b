#pragma once

class CMarkerPart;
class CPart;
class CSeq;
class CTempoPart;

// What a user does to the points of the current program's timeline: markers, tempos and signatures.
// Each edit is one step, called "Add marker", "Move tempo", "Delete time signature" and so on; none
// where nothing would change. Places are kept within the song. Interface thread.

/// "Marker 3", as long as the bar.
CPart* addMarker(CSeq* seq, int tick);
/// With a tempo in beats per minute, or below 1 with that which is in force there. On a line of
/// tempo it becomes a bend of the line. Where a point stands already that one gets the tempo.
CTempoPart* addTempoPoint(CSeq* seq, int tick, float bpm = 0.0f);
CPart* addTimesig(CSeq* seq, int tick); ///< that which is in force
void movePoint(CSeq* seq, CPart* point, int tick);
/// To another place and tempo (beats per minute) in one step.
void moveTempo(CSeq* seq, CTempoPart* point, int tick, float bpm);
void resizeMarker(CSeq* seq, CMarkerPart* marker, int length); ///< at least a tick
void deletePoint(CSeq* seq, CPart* point);
