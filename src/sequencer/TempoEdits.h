#pragma once

class CPart;
class CSeq;
class CTempoPart;

// Edits of the tempo points of the current program, each one step of the history. Interface thread.

/// "Add tempo": a point at a tick (0 or more), with a tempo in beats per minute, or below 1 with
/// that which is in force there. On a line of tempo it becomes a bend of the line. Where a point
/// stands already that one gets the tempo. Gives the point, null without a program.
CTempoPart* addTempoPoint(CSeq* seq, int tick, float bpm = 0.0f);
/// "Move": a point goes to a tick; below 0 counts as 0.
void moveTempoPoint(CSeq* seq, CTempoPart* point, int tick);
/// "Delete".
void deleteTempoPoint(CSeq* seq, CTempoPart* point);
/// "Fit bars": the tempo becomes such that a recording, an audio part of one clip at its own speed,
/// lasts so many bars, 1 or more, from where it begins on. Without tempo points the song gets it;
/// else a point at its start does, those until its end go, and behind it all is as it was. False,
/// and nothing happens, for other parts, and where no tempo (10 to 250) does it.
bool fitBars(CSeq* seq, CPart* part, int bars);
