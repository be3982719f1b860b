#include "arrange/gestures/TakeGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"
#include "sequencer/take/Takes.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

TakeGesture::TakeGesture(ArrangeGrid& over, ArrangeState& shared, const ArrangeRow& take, CPart* of)
    : ArrangeGesture(over, shared), row(take), part(of) {
}

bool TakeGesture::stands() const {
    CSeq* seq = state.seq();
    return seq && seq->getProg()->tracks.contains(row.songTrack) &&
           row.songTrack->parts.contains(part) && takesOf(part);
}

void TakeGesture::dragMove(const DragPoint& point) {
    const int step = dragGrid(state, point.btn);
    const auto tickAt = [&](int x) {
        return snapped(step, asMinMax(asInt(state.axis().ticksAt(x)), 0, maxTicks), true);
    };
    const int a = tickAt(point.anchor.x), b = tickAt(point.at.x);
    const int origin = saturate(int64_t(part->pos) + part->offset);
    swiped = {asMin(a, b), asMax(a, b)};
    draft = std::make_unique<Takes>(*takesOf(part));
    draft->choose(row.take, saturate(int64_t(swiped.from) - origin),
                  saturate(int64_t(swiped.to) - origin));
    state.workspace.setStatus(CStr("Take ") + asStr(row.take + 1) + ", " +
                              placeText(state.seq(), swiped.from) + " to " +
                              placeText(state.seq(), swiped.to));
    state.gridChanged();
}

void TakeGesture::apply(const DragPoint&) {
    if (draft && stands()) compTake(state.seq(), part, row.take, swiped.from, swiped.to);
}

void TakeGesture::click(const DragPoint& point) {
    if (!stands()) return;
    const int origin = saturate(int64_t(part->pos) + part->offset);
    const int tick = asInt(state.axis().ticksAt(point.anchor.x)) - origin;
    const TakeSpan all = takeSpan(state, row, part);
    TakeSpan between = all;
    for (const Takes::Piece& p : takesOf(part)->comp)
        if (tick >= p.from && tick < p.to) between = {p.from + origin, p.to + origin};
    compTake(state.seq(), part, row.take, between.from, between.to);
}

const Takes* TakeGesture::draftTakes(const CPart* content) const {
    return part->content() == content ? draft.get() : nullptr;
}
