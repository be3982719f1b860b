#include "arrange/gestures/DrawGesture.h"

#include "arrange/ArrangeState.h"
#include "arrange/LanePoints.h"
#include "arrange/LanePress.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "engine/ParamUnit.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/LaneUnit.h"
#include "sequencer/song/TempoMap.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int freePixels = 3; ///< between places without a grid

} // namespace

DrawGesture::DrawGesture(ArrangeGrid& over, ArrangeState& shared, const ArrangeRow& lane,
                         bool freely)
    : ArrangeGesture(over, shared), row(lane), free(freely) {
}

bool DrawGesture::stands() const {
    CSeq* seq = state.seq();
    return seq && seq->getProg()->tracks.contains(row.songTrack) &&
           row.songTrack->track->subTracks.contains(row.lane);
}

float DrawGesture::valueAt(int y) const {
    return float(laneOf(state, row, nullptr).valueOf(y));
}

void DrawGesture::dragMove(const DragPoint& point) {
    const int snap = dragGrid(state, point.btn);
    const int step = snap > 1 ? snap : asMax(1, asRound(state.axis().ticksIn(freePixels)));
    const auto tickAt = [&](int x) {
        return snapped(step, asMinMax(asInt(state.axis().ticksAt(x)), 0, maxTicks), true);
    };
    if (!begun) first = last = {tickAt(point.anchor.x), valueAt(point.anchor.y)};
    begun = true;
    const LanePlace now{tickAt(point.at.x), valueAt(point.at.y)};
    if (free) follow(now.tick, now.value, step);
    last = now;
    makeDrafts();
    CStr told = lanePlaceText(state, row, now.tick, now.value);
    if (!free) told = lanePlaceText(state, row, first.tick, first.value) + " to " + told;
    state.workspace.setStatus(told);
    state.gridChanged();
}

/// All places on the way of the pointer, which may have leapt.
void DrawGesture::follow(int tick, float value, int step) {
    const LanePlace from = last;
    const int way = tick < from.tick ? -step : step;
    const int count = (tick - from.tick) / way;
    for (int i = 0; i <= count; i++) {
        const float part = count ? float(i) / float(count) : 1.0f;
        followed[from.tick + i * way] = from.value + (value - from.value) * part;
    }
}

std::vector<LanePlace> DrawGesture::line() const {
    std::vector<LanePlace> all;
    if (!free) {
        all = {first, last};
        std::ranges::sort(all, {}, &LanePlace::tick);
        if (first.tick == last.tick) all = {last};
        return all;
    }
    for (const auto& [tick, value] : followed) all.push_back({tick, value});
    return thinned(all, 1.0f / float(asMax(1, row.height)));
}

void DrawGesture::makeDrafts() {
    places.clear();
    drafts.clear();
    const std::vector<LanePlace> drawn = line();
    for (auto* part : row.songTrack->parts) {
        const int ticks = state.seq()->getTicks(part);
        const int64_t end = int64_t(part->pos) + ticks;
        if (part->pos > drawn.back().tick || end < drawn.front().tick) continue;
        if (draftOf(part->content(), row.lane->slot)) continue; // a ghost of one that has its draft
        places.push_back({part, row.lane->slot});
        drafts.push_back(contentDraft(part));
        drawPoints(drafts.back().get(), places.back(), ticks, drawn);
    }
}

void DrawGesture::apply(const DragPoint&) {
    drawPoints(state.seq(), places, line());
}

CPart* DrawGesture::draftOf(const CPart* part, int slot) const {
    for (size_t i = 0; i < drafts.size(); i++)
        if (places[i].part->content() == part && places[i].slot == slot) return drafts[i].get();
    return nullptr;
}
