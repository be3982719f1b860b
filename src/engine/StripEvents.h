#pragma once

#include "engine/CComp.h"

/// What a parameter event moves of a component's strips; both null when it is none of them.
struct StripTarget {
    COutputChannel* channel = nullptr;
    CSend* send = nullptr;
    explicit operator bool() const { return channel || send; }
};

StripTarget stripTarget(const CComp* c, const void* owner);

/// Goes through the parameter events of a block from `first` on that are `wanted(event)`: calls
/// `piece(frames, offset)` for each piece that they cut it into, and at each cut `move(event)`.
/// Graph holder.
template <class Wanted, class Piece, class Move>
void eachParamEvent(const CMIDIBytes* first, int frames, Wanted&& wanted, Piece&& piece,
                    Move&& move) {
    int last = 0;
    for (const CMIDIBytes* e = first; e; e = e->next) {
        if (e->kind != eventParam || !wanted(e)) continue;
        const int at = CMIDIQ::frameOf(e, last, frames);
        if (at > last) piece(at - last, last);
        last = at;
        move(e);
    }
    if (frames > last) piece(frames - last, last);
}

/// The same for those of the strips of `c`, with `move(target, event)`.
template <class Piece, class Move>
void eachStripEvent(CComp* c, const CMIDIBytes* first, int frames, Piece&& piece, Move&& move) {
    StripTarget target;
    eachParamEvent(
        first, frames, [&](const CMIDIBytes* e) { return bool(target = stripTarget(c, e->owner)); },
        piece, [&](const CMIDIBytes* e) { move(target, e); });
}

/// The same for those of `c` itself that come in at `port`, which may be null.
template <class Piece, class Move>
void eachOwnEvent(const CComp* c, CMIDIQ* port, int frames, Piece&& piece, Move&& move) {
    eachParamEvent(
        port ? port->first() : nullptr, frames,
        [c](const CMIDIBytes* e) { return e->owner == static_cast<const void*>(c); }, piece, move);
}
