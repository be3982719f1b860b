#pragma once

#include "sequencer/song/EventKinds.h"

#include <memory>
#include <vector>

class CSeq;
class CSeqProg;
class CSongTrack;
class CUndo;
class CUndoItem;

/// What edits of parts are made of. Interface thread.

/// A part of the class of another, with its place, length, colour, mute and channels, and the name
/// that its content has; neither selected nor a ghost, and empty.
std::unique_ptr<CPart> newPartLike(CPart* part);
/// The same with the content.
std::unique_ptr<CPart> ownCopy(CPart* part);
/// An empty part of a class (PartType).
std::unique_ptr<CPart> emptyPart(int partType);
/// A part that is not linked takes over the takes of another; its own time begins `shift` ticks
/// earlier.
void copyTakes(CPart* from, CPart* to, int shift);
/// Selected parts of a song track that an edit may reach, in its order: none of a locked track.
std::vector<CPart*> selectedParts(const CSongTrack* songTrack);
/// The same of all tracks of a program.
std::vector<CPart*> selectedParts(const CSeqProg* prog);
/// A part, and where it stands in the current program.
struct PlacedPart {
    CPart* part;
    CSongTrack* songTrack;
    int row;
};
/// Those of the current program, by rows.
std::vector<PlacedPart> selectedParts(CSeq* seq);
/// Every part of the song that shows the content of `part`, which stands on a track.
std::vector<CPart*> partsShowing(CSeq* seq, CPart* part);

/// A copy of an event of a part of that class (PartType), without a follower.
CBaseEvent* copyEvent(int partType, const CBaseEvent* event);
/// The length in ticks of a note or drum hit; null for events that have none, clips among them.
int* eventLength(int partType, CBaseEvent* event);
/// Whether an audio part, or its master, holds several clips that are edited one by one.
bool isMulticlip(CPart* part);
bool hasSelectedEvents(CPart* part);
/// Calls `visit(event, tick)` for each event of a list.
template <class F>
void eachEvent(CBaseEvent* head, F&& visit) {
    int tick = 0;
    for (CBaseEvent* e = head; e; e = e->next) visit(e, tick += e->delta);
}
/// The same for the points of a lane.
template <class F>
void eachEvent(CEnvEvent* head, F&& visit) {
    eachEvent(static_cast<CBaseEvent*>(head),
              [&visit](CBaseEvent* e, int tick) { visit(asLanePoint(e), tick); });
}
/// Why an edit is refused that would pass `maxTicks`.
constexpr const char* songTooLong = "The song would become too long";

/// Moves the events of a list into a collector, each at the tick that `place(event, tick)` gives.
template <class F>
void moveList(CBaseEvent* head, EventCollector& into, F&& place) {
    for (int tick = 0; head;) {
        CBaseEvent* next = head->next;
        tick += head->delta;
        into.add(place(head, tick), head);
        head = next;
    }
}
/// Moves the events of a part that is not linked, or the points of one of its slots, into a
/// collector.
void takeEvents(CPart* part, EventCollector& into);
void takePoints(CPart* part, int slot, EventCollector& into);
/// Gives collected points to a slot of such a part; without any it keeps its own.
void putPoints(CPart* part, int slot, EventCollector& points);

/// Whether two parts of a class, neither a ghost, hold the same events and points at the same
/// ticks, selected or not.
bool sameContent(CPart* a, CPart* b);

/// Parts that leave and parts that come in one step. They leave first, so that on the way back
/// their places in the lists are those that they had.
class PartChange {
public:
    void remove(CSongTrack* songTrack, CPart* part) { leaving.push_back({songTrack, part}); }
    /// Takes a part of a class that the track accepts.
    void add(CSongTrack* songTrack, std::unique_ptr<CPart> part);
    bool empty() const { return leaving.empty() && coming.empty(); }
    /// Hands all over to the step, which puts the lists in order when it is carried out.
    void record(CUndo* undo);

private:
    struct Leaving {
        CSongTrack* songTrack;
        CPart* part;
    };
    struct Coming {
        CSongTrack* songTrack;
        std::unique_ptr<CPart> part;
    };
    std::vector<Leaving> leaving;
    std::vector<Coming> coming;
};

/// Records that a part moves by so many ticks, and from one track to another if these differ.
void recordTransfer(CUndo* undo, CPart* part, CSongTrack* from, CSongTrack* to, int ticks);
/// Records that a part or point moves by so many ticks, or grows by them, when the step is carried
/// out.
void recordMove(CUndo* undo, CPart* part, int ticks);
void recordGrow(CUndo* undo, CPart* part, int ticks);
/// Records that a part is muted, or is heard again.
void recordMuteToggle(CUndo* undo, CPart* part);
/// Records that every part that shows the content of `part` holds several clips from now on.
void recordMulticlip(CSeq* seq, CPart* part, CUndo* undo);

/// By how many ticks an item moves a part or point, or makes it longer, forward; 0 for what it does
/// not change so.
int moveOf(const CUndoItem* item);
int growthOf(const CUndoItem* item);
