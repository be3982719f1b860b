#include "sequencer/edit/PointClipboard.h"

#include "base/Numbers.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"

#include <algorithm>

namespace {

/// Calls `visit(songTrack, lane)` for the automation lanes that are open.
template <class F>
void eachShownLane(CSeq* seq, F&& visit) {
    for (auto* songTrack : seq->getProg()->tracks) {
        if (!songTrack->track->open()) continue;
        for (auto* lane : songTrack->track->subTracks)
            if (lane->visible && lane->automation()) visit(songTrack, lane);
    }
}

CSongTrack* placeOf(CSeq* seq, const CTrack* track) {
    for (auto* songTrack : seq->getProg()->tracks)
        if (songTrack->track == track) return songTrack;
    return nullptr;
}

} // namespace

std::vector<PartSlot> chosenPoints(CSeq* seq) {
    std::vector<PartSlot> found;
    eachShownLane(seq, [&](CSongTrack* songTrack, const CSubTrack* lane) {
        for (auto* part : songTrack->parts)
            for (const CBaseEvent* e = part->getParam(lane->slot); e; e = e->next)
                if (isSelected(e)) {
                    found.push_back({part, lane->slot});
                    break;
                }
    });
    return found;
}

bool anyChosenPoint(CSeq* seq) {
    return !chosenPoints(seq).empty();
}

void PointClipboard::copy(CSeq* seq) {
    std::vector<Lane> taken;
    int first = maxTicks;
    eachShownLane(seq, [&](const CSongTrack* songTrack, CSubTrack* lane) {
        Lane one{songTrack->track, lane, {}};
        for (auto* part : songTrack->parts)
            eachEvent(part->getParam(lane->slot), [&](const CEnvEvent* point, int tick) {
                if (isSelected(point))
                    one.points.push_back({saturate(int64_t(part->pos) + part->offset + tick),
                                          point->value, point->curve, point->shape});
            });
        std::ranges::stable_sort(one.points, {}, &LanePlace::tick);
        if (one.points.empty()) return;
        first = asMin(first, one.points.front().tick);
        taken.push_back(std::move(one));
    });
    for (Lane& lane : taken)
        for (LanePlace& p : lane.points) p.tick -= first;
    if (!taken.empty()) lanes = std::move(taken);
}

void PointClipboard::paste(CSeq* seq, int tick) const {
    std::vector<LaneLine> drawn;
    for (const Lane& from : lanes) {
        const bool known = seq->tracks.contains(from.track);
        CSongTrack* on = known ? placeOf(seq, from.track) : nullptr;
        const CSubTrack* lane =
            known && from.track->subTracks.contains(from.lane) ? from.lane : nullptr;
        if (lanes.size() == 1 && !(lane && from.track->selected())) {
            bool found = false;
            eachShownLane(seq, [&](CSongTrack* songTrack, const CSubTrack* shown) {
                if (found || !songTrack->track->selected()) return;
                found = true;
                on = songTrack;
                lane = shown;
            });
        }
        if (!on || !lane) continue;
        std::vector<LanePlace> line = from.points;
        for (LanePlace& p : line) p.tick = limitTicks(int64_t(p.tick) + tick);
        for (auto* part : on->parts) drawn.push_back({{part, lane->slot}, line});
    }
    drawPoints(seq, drawn, "Paste");
}
