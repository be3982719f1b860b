#pragma once

class CPart;
class CSeq;
class CUndo;

/// Records that the events of a part, or of its master, move to the nearest lines of a grid, which
/// counts from the part's own tick 0: the selected ones with `selectedOnly`, or all when none is.
/// Lengths and envelopes stay. False, and nothing is recorded, where all stand on it already.
bool quantize(CUndo* undo, CPart* part, int grid, bool selectedOnly);
/// One step, "Quantize": the selected parts of the current program to the grid of the song's snap;
/// of the part that is edited the selected events alone. Interface thread.
void quantizeParts(CSeq* seq);
