#include "gui/PendingPaint.h"

#include <cstdlib>

namespace {

CRect shifted(const CRect& r, int dx, int dy) {
    return sizeRect(r, dx, dy, dx, dy);
}

/// Adds to `areas` what has to be painted of `area` after a move: it where it was, unless all of it
/// has gone along, and what of it was moved, where that is now.
void addMoved(DirtyAreas& areas, const CRect& area, const PendingPaint::Move& move) {
    const CRect inside = intersect(area, move.area);
    if (inside != area) areas.add(area);
    if (!inside.empty()) areas.add(intersect(shifted(inside, move.dx, move.dy), move.area));
}

/// What the move lays bare.
void addBared(DirtyAreas& areas, const PendingPaint::Move& move) {
    const CRect all = move.area, kept = intersect(all, shifted(all, move.dx, move.dy));
    if (kept.empty()) return areas.add(all);
    areas.add(asRect(all.left, all.top, all.right, kept.top));
    areas.add(asRect(all.left, kept.bottom, all.right, all.bottom));
    areas.add(asRect(all.left, kept.top, kept.left, kept.bottom));
    areas.add(asRect(kept.right, kept.top, all.right, kept.bottom));
}

DirtyAreas moved(const DirtyAreas& before, const PendingPaint::Move& move) {
    DirtyAreas after;
    for (const CRect& area : before.all()) addMoved(after, area, move);
    return after;
}

} // namespace

void PendingPaint::add(CRect area) {
    dirty.add(area);
}

void PendingPaint::move(CRect area, int dx, int dy) {
    if (area.empty() || (dx == 0 && dy == 0)) return;
    const Move now{area, dx, dy};
    dirty = moved(dirty, now);
    addBared(dirty, now);
    if (!moves.empty() && moves.back().area == area) {
        moves.back().dx += dx;
        moves.back().dy += dy;
    } else if (std::abs(dx) < area.width() && std::abs(dy) < area.height()) {
        moves.push_back(now);
    }
}

void PendingPaint::exposed(CRect area) {
    addCarried(area, 0);
}

void PendingPaint::missed(CRect area) {
    addCarried(area, 1);
}

void PendingPaint::addCarried(CRect area, size_t fromCopy) {
    DirtyAreas carried;
    carried.add(area);
    for (size_t i = fromCopy; i < sent.size(); i++) carried = moved(carried, sent[i]);
    for (const Move& move : moves) carried = moved(carried, move);
    for (const CRect& part : carried.all()) dirty.add(part);
}

void PendingPaint::copied() {
    if (!sent.empty()) sent.pop_front();
}

std::vector<PendingPaint::Move> PendingPaint::takeMoves() {
    std::vector<Move> now;
    for (const Move& m : moves) {
        const CRect kept = intersect(m.area, shifted(m.area, m.dx, m.dy));
        if (!kept.empty() && (m.dx || m.dy)) now.push_back(m);
    }
    moves.clear();
    sent.insert(sent.end(), now.begin(), now.end());
    return now;
}

DirtyAreas PendingPaint::takeAreas() {
    const DirtyAreas now = dirty;
    dirty.clear();
    return now;
}

void PendingPaint::forget() {
    dirty.clear();
    moves.clear();
}
