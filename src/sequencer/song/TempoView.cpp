#include "sequencer/song/TempoView.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
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
    const CQV* host = seq->host;
    return prog->tempoMap().ofBlock(prog->pos, host->frames, double(host->rate),
                                    double(host->tempoNow));
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

void TempoView::follow(int frames) {
    CSeqProg* prog = seq->getProg();
    if (!prog) return;
    CQV* host = seq->host;
    host->tempo = float(prog->tempoMap().blockBpm(host->songTempo, prog->pos, frames,
                                                  double(host->rate), double(host->tempoNow)));
}

void TempoView::changed() {
    changes.fetchAdd(1);
    TransportCall call;
    call.target = seq;
    call.act = [](CObject* target, double, void*) {
        auto* song = static_cast<CSeq*>(target);
        song->tempo.follow(song->host->frames);
    };
    seq->host->onTransport(call);
}

void TempoView::planRooms(UndoPlan& plan) {
    rooms.clear();
    const std::vector<CList*> lists = plan.lists();
    for (auto* prog : each<CSeqProg>(seq->progs))
        if (std::ranges::find(lists, &prog->tempos) != lists.end())
            rooms.emplace_back(prog, TempoMap::roomFor(plan.contents(&prog->tempos).size()));
}

void TempoView::takeRooms() {
    for (auto& [prog, room] : rooms) prog->takeTempoRoom(room);
    changes.fetchAdd(1);
}
