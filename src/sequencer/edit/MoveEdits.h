#pragma once

class CPart;
class CSeq;
class CSongTrack;
class CUndo;

/// What a drag does to the selected parts of the current program, but for those on locked tracks.
/// Each edit is one step; without anything to do there is none. Interface thread.

/// By how many ticks and rows all selected parts can be moved: none before tick 0, rows within the
/// program's. All 0 without a selection.
struct MoveRange {
    int minTicks = 0, maxTicks = 0;
    int minTracks = 0, maxTracks = 0;
};
MoveRange moveRange(CSeq* seq);
/// "Move", within `moveRange`. A part that the track so many rows on does not take, as a locked one
/// never does, stays.
void moveParts(CSeq* seq, int deltaTicks, int deltaTracks);
void recordMoves(CSeq* seq, CUndo* undo, int deltaTicks, int deltaTracks); ///< in an open step
/// "Copy": in the same way copies come in those places, and are selected in place of what they were
/// made of. Copies of ghosts are ghosts; with `ghosts` all are.
void copyParts(CSeq* seq, int deltaTicks, int deltaTracks, bool ghosts);

/// By how many ticks the ends, or the starts, of all selected parts can be moved: at least a tick
/// remains of each, nothing begins before tick 0, and a clip at its own speed has the frames.
struct ResizeRange {
    int least = 0, greatest = 0;
};
ResizeRange resizeRange(CSeq* seq, bool atStart);
/// "Resize": the selected parts end so many ticks later, or with `relative` off last so many. A
/// single clip at its own speed changes the range that it plays, as far as it has frames; one in
/// another mode is played slower or faster. Parts that would last less than a tick stay. All parts
/// that show the same clip follow it.
void resizeParts(CSeq* seq, int delta, bool relative);
/// "Resize": they begin so many ticks later, within `resizeRange`, and end where they did. What
/// they show stands still, but a single clip that follows the tempo is played slower or faster.
void resizePartsStart(CSeq* seq, int delta);

/// Where a part comes that is made at a tick: from the line of the song's grid at or before it on,
/// or between the locators when the loop is on and the tick lies there.
struct PartPlace {
    int pos = 0, length = 0;
};
PartPlace newPartPlace(CSeq* seq, int tick, int grid); ///< on another grid, in ticks
PartPlace newPartPlace(CSeq* seq, int tick);
/// "Insert part": an empty part of the track's class and name, which is selected alone. Null for a
/// track that has no parts or is locked.
CPart* insertPart(CSeq* seq, CSongTrack* songTrack, const PartPlace& place);
CPart* insertPart(CSeq* seq, CSongTrack* songTrack, int tick);
CPart* recordInsert(CSeq* seq, CUndo* undo, CSongTrack* songTrack, const PartPlace& place);
