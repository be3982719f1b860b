#include "arrange/TakeRows.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/TakeGesture.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CDrag.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/take/Takes.h"
#include "ui/PlaceText.h"

#include <algorithm>

TakeSpan takeSpan(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    const Takes* takes = takesOf(part);
    if (!takes || row.take >= int(takes->takes.size())) return {};
    const Takes::Take& take = takes->takes[size_t(row.take)];
    const int start = part->pos, origin = saturate(int64_t(start) + part->offset);
    return {asMax(start, saturate(int64_t(origin) + take.at)),
            asMin(saturate(int64_t(start) + state.seq()->getTicks(part)),
                  saturate(int64_t(origin) + take.to()))};
}

CPart* takePartAt(const ArrangeState& state, const ArrangeRow& row, int x) {
    CPart* found = nullptr;
    for (auto* part : row.songTrack->parts) {
        const TakeSpan span = takeSpan(state, row, part);
        if (!span.empty() && x >= state.axis().xOf(span.from) && x < state.axis().xOf(span.to))
            found = part;
    }
    return found;
}

CStr takeText(const ArrangeState& state, const ArrangeRow& row, CPart* part) {
    const TakeSpan span = takeSpan(state, row, part);
    return CStr("Take ") + asStr(row.take + 1) + " of " + part->content()->id + ", " +
           placeText(state.seq(), span.from) + ", " + lengthText(state.seq(), span.to - span.from);
}

bool playsTake(CPart* part, int take) {
    const Takes* takes = takesOf(part);
    return takes && std::ranges::any_of(takes->comp,
                                        [take](const Takes::Piece& p) { return p.take == take; });
}

Press pressedTake(ArrangeGrid& grid, ArrangeState& state, const ArrangeRow& row, CPoint at,
                  int btn) {
    CPart* part = takePartAt(state, row, at.x);
    const bool free = !state.qv->recording && !state.qv->recUndo;
    if (!part || !(btn & modLeft) || row.songTrack->track->locked || !free) return {};
    return {std::make_unique<TakeGesture>(grid, state, row, part), editDraw, CDrag::clickRoom};
}

void useTake(const ArrangeState& state, CSongTrack* track, int take) {
    CSeq* seq = state.seq();
    if (state.qv->recording || state.qv->recUndo) return;
    std::vector<CPart*> parts;
    for (auto* part : track->parts)
        if (takesOf(part)) parts.push_back(part);
    const auto chosen = [](const CPart* part) { return part->selected(); };
    if (std::ranges::any_of(parts, chosen)) std::erase_if(parts, std::not_fn(chosen));
    for (CPart* part : parts)
        compTake(seq, part, take, part->pos, saturate(int64_t(part->pos) + seq->getTicks(part)));
}
