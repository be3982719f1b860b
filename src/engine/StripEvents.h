#pragma once

#include "engine/CComp.h"

/// What a parameter event moves of a component's strips; both null when it is none of them.
struct StripTarget {
    COutputChannel* channel = nullptr;
    CSend* send = nullptr;
    explicit operator bool() const { return channel || send; }
};

StripTarget stripTarget(const CComp* c, const void* owner);

/// Goes through the parameter events of the strips of `c` in a block, from `first` on: calls
/// `piece(frames, offset)` for each piece that they cut it into, and at each cut
/// `move(target, event)`. Graph holder.
template <class Piece, class Move>
void eachStripEvent(CComp* c, const CMIDIBytes* first, int frames, Piece&& piece, Move&& move) {
    int last = 0;
    for (const CMIDIBytes* e = first; e; e = e->next) {
        if (e->kind != eventParam) continue;
        const StripTarget target = stripTarget(c, e->owner);
        if (!target) continue;
        const int at = CMIDIQ::frameOf(e, last, frames);
        if (at > last) piece(at - last, last);
        last = at;
        move(target, e);
    }
    if (frames > last) piece(frames - last, last);
}
