#include "audiofiles/CSample.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "sequencer/take/RecQueue.h"

#include <cassert>

// How takes begin and end. While `recReady` is 0 the interface may touch what the graph has armed;
// while it is 1, only by `edits`.

namespace {

bool hasSelectedLane(const CTrack* track) {
    for (const auto* lane : each<CSubTrack>(track->subTracks))
        if (lane->hasFlag(laneSelected)) return true;
    return false;
}

CPart* partAt(CSongTrack* songTrack, int tick) {
    for (auto* part : each<CPart>(songTrack->parts))
        if (part->pos <= tick && tick < int64_t(part->pos) + part->length) return part;
    return nullptr;
}

bool fitsTake(const CSample* sample, const CTrack* track) {
    const CQV* host = track->host;
    return sample->bits == host->recBits && sample->chs == track->recChs &&
           sample->rate == float(asRound(double(host->rate)));
}

/// A sample that waits for a take; its file comes later.
CSample* newRecSample(const CTrack* track) {
    auto* sample = new CSample;
    sample->streamed = 1;
    sample->setFormat(asRound(double(track->host->rate)), track->host->recBits, track->recChs);
    sample->prepareTake();
    return sample;
}

} // namespace

bool CSeq::takeRuns() const {
    return recording && host->recording;
}

int CSeq::gridTicks() const {
    return snap ? snap->getTicks() : CSnap().getTicks();
}

void CSeq::rec(int) {
    assert(heldByThread());
    stepRec.leave();
    CSeqProg* prog = getProg();
    if (!prog) return;
    recReady = 0;
    const double pos = prog->pos;
    takeStart = asMax(pos, recFrom.load());
    takeLead = asRound(host->ticksToFrames(takeStart - pos));
    prog->punchPos = takeStart.load();
    passes.clear();
    for (auto* songTrack : each<CSongTrack>(prog->tracks)) arm(songTrack);
    takeBegun.storeRelease(true);
}

double CSeq::planTake(double ticks, bool running) {
    assert(heldByThread());
    const CSeqProg* prog = getProg();
    recFrom = running ? 0.0 : ticks;
    recTo = -1.0;
    passes.clear();
    if (!prog) return ticks;
    const double left = prog->leftLocator, right = prog->rightLocator;
    const bool punched = punch && left < right;
    if (punched) {
        recFrom = left;
        recTo = host->loop ? -1.0 : right;
    }
    if (running) return ticks;
    if (preRoll > 0) return asMax(0.0, recFrom - preRoll * double(barTicksAt(asInt(recFrom))));
    return punched && ticks >= right ? left : ticks;
}

int CSeq::barTicksAt(int tick) {
    const CTimesigPart* point = getProg()->timesigInForce(tick);
    const int num = point ? point->getNum() : options.num();
    const int den = point ? point->getDen() : options.den();
    return asMax(1, 4 * quarterTicks / asMax(1, den) * num);
}

/// Whether the coming block has something of the take that is asked for.
bool CSeq::reachesTake(int frames) {
    const CSeqProg* prog = getProg();
    if (!prog) return true;
    const double at = prog->pos, to = recTo;
    return at + host->framesToTicks(frames) > recFrom && (to < 0.0 || at < to);
}

/// Sound of the end arrives later, by the latency.
void CSeq::punchOut() {
    const CSeqProg* prog = getProg();
    if (!recording || recTo < 0.0 || !prog || !host->recording) return;
    if (prog->pos < recTo + host->framesToTicks(double(recordLatency(host)))) return;
    host->recording = 0;
    host->hostNotices.raise(HostNotice::transport);
}

void CSeq::noticeArmed() {
    bool any = false;
    for (const auto* track : each<CTrack>(tracks)) any = any || track->recArm;
    anyArmed = any;
}

void CSeq::arm(CSongTrack* songTrack) {
    CTrack* track = songTrack->track;
    const bool wanted = track->wantsTake();
    if (track->kind == trackFolder || track->locked || (!wanted && !hasSelectedLane(track))) return;
    track->takesAudio = track->kind == trackAudio && wanted;
    if (track->takesAudio && !track->recSample) return;
    track->recSongTrack = songTrack;
    track->lastRecPos = -1;
    track->recPart = track->takesAudio ? nullptr : partAt(songTrack, asRound(takeStart));
    track->armed = 1;
}

void CSeq::idleTake() {
    if (takeBegun.exchange(false)) beginTake();
    stepRec.idle(this);
    if (!recReady && !takeRuns()) closeTake();
    for (auto* track : each<CTrack>(tracks)) {
        track->take.idle(host->recUndo);
        track->readyForTake();
    }
    edits.send();
    if (!recReady) noticeLoss();
    tellWarning();
}

void CSeq::beginTake() {
    warned = false;
    diskWriteFailed = false;
    stepRec.setPart(nullptr, nullptr);
    unselectParts();
    for (auto* track : each<CTrack>(tracks))
        if (track->armed) track->take.begin();
    beginFiles();
    songNotices.raise(SeqNotice::parts);
}

void CSeq::beginFiles() {
    std::vector<CTrack*> audio;
    for (auto* track : each<CTrack>(tracks))
        if (track->armed && track->takesAudio) audio.push_back(track);
    if (audio.empty()) return;
    bool temporary = false;
    const CStr folder = host->newSampleFolder(&temporary);
    if (recThread.setFolder(folder, temporary)) return recThread.record(audio);
    for (CTrack* track : audio) track->armed = 0;
    songNotices.raise(SeqNotice::noFolder);
    warnOnce("Project must be saved before you can record audio");
}

/// Ends the take: the graph lets go of the tracks first, then everything that is left is placed.
void CSeq::closeTake() {
    CUndo* step = host->recUndo ? host->recUndo : host->startTakeStep();
    edits.add([this] {
        stopTake();
        for (auto* track : each<CTrack>(tracks)) {
            track->armed = 0;
            track->nextPass();
        }
    });
    edits.settle();
    recThread.stopTake();
    for (auto* track : each<CTrack>(tracks)) {
        if (!track->take.running()) continue;
        track->take.finish(step, recThread.fileOf(track));
        disarm(track);
    }
    noticeLoss();
    recThread.forget();
    edits.settle();
    songNotices.raise(SeqNotice::parts);
    recReady.storeRelease(1);
    if (step != host->recUndo) host->undoEnd(step, false);
}

void CSeq::disarm(CTrack* track) {
    if (track->takesAudio || (track->kind == trackAudio && !track->recSample)) {
        if (CSample* left = track->recSample) left->keep = false;
        delete track->recSample.load();
        track->recSample = newRecSample(track);
    }
    track->takesAudio = track->recAttached = 0;
    track->recPart = nullptr;
    track->recSongTrack = nullptr;
}

void CSeq::afterRec() {
    if (!recReady) closeTake();
}

/// What the user is told of a take, once: the first thing that went wrong.
void CSeq::warnOnce(const CStr& text) {
    if (warned) return;
    warned = true;
    warning = text;
}

void CSeq::noticeLoss() {
    if (recThread.lacksFile())
        warnOnce("No file for the recording can be made in the folder \"" + recThread.folder +
                 "\"");
    else if (diskWriteFailed)
        warnOnce("The disk is full or too slow: a part of the recording could not be written");
}

/// At the end of a pass, since others may follow while the message stands.
void CSeq::tellWarning() {
    if (warning.empty()) return;
    const CStr text = warning;
    warning = "";
    showMsg(nullptr, "Record", text);
}

void CSeq::stepRecClicked(CObject*) {
    CTrack* track = nullptr;
    recordSteps(stepRec.getPart() ? nullptr : getEditPartAndTrack(track));
}

void CSeq::recordSteps(CPart* part) {
    CSongTrack* on = part ? partToSongTrack(part) : nullptr;
    const bool usable = on && !isLocked(part) && (part->type == partMIDI || part->type == partDrum);
    stepRec.setPart(usable ? part : nullptr, usable ? on : nullptr);
    if (usable) on->track->recQueue->clear();
    songNotices.raise(SeqNotice::parts);
}

void CTrack::readyForTake() {
    if (kind != trackAudio || !seq->recReady || seq->edits.pending()) return;
    const CSample* ready = recSample;
    const bool wanted = selected() || recArm;
    if (wanted ? ready && fitsTake(ready, this) : !ready) return;
    // Holds the sample that is not the track's.
    auto other = std::make_shared<std::unique_ptr<CSample>>(wanted ? newRecSample(this) : nullptr);
    seq->edits.add([this, other] {
        if (armed) return;
        CSample* old = recSample;
        recSample = other->release();
        other->reset(old);
    });
}
