#include "notes/RowEndDrag.h"

#include "base/Numbers.h"
#include "instruments/CDrumSound.h"
#include "notes/NoteState.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/TempoMap.h"
#include "ui/PlaceText.h"

#include <cstdlib>

namespace {

int lengthOf(const NotePlace& place, int row) {
    const RowLoops* loops = rowLoops(place.part);
    return loops ? loops->of(row) : 0;
}

int partEnd(const NotePlace& place) {
    return place.seq->getTicks(place.part) - place.part->offset;
}

} // namespace

int RowEndDrag::rowAt(const NotePlace& place, const CSeqMouseEdit& edit, CPoint at) {
    const int y = at.y + edit.scrollY;
    if (!place.rows.drums() || !place.rows.covers(y)) return -1;
    const int row = place.rows.rowAt(y), own = lengthOf(place, row);
    const int x = place.xOf(edit.axis, own > 0 ? own : partEnd(place));
    return std::abs(at.x - x) <= reach ? row : -1;
}

RowEndDrag::RowEndDrag(NoteState& shared, int ofRow)
    : NoteGesture(shared), row(ofRow), ticks(lengthOf(shared.place(), ofRow)),
      drawn(contentDraft(shared.part)) {
}

RowEndDrag::~RowEndDrag() = default;

CPart* RowEndDrag::draft(const CPart* part) const {
    return part == state.part ? drawn.get() : nullptr;
}

void RowEndDrag::dragMove(const DragPoint& point) {
    const NotePlace place = state.place();
    const int start = place.part->pos + place.part->offset;
    const int at = asMinMax(asInt(state.axis().ticksAt(point.at.x)), 0, maxTicks);
    const int wanted = snapped(place.grid.snap, at, true) - start;
    ticks = wanted >= partEnd(place) ? 0 : asMax(wanted, int(RowLoops::shortest));
    const RowLoops* now = rowLoops(place.part);
    RowLoops loops = now ? *now : RowLoops();
    loops.set(row, ticks);
    setRowLoops(drawn.get(), &loops);
    const CDrumSound* sound = place.track->drumSound(row);
    state.workspace.setStatus((sound ? sound->getId() : CStr()) +
                              (ticks ? " repeats after " + lengthText(place.seq, ticks)
                                     : CStr(" lasts as long as the part")));
    state.shownChanged();
}

void RowEndDrag::apply(const DragPoint&) {
    setRowLoop(state.seq(), state.part, row, ticks);
}
