#include "sequencer/song/TempoView.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/DeviceMidi.h"
#include "engine/SongClock.h"
#include "engine/TransportRing.h"
#include "engine/UndoPlan.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"

#include <algorithm>

float TempoView::before(const CSeqProg* prog) const {
    return prog->tempos.empty() ? seq->host->tempoNow : seq->host->songTempo;
}

double TempoView::framesToTicks(double ticks, double frames, int rate) const {
    CSeqProg* prog = seq->getProg();
    if (!prog) return seq->host->framesToTicks(frames);
    return prog->tempoMap().framesToTicks(before(prog), ticks, frames, rate);
}

double TempoView::ticksToFrames(int from, int ticks, int rate) const {
    CSeqProg* prog = seq->getProg();
    if (!prog) return seq->host->ticksToFrames(ticks);
    return prog->tempoMap().ticksToFrames(before(prog), from, ticks, rate);
}

CTempoPart* TempoView::pointAt(int tick) const {
    CSeqProg* prog = seq->getProg();
    return prog ? prog->tempoMap().lastAt(tick) : nullptr;
}

CTempoPart* TempoView::pointAfter(int tick) const {
    CSeqProg* prog = seq->getProg();
    return prog ? prog->tempoMap().nextAfter(tick) : nullptr;
}

int TempoView::ticksToNext(double tick) const {
    CSeqProg* prog = seq->getProg();
    const int64_t from = asInt64(tick);
    const CTempoPart* next = prog ? prog->tempoMap().nextFrom(double(from)) : nullptr;
    return next ? int(next->pos - from) : -1;
}

CTempoPart* TempoView::pointHere() const {
    CSeqProg* prog = seq->getProg();
    if (!prog) return nullptr;
    return prog->tempoMap().lastAt(prog->pos + seq->host->framesToTicks(0.5));
}

double TempoView::here() const {
    const float songTempo = seq->host->songTempo;
    const CTempoPart* point = pointHere();
    if (!point) return double(songTempo);
    if (!point->ramp) return double(point->getTempo());
    CSeqProg* prog = seq->getProg();
    return prog->tempoMap().bpmAt(songTempo, asMax(double(prog->pos), double(point->pos)));
}

CTimesigPart* TempoView::signatureHere() const {
    CSeqProg* prog = seq->getProg();
    return prog ? prog->timesigInForce(asInt(seq->getPos())) : nullptr;
}

namespace {

/// Where a loop turns, and how far it goes back there.
struct Turn {
    double at = 0.0, back = 0.0; ///< ticks; none goes back nowhere
};

Turn nextTurn(CSeqProg* prog) {
    if (!prog->playing || !prog->isLooping()) return {};
    const CMarkerPart* here = prog->playingMarker;
    const CMarkerPart* next = prog->activeMarker;
    if (prog->seq->options.useMarkers() && here && next)
        return {double(here->endTick()), double(here->endTick()) - next->pos};
    const double left = prog->leftLocator, right = prog->rightLocator;
    return {right, std::max(0.0, right - left)};
}

} // namespace

void TempoView::follow() {
    CSeqProg* prog = seq->getProg();
    if (!prog) return;
    CQV* host = seq->host;
    const double speed = host->renderMode ? 1.0 : host->deviceMidi->codeIn.speed();
    const double rate = double(host->rate) / speed;
    double from = prog->pos;
    Turn turn = nextTurn(prog);
    // What is nearer to the turn than a frame goes on behind it.
    if (turn.back > 0.0 && from <= turn.at && from + host->ticksPerFrame() > turn.at) {
        from -= turn.back;
        turn = {};
    }
    const auto [bpm, frames] =
        prog->tempoMap().stride(host->songTempo, from, SongClock::strideFrames, rate);
    host->tempo = float(bpm * speed);
    const double tpf = double(host->tempo) * ticksPerSecondPerBpm / double(host->rate);
    const double toTurn = turn.back > 0.0 ? (turn.at - from) / tpf : double(frames);
    const int whole = toTurn > 0.0 ? asInt(toTurn) : frames;
    host->clock->limit(std::min(frames, whole), from + frames * tpf);
}

void TempoView::changed() {
    changes.fetchAdd(1);
    TransportCall call;
    call.target = seq;
    call.act = [](CObject* target, double, void*) {
        auto* song = static_cast<CSeq*>(target);
        song->host->clock->cut();
        song->tempo.follow();
    };
    seq->host->onTransport(call);
}

void TempoView::planRooms(UndoPlan& plan) {
    rooms.clear();
    const std::vector<CList*> lists = plan.lists();
    for (auto* prog : seq->programs())
        if (std::ranges::find(lists, &prog->tempos) != lists.end())
            rooms.emplace_back(prog, TempoMap::roomFor(plan.contents(&prog->tempos).size()));
}

void TempoView::takeRooms() {
    for (auto& [prog, room] : rooms) prog->takeTempoRoom(room);
    changes.fetchAdd(1);
}
