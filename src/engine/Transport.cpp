#include "base/GraphMark.h"
#include "base/Numbers.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/SongClock.h"
#include "engine/TransportRing.h"

#include <cassert>

// What of the host starts, stops and places the song.

namespace {

constexpr float minTempo = 10.0f, maxTempo = 250.0f;
constexpr int ticksPerQuarter = 960;
/// Ticks a second at one beat a minute.
constexpr double ticksPerBeatSecond = ticksPerQuarter / 60.0;

void startComp(CComp* c) {
    c->start();
    c->eachInsert([](CComp* insert) { insert->start(); });
}

CQV* asHost(CObject* target) {
    return static_cast<CQV*>(target);
}

} // namespace

bool CQV::mustQueue() const {
    return tasks->blocksComing() && !holdsGraph(this);
}

void CQV::serveTransport() {
    assert(heldByThread());
    transport->drain();
}

bool CQV::transportWaiting() const {
    return !transport->empty();
}

void CQV::onTransport(const TransportCall& call) {
    if (mustQueue() && transport->post(call)) return;
    const GraphHold hold(this);
    call.act(call.target, call.value, call.arg);
}

void CQV::start() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->startNow(); }, this});
}

void CQV::stop() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->stopNow(); }, this});
}

void CQV::rec() {
    onTransport({[](CObject* q, double, void*) { asHost(q)->recNow(); }, this});
}

void CQV::setPos(double ticks) {
    onTransport({[](CObject* q, double at, void*) { asHost(q)->setPosNow(at); }, this, ticks});
}

void CQV::setLoop(ToStore<int> on) {
    loop = on;
}

void CQV::setTempo(ToStore<float> bpm) {
    songTempo = fLimit(bpm, minTempo, maxTempo);
    tempo = songTempo.load();
    clock->askCut();
}

void CQV::startSynced() {
    if (sync == 1) start();
}

void CQV::stopSynced() {
    if (sync == 1) stop();
}

void CQV::setPosSynced(double ticks) {
    if (sync == 1) setPos(ticks);
}

void CQV::setTempoSynced(float bpm) {
    if (sync == 1) setTempo(bpm);
}

double CQV::framesToTicks(double f) const {
    return f * ticksPerBeatSecond * double(tempoNow) / double(rate);
}

double CQV::ticksToFrames(double ticks) const {
    return double(rate) * ticks / (double(tempoNow) * ticksPerBeatSecond);
}

double CQV::ticksPerFrame() const {
    return clock->exact(ticksPerBeatSecond * double(tempoNow) / double(rate));
}

void CQV::createTempoMap() {
    inQueue->clear();
    if (masterSeq) masterSeq->getTempoMap(inQueue);
}

void CQV::startNow() {
    assert(heldByThread());
    if (playing) return;
    masterSeq = firstOfType(compSeq); // the list may have changed since the latest block
    startTime = asTimeInMS();
    startPos = masterSeq ? asRound(masterSeq->getPos()) : 0;
    if (click->countIn > 0) click->endCountIn(startPos);
    playing = 1;
    transportChanged = true;
    clock->restart();
    for (CComp* c : each<CComp>(comps)) startComp(c);
    for (CComp* bus : each<CComp>(sends)) startComp(bus);
    hostNotices.raise(HostNotice::transport);
    createTempoMap();
}

void CQV::stopNow() {
    assert(heldByThread());
    if (playing) {
        playing = 0;
        transportChanged = true;
        for (CComp* c : each<CComp>(comps)) c->stop();
    } else {
        for (CComp* c : each<CComp>(comps)) c->allNotesOff = 1;
    }
    click->countIn = 0;
    recording = 0;
    hostNotices.raise(HostNotice::transport);
}

void CQV::setPosNow(double ticks) {
    assert(heldByThread());
    if (recording) return;
    const double at = fLimit(ticks, 0.0, double(maxTicks));
    clock->cut();
    pos = at;
    for (CComp* c : each<CComp>(comps)) c->setPos(at);
    click->setPos(at);
    if (at == 0.0) framesPlayed = 0;
}

void CQV::recNow() {
    assert(heldByThread());
    if (playing && !recording && masterSeq) masterSeq->planTake(masterSeq->getPos(), true);
    if (playing)
        recording = recording ? 0 : 1;
    else if (!recording)
        startRecording();
    hostNotices.raise(HostNotice::transport);
}

void CQV::startRecording() {
    masterSeq = firstOfType(compSeq);
    const double exact = masterSeq ? masterSeq->getPos() : double(pos);
    const int quarter = asRound(exact) / ticksPerQuarter;
    const double at = quarter * ticksPerQuarter;
    const double from = masterSeq && sync == 0 ? masterSeq->planTake(at, false) : at;
    setPosNow(from);
    click->init();
    if (masterSeq && masterSeq->leadsIntoTake()) click->endCountIn(from);
    recording = 1;
    if (click->countIn == 0 && sync == 0) startNow();
}
