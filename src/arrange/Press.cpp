#include "arrange/Press.h"

#include "arrange/ArrangeGrid.h"
#include "arrange/ArrangeState.h"
#include "arrange/LanePoints.h"
#include "arrange/LanePress.h"
#include "arrange/PartHandles.h"
#include "arrange/RangePainter.h"
#include "arrange/SongRange.h"
#include "arrange/TakeRows.h"
#include "arrange/TrackNotes.h"
#include "arrange/gestures/ClipGesture.h"
#include "arrange/gestures/HandGesture.h"
#include "arrange/gestures/InsertGesture.h"
#include "arrange/gestures/LassoGesture.h"
#include "arrange/gestures/LoopGesture.h"
#include "arrange/gestures/MoveGesture.h"
#include "arrange/gestures/RangeGesture.h"
#include "arrange/gestures/SizeGesture.h"
#include "arrange/gestures/SlipGesture.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"

namespace {

constexpr int handRoom = 8; ///< of the right button

/// A press and what lies under it.
struct Target {
    ArrangeGrid& grid;
    ArrangeState& state;
    CPoint at;
    int btn;
    const ArrangeRow* row = nullptr;
    PartHit hit{};

    int tick(bool nearest) const {
        const int here = asMinMax(asInt(state.axis().ticksAt(at.x)), 0, maxTicks);
        return snapped(state.snapTicks(), here, nearest);
    }
    template <class G, class... More>
    Press begin(int mode, int room, More&&... more) const {
        return {std::make_unique<G>(grid, state, std::forward<More>(more)...), mode, room};
    }
};

void choosePart(const Target& t) {
    CSeq* seq = t.state.seq();
    if (!(t.btn & modShift)) unselectPoints(t.state);
    if (!t.hit.part->selected()) {
        if (!(t.btn & modShift)) seq->unselectParts();
        t.hit.part->setSelected(true);
    }
    if (!t.row->songTrack->track->selected()) {
        seq->unselectTracks();
        seq->selectTrack(t.row->songTrack, true);
    }
    t.state.gridChanged();
}

void splitHere(const Target& t) {
    CSeq* seq = t.state.seq();
    CUndo* undo = t.state.qv->undoStart("Split part", seq);
    seq->splitPart(t.row->songTrack, t.hit.part, t.tick(true) - t.hit.part->pos, 0, splitApart,
                   undo);
    t.state.qv->undoEnd(undo, true);
}

Press middle(const Target& t) {
    return t.begin<HandGesture>(
        editPress, CDrag::clickRoom,
        [place = t.tick(true), &t = t.state](CPoint) { t.qv->setPos(place); });
}

Press right(const Target& t) {
    if (t.hit.part && (t.btn & modAlt)) {
        splitHere(t);
        return {};
    }
    if (t.hit.part) choosePart(t);
    return t.begin<HandGesture>(editPress, handRoom,
                                [&grid = t.grid](CPoint) { grid.contextMenu(); });
}

Press onHandle(const Target& t, CRect box, PartHandle handle) {
    if (handle == PartHandle::loop) return t.begin<LoopGesture>(editCopy, 0, t.hit.part);
    return t.begin<ClipGesture>(editMove, 0, t.hit.part, box, handle);
}

Press onPart(const Target& t) {
    const CRect box = partBox(t.state, *t.row, t.hit.part);
    const PartHandle handle = handleAt(t.hit.part, box, t.at); // of those that are selected yet
    choosePart(t);
    if (handle != PartHandle::none && !(t.btn & (modControl | modAlt)))
        return onHandle(t, box, handle);
    if ((t.btn & modControl) && (t.btn & modAlt)) return t.begin<SlipGesture>(editMove, 0);
    if (t.hit.zone == zoneStart) return t.begin<SizeGesture>(editResizeStart, 0, t.hit.part, true);
    if (t.hit.zone == zoneEnd) return t.begin<SizeGesture>(editResizeEnd, 0, t.hit.part, false);
    return t.begin<MoveGesture>(t.btn & modControl ? editCopy : editMove, 0, t.hit.part);
}

Press onEmpty(const Target& t) {
    if (t.row->songTrack->track->kind == trackFolder) return {};
    return t.begin<InsertGesture>(editMove, 0, t.row->songTrack,
                                  newPartPlace(t.state.seq(), t.tick(false), t.state.snapTicks()));
}

/// The tool for ranges: with the range that is chosen, or another one from here on.
Press onRange(const Target& t) {
    using Act = RangeGesture::Act;
    const TimeRange* range = t.state.range.get();
    if (!range || !inRows(t.state, *range, t.at.y))
        return t.begin<ChooseRangeGesture>(editLasso, 0);
    const int from = t.state.axis().xOf(range->from), to = t.state.axis().xOf(range->to);
    const int edge = edgeWidth(to - from);
    if (t.at.x < from - edge || t.at.x >= to + edge)
        return t.begin<ChooseRangeGesture>(editLasso, 0);
    if (t.at.x < from + edge) return t.begin<RangeGesture>(editResizeStart, 0, Act::start);
    if (t.at.x >= to - edge)
        return t.begin<RangeGesture>(editResizeEnd, 0, t.btn & modAlt ? Act::stretch : Act::end);
    const bool copies = t.btn & modControl;
    return t.begin<RangeGesture>(copies ? editCopy : editMove, 0, copies ? Act::copy : Act::move);
}

Press lasso(const Target& t) {
    if (!(t.btn & modShift)) {
        t.state.seq()->unselectParts();
        unselectPoints(t.state);
    }
    t.state.gridChanged();
    return t.begin<LassoGesture>(editLasso, 0);
}

} // namespace

Press pressed(ArrangeGrid& grid, ArrangeState& state, CPoint at, int btn) {
    Target t{grid, state, at, btn};
    t.row = state.rows.at(at.y + state.edit.scrollY);
    if (state.range.tool() && (btn & modLeft)) return onRange(t);
    if (t.row && t.row->take >= 0) {
        Press onTake = pressedTake(grid, state, *t.row, at, btn);
        if (onTake.gesture) return onTake;
        t.row = nullptr;
    }
    state.notesPart = nullptr;
    if (t.row && t.row->notes) {
        Press onNotes = pressedNotes(grid, state, *t.row, at, btn);
        if (onNotes.taken) return onNotes;
        t.row = nullptr;
    }
    if (t.row && t.row->lane) {
        Press inLane;
        if (!(btn & modMiddle)) inLane = pressedLane(grid, state, *t.row, at, btn);
        if (inLane.gesture) return inLane;
        t.row = nullptr;
    }
    if (t.row) t.hit = partAtPos(state, *t.row, at.x);
    if (btn & modMiddle) return middle(t);
    if (btn & modRight) return right(t);
    if (t.hit.part && (!(btn & modShift) || (btn & modControl))) return onPart(t);
    if (t.row && !t.hit.part && (btn & (modAlt | modDouble))) return onEmpty(t);
    return lasso(t);
}
