#include "engine/Transport.h"

#include "base/GraphMark.h"
#include "base/Numbers.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/SongClock.h"
#include "engine/TransportRing.h"
#include "engine/plan/GraphPlan.h"

#include <cassert>
#include <cmath>

namespace {

constexpr float minTempo = 10.0f, maxTempo = 250.0f;

CQV* asHost(CObject* target) {
    return static_cast<CQV*>(target);
}

void startComp(CComp* c) {
    c->start();
    c->eachInsert([](CComp* insert) { insert->start(); });
}

} // namespace

Transport::Transport(CQV* host) : root(host), waiting(std::make_unique<TransportRing>()) {
}

Transport::~Transport() = default;

bool Transport::mustQueue() const {
    return root->tasks->blocksComing() && !holdsGraph(root);
}

void Transport::serveTransport() {
    assert(root->heldByThread());
    waiting->drain();
}

bool Transport::transportWaiting() const {
    return !waiting->empty();
}

void Transport::onTransport(const TransportCall& call) {
    if (mustQueue() && waiting->post(call)) return;
    const GraphHold hold(root);
    call.act(call.target, call.value, call.arg);
}

void Transport::askStart() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->startNow(); }, root});
}

void Transport::askStop() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->stopNow(); }, root});
}

void Transport::askRec() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->recNow(); }, root});
}

void Transport::askPos(double ticks) {
    onTransport({[](CObject* q, double at, void*) { asHost(q)->setPosNow(at); }, root, ticks});
}

void Transport::setTempo(ToStore<float> bpm) {
    songTempo = fLimit(bpm, minTempo, maxTempo);
    tempo = songTempo.load();
    root->clock->askCut();
}

void Transport::startSynced() {
    if (root->sync == 1) askStart();
}

void Transport::stopSynced() {
    if (root->sync == 1) askStop();
}

void Transport::setPosSynced(double ticks) {
    if (root->sync == 1) askPos(ticks);
}

void Transport::setTempoSynced(float bpm) {
    if (root->sync == 1) setTempo(bpm);
}

void Transport::startNow() {
    assert(root->heldByThread());
    if (playing) return;
    CComp* song = root->firstOfType(compSeq); // the list may have changed since the latest block
    root->masterSeq = song;
    startTime = asTimeInMS();
    startPos = song ? asRound(song->getPos()) : 0;
    if (root->click->countIn > 0) root->click->endCountIn(startPos);
    playing = 1;
    transportChanged = true;
    root->clock->restart();
    root->plans->current().latency().settleFades();
    for (CComp* c : root->comps) startComp(c);
    for (CComp* bus : root->sends) startComp(bus);
    root->hostNotices.raise(HostNotice::transport);
    root->createTempoMap();
}

void Transport::stopNow() {
    assert(root->heldByThread());
    if (playing) {
        playing = 0;
        transportChanged = true;
        for (CComp* c : root->comps) c->stop();
    } else {
        for (CComp* c : root->comps) c->allNotesOff = 1;
    }
    root->click->countIn = 0;
    recording = 0;
    root->hostNotices.raise(HostNotice::transport);
}

void Transport::setPosNow(double ticks) {
    assert(root->heldByThread());
    if (recording) return;
    const double at = fLimit(ticks, 0.0, double(maxTicks));
    root->clock->cut();
    root->pos = at;
    for (CComp* c : root->comps) c->setPos(at);
    root->click->setPos(at);
    if (at == 0.0) root->framesPlayed = 0;
}

void Transport::recNow() {
    assert(root->heldByThread());
    CComp* song = root->masterSeq;
    if (playing && !recording && song) song->planTake(song->getPos(), true);
    if (playing)
        recording = recording ? 0 : 1;
    else if (!recording)
        startRecording();
    root->hostNotices.raise(HostNotice::transport);
}

void Transport::startRecording() {
    CComp* song = root->firstOfType(compSeq);
    root->masterSeq = song;
    const double exact = song ? song->getPos() : double(root->pos);
    const int quarter = asRound(exact) / ticksPerQuarter;
    const double at = quarter * ticksPerQuarter;
    const double from = song && root->sync == 0 ? song->planTake(at, false) : at;
    setPosNow(from);
    root->click->init();
    if (song && song->leadsIntoTake()) root->click->endCountIn(from);
    recording = 1;
    if (root->click->countIn == 0 && root->sync == 0) startNow();
}

void Transport::advance(int frames) {
    root->framesPlayed = root->framesPlayed + frames;
    double at = root->clock->exact(root->pos) + frames * root->ticksPerFrame();
    const int from = loopStart, end = loopEnd;
    if (root->sync == 1 && loop && end > from && at >= end)
        at = from + std::fmod(at - from, end - from);
    root->pos = at;
}
