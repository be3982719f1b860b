#include "arrange/gestures/RangeGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/RangePainter.h"
#include "arrange/SongRange.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

int tickAt(const ArrangeState& state, int x, int grid) {
    return asMax(0, snapped(grid, asMinMax(asInt(state.axis().ticksAt(x)), 0, maxTicks), true));
}

/// Those that show between two heights of the view.
std::vector<CSongTrack*> tracksBetween(const ArrangeState& state, int a, int b) {
    const int scroll = state.edit.scrollY;
    const ArrangeRow* first = state.rows.nearest(asMin(a, b) + scroll);
    const ArrangeRow* last = state.rows.nearest(asMax(a, b) + scroll);
    std::vector<CSongTrack*> tracks;
    for (; first && first <= last; first++)
        if (tracks.empty() || tracks.back() != first->songTrack) tracks.push_back(first->songTrack);
    return tracks;
}

} // namespace

void ChooseRangeGesture::dragMove(const DragPoint& point) {
    const int step = dragGrid(state, point.btn);
    const int a = tickAt(state, point.anchor.x, step), b = tickAt(state, point.at.x, step);
    TimeRange range;
    range.from = asMin(a, b);
    range.to = asMax(a, b);
    range.tracks = tracksBetween(state, point.anchor.y, point.at.y);
    tellAt(point, placeText(state.seq(), range.from) + "   " +
                      spanText(state.seq(), range.to - range.from));
    state.range.set(range);
    if (a != b)
        state.workspace.setStatus("Range from " + placeText(state.seq(), range.from) + ", " +
                                  lengthText(state.seq(), range.to - range.from));
}

void ChooseRangeGesture::apply(const DragPoint&) {
}

RangeGesture::RangeGesture(ArrangeGrid& over, ArrangeState& shared, Act what)
    : ArrangeGesture(over, shared), act(what), before(*shared.range.get()) {
}

bool RangeGesture::stands() const {
    return state.range.get() && state.range.get()->tracks == before.tracks;
}

int RangeGesture::tracksMoved(const DragPoint& point) const {
    const int scroll = state.edit.scrollY;
    const ArrangeRow* from = state.rows.nearest(point.anchor.y + scroll);
    const ArrangeRow* to = state.rows.nearest(point.at.y + scroll);
    const auto& tracks = state.seq()->getProg()->tracks;
    const int first = tracks.indexed(before.tracks.front());
    const int last = tracks.indexed(before.tracks.back());
    return from && to ? asMinMax(to->track - from->track, -first, tracks.getCount() - 1 - last) : 0;
}

void RangeGesture::dragMove(const DragPoint& point) {
    CSeqMouseEdit& mouse = state.edit;
    const bool whole = act == Act::move || act == Act::copy;
    const int anchor = whole || act == Act::start ? before.from : before.to;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    const int length = before.to - before.from;
    const int least = whole || act == Act::start ? -before.from : 1 - length;
    const int most = act == Act::start ? length - 1 : maxTicks - before.to;
    mouse.deltaPos =
        asMinMax(state.snappedBy(dragGrid(state, point.btn), anchor, dragged), least, most);
    mouse.deltaY = whole ? tracksMoved(point) : 0;
    const TimeRange now = become();
    tellAt(point, dragText(state.seq(), anchor, mouse.deltaPos) + "   " +
                      spanText(state.seq(), now.to - now.from));
    state.workspace.setStatus(placeText(state.seq(), anchor + mouse.deltaPos) + "  (" +
                              deltaText(state.seq(), mouse.deltaPos) + ")");
    state.gridChanged();
}

TimeRange RangeGesture::become() const {
    TimeRange range = before;
    const int delta = state.edit.deltaPos;
    const bool whole = act == Act::move || act == Act::copy;
    if (whole || act == Act::start) range.from += delta;
    if (whole || act != Act::start) range.to += delta;
    const auto& tracks = state.seq()->getProg()->tracks;
    for (CSongTrack*& track : range.tracks)
        track = tracks.items(tracks.indexed(track) + state.edit.deltaY);
    return range;
}

void RangeGesture::edit() {
    CSeq* seq = state.seq();
    const int ticks = state.edit.deltaPos, tracks = state.edit.deltaY;
    if (act == Act::move) state.tell(::moveRange(seq, before, ticks, tracks));
    if (act == Act::copy) state.tell(copyRange(seq, before, ticks, tracks));
    if (act == Act::stretch) state.tell(stretchRange(seq, before, before.to - before.from + ticks));
}

void RangeGesture::apply(const DragPoint&) {
    if (state.edit.deltaPos == 0 && state.edit.deltaY == 0) return;
    const TimeRange range = become();
    edit();
    state.range.set(range);
}

void RangeGesture::paintOverlay(CGraphic* g, CRect asked) const {
    paintRange(g, state, become(), asked);
}
