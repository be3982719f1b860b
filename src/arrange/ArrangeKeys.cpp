#include "arrange/ArrangeKeys.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "arrange/LanePoints.h"
#include "arrange/PointKeys.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "gui/Keys.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/Workspace.h"

#include <cstdlib>

namespace {

constexpr int viewMargin = 24; ///< pixels around a part that is brought into view

struct Way {
    int along = 0, across = 0;
};

Way wayOf(int key) {
    return {(key == keyRight) - (key == keyLeft), (key == ::keyDown) - (key == ::keyUp)};
}

void moveBy(const ArrangeState& state, Way way) {
    CSeq* seq = state.seq();
    const MoveRange range = moveRange(seq);
    const int ticks = asMinMax(way.along * state.stepTicks(), range.minTicks, range.maxTicks);
    const int tracks = asMinMax(way.across, range.minTracks, range.maxTracks);
    if (ticks != 0 || tracks != 0) state.tell(moveParts(seq, ticks, tracks, state.ripple));
}

void resizeBy(const ArrangeState& state, int along) {
    CSeq* seq = state.seq();
    const ResizeRange range = resizeRange(seq, false);
    const int ticks = asMinMax(along * state.stepTicks(), range.least, range.greatest);
    if (ticks != 0) resizeParts(seq, ticks, true);
}

/// A part, or a point of a lane.
struct Place {
    const ArrangeRow* row = nullptr;
    CPart* part = nullptr;
    LanePoint point{};

    int tick() const { return point.point ? point.tick : part->pos.load(); }
    explicit operator bool() const { return part != nullptr; }
};

/// The selected part that lies furthest that way, or the selected point.
Place selectedPlace(const ArrangeState& state, Way way) {
    Place found;
    eachSelectedPart(state, [&](const ArrangeRow& row, CPart* part) {
        const bool further = way.along > 0   ? !found.part || part->pos > found.part->pos
                             : way.along < 0 ? !found.part || part->pos < found.part->pos
                                             : !found.part || way.across > 0;
        if (further) found = {&row, part};
    });
    if (found) return found;
    const std::vector<LanePoint> points = selectedLanePoints(state);
    if (points.empty()) return found;
    const LanePoint& point = way.across > 0 ? points.back() : points.front();
    return {point.row, point.part, point};
}

/// On the same row the next one, else on the next row with any the one that begins nearest.
Place nextPlace(const ArrangeState& state, Place from, Way way) {
    if (way.along != 0) {
        const auto& parts = from.row->songTrack->parts;
        const int index = parts.indexed(from.part) + way.along;
        return {from.row, parts.items(index)};
    }
    const auto& rows = state.rows.all();
    for (int i = int(from.row - rows.data()) + way.across; i >= 0 && i < int(rows.size());
         i += way.across) {
        const ArrangeRow& row = rows[size_t(i)];
        Place best;
        const auto consider = [&](const Place& place) {
            const int off = std::abs(place.tick() - from.tick());
            if (!best || off < std::abs(best.tick() - from.tick())) best = place;
        };
        for (const LanePoint& point : pointsOf(state, row)) consider({&row, point.part, point});
        if (row.ofTrack())
            for (auto* part : row.songTrack->parts) consider({&row, part});
        if (best) return best;
    }
    return {};
}

Place firstPlace(const ArrangeState& state) {
    for (const ArrangeRow& row : state.rows.all())
        if (auto* part = row.songTrack->parts.getFirst()) return {&row, part};
    return {};
}

void showPlace(ArrangeState& state, Place place) {
    const CRect box = partBox(state, *place.row, place.part);
    const int w = state.gridWidth(), h = state.gridHeight(), scroll = state.edit.scrollY;
    int64_t x = state.axis().scroll();
    if (box.left < viewMargin || box.left > w - viewMargin) x += box.left - viewMargin;
    state.scrollTo(x, asMinMax(scroll, place.row->bottom() - h, place.row->top));
}

} // namespace

bool editKey(ArrangeState& state, int key, int mods) {
    const Way way = wayOf(key);
    CSeq* seq = state.seq();
    if (pointEditKey(state, key, mods)) return true;
    if ((way.along == 0 && way.across == 0) || !seq || !seq->getProg()->getFirstSelectedPart())
        return false;
    if (mods == modControl) {
        moveBy(state, way);
        return true;
    }
    if (mods != modAlt || way.along == 0) return false;
    resizeBy(state, way.along);
    return true;
}

bool walkKey(ArrangeState& state, int key, int mods) {
    const Way way = wayOf(key);
    CSeq* seq = state.seq();
    if ((way.along == 0 && way.across == 0) || !seq || (mods & ~modShift)) return false;
    if (pointWalkKey(state, key, mods)) return true;
    const Place from = selectedPlace(state, way);
    const Place to = from ? nextPlace(state, from, way) : firstPlace(state);
    if (!to) return false;
    if (to.point.point) {
        choosePoint(state, to.point, mods & modShift);
        return true;
    }
    unselectPoints(state);
    if (!(mods & modShift)) seq->unselectParts();
    to.part->setSelected(true);
    seq->unselectTracks();
    seq->selectTrack(to.row->songTrack, true);
    showPlace(state, to);
    state.workspace.setStatus(partText(seq, to.row->songTrack, to.part));
    state.gridChanged();
    return true;
}
