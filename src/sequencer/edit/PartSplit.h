#pragma once

#include <memory>

class CPart;
class CSeq;
class CSongTrack;
class CUndo;
class PartChange;
struct CBaseEvent;

/// Cutting of parts and events; see also `CSeq::splitPart`. Interface thread.

/// Cuts an event of `copy`, the copy of the content of `part`, `at` ticks behind its own start
/// `tick`; the right half comes into `copy`. Only notes, drum hits and clips that last longer are
/// cut: notes lose their selection, clips the fades at the cut. False otherwise.
bool splitEvent(CSeq* seq, CPart* part, CPart* copy, CBaseEvent* event, int tick, int at);
/// Records that all events of a part that last over `tick`, in the part's own time, are cut there:
/// the selected ones, or all when none is. An audio part holds several clips from then on. False,
/// and nothing is recorded, when there are none.
bool splitEventsInPart(CSeq* seq, CPart* part, int tick, CUndo* undo);
/// As `CSeq::splitPart`, by way of `change`.
bool cutPart(CSeq* seq, CSongTrack* songTrack, CPart* part, int at, int gap, int mode,
             PartChange& change);
/// A new part of what `part` shows from one tick behind its start to before another, in its place,
/// cut as by `splitPart`; neither selected nor a ghost. Null where nothing of it lies there, or its
/// only clip can't be cut there.
std::unique_ptr<CPart> partPiece(CSeq* seq, CPart* part, int from, int to);
/// The same without a look at the clip.
std::unique_ptr<CPart> uncheckedPiece(CSeq* seq, CPart* part, int from, int to);
/// `at` within the part; where it can't be cut there, the end of it that is nearer.
int nearestCut(CSeq* seq, CPart* part, int at);
