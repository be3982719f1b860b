#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"
#include "engine/ObjectKinds.h"
#include "engine/plan/GraphPlan.h"
#include "sequencer/edit/Pending.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/ParamLanes.h"
#include "sequencer/song/TempoMap.h"
#include "sequencer/take/LiveEdits.h"
#include "sequencer/take/TrackTake.h"

#include <algorithm>
#include <limits>
#include <memory>

// Parameters that the user moves during a take, and the points that become of them.

namespace {

constexpr int pointGrid = 240; ///< ticks between points

CStr paramName(CObject* object, int param) {
    if (asStrip(object)) return COutputChannel::paramName(param);
    if (CComp* comp = asComp(object)) return comp->paramName(param);
    return controllerAsText(laneAutomation, param);
}

bool records(const CSubTrack* lane, const CObject* object, int param) {
    return lane->automation() && lane->object == object && lane->param == param;
}

} // namespace

void CSeq::recParam(CObject* object, int param, float value) {
    CTrack* track = trackOfParam(this, object);
    if (track && track->armed) track->take.addParam(object, param, value);
}

void CTrack::recordAutomation(int tick, int slot, float value) {
    if (!recPart || !host->recUndo) return;
    const CSeqProg* song = recSongTrack->prog;
    if (lastRecPos == -1) take.beginPass(song->loopCount, song->punchPos);
    for (auto* lane : subTracks)
        if (lane->automation() && lane->slot == slot)
            return take.recordAutomation(tick, lane, value, host->recUndo);
}

void CTrack::nextPass() {
    lastRecPos = -1;
    for (auto* lane : subTracks) lane->recorded = false;
}

void TrackTake::addParam(CObject* object, int param, float value) {
    const CSongTrack* on = track->recSongTrack;
    if (!on) return;
    const CSeqProg* song = on->prog;
    Param p{object, param, value, 0.0, 0, 0.0};
    do { // a block may wrap the loop meanwhile
        p.pass = song->loopCount;
        p.tick = song->pos;
        p.punch = song->punchPos;
    } while (p.pass != song->loopCount);
    moveToSound(p);
    params.push_back(p);
}

/// What it acts on was played before what is played now.
void TrackTake::moveToSound(Param& p) const {
    const CQV* host = seq()->host;
    const CSeqProg* song = track->recSongTrack.load()->prog;
    const int latest = params.empty() ? pass : params.back().pass;
    p.tick -= host->framesToTicks(double(host->plans->latencyAt(p.object)));
    if (p.tick >= p.punch) return;
    if (song->looping && p.pass > latest) { // the loop has led back since
        p.tick += song->rightLocator - song->leftLocator;
        --p.pass;
    }
    p.tick = std::max(p.tick, p.punch);
}

void TrackTake::purge(const ForgetSet& gone) {
    std::erase_if(params, [&gone](const Param& p) { return gone.has(p.object); });
}

void TrackTake::addParams(CUndo* step) {
    if (!track->recPart) {
        // The part of an audio take comes with its file.
        if (!track->takesAudio) params.clear();
        return;
    }
    for (const Param& p : params) {
        if (p.pass != pass) beginPass(p.pass, p.punch);
        if (CSubTrack* lane = laneOf(p, step))
            recordAutomation(tickOf(p.tick), lane, p.value, step);
    }
    params.clear();
}

void TrackTake::beginPass(int number, double from) {
    pass = number;
    punch = from;
    lanes.clear();
    track->lastRecPos = -1;
}

/// The lane of a parameter; a new one comes at once, and the step takes it away.
CSubTrack* TrackTake::laneOf(const Param& p, CUndo* step) {
    CSubTrack* known = nullptr;
    eachWithPending(step, &track->subTracks, [&](CSubTrack* lane) {
        if (!known && records(lane, p.object, p.param)) known = lane;
    });
    if (known) return known;
    auto* lane = new CSubTrack(paramName(p.object, p.param), laneAutomation);
    lane->object = p.object;
    lane->param = p.param;
    if (!track->placeLane(lane, step)) return nullptr;
    step->add2(lane, &track->subTracks, nullptr);
    auto staging = std::make_shared<CList>();
    staging->add(lane);
    seq()->recorder.edits.add([on = track, lane, staging] {
        on->subTracks.move(staging.get(), lane, -1);
        on->seq->lanesChanged(on);
    });
    seq()->songNotices.raise(SeqNotice::tracks);
    return lane;
}

void TrackTake::recordAutomation(int tick, CSubTrack* lane, float value, CUndo* step) {
    const int t = snapped(pointGrid, tick, true);
    const auto known = std::ranges::find(lanes, lane, &LanePass::lane);
    const bool first = known == lanes.end();
    if (!first && known->lastTick == t) return;
    if (first)
        lanes.push_back({lane, t});
    else
        known->lastTick = t;
    track->lastRecPos = t;
    keepContent(step);

    CPart* part = track->recPart;
    const double origin = double(part->pos) + part->offset;
    const double end =
        prog()->looping ? prog()->rightLocator - origin : std::numeric_limits<double>::max();
    auto write = std::make_shared<LivePoint>();
    write->part = part;
    write->lane = lane;
    write->tick = t;
    write->pass = pass;
    write->point = createEnvEvent(nullptr, value);
    write->anchor = createEnvEvent(nullptr, value);
    write->replace = first;
    write->cutFrom = punch - origin;
    write->cutTo = end;
    seq()->recorder.edits.add(
        [on = track->recSongTrack.load(), write] { addLivePoint(on, *write); });
    seq()->songNotices.raise(SeqNotice::parts);
}
