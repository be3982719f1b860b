#pragma once

class CPart;
class CSample;
class CSeq;
class CUndo;

/// Records that the range of the clip of `source` is heard within the only clip of `target` from a
/// tick of the target's own time on, which delays what follows: the target plays a new file, and
/// lasts the longer for it. Interface thread. False, and nothing is recorded, for clips that play
/// backward or at different sample rates, have more than two channels or no sample. Where the file
/// can't be written nothing is recorded either, and nothing is left of it.
bool pasteFrames(CSeq* seq, CUndo* undo, CPart* source, CPart* target, int tick);

/// Appends frames `from` to below `to` of a sample to a file that is being written; those in the
/// same format go over byte by byte. False when the file did not take all.
bool appendFrames(CSample* file, const CSample* source, int from, int to);
