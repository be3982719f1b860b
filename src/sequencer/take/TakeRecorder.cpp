#include "sequencer/take/TakeRecorder.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "sequencer/take/RecQueue.h"

#include <cassert>

namespace {

const char* const settingsSection = "sequencer";

bool hasSelectedLane(const CTrack* track) {
    for (const auto* lane : track->subTracks)
        if (lane->hasFlag(laneSelected)) return true;
    return false;
}

CPart* partAt(CSongTrack* songTrack, int tick) {
    for (auto* part : songTrack->parts)
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

void disarm(CTrack* track) {
    if (track->takesAudio || (track->kind == trackAudio && !track->recSample)) {
        if (CSample* left = track->recSample) left->keep = false;
        delete track->recSample.load();
        track->recSample = newRecSample(track);
    }
    track->takesAudio = track->recAttached = 0;
    track->recPart = nullptr;
    track->recSongTrack = nullptr;
}

} // namespace

void LoopPasses::note(int64_t at, int songTick) {
    const int i = count;
    if (i == most) return;
    frame[i] = saturate(at);
    tick[i] = songTick;
    count = i + 1;
}

TakeRecorder::TakeRecorder(CSeq* of) : edits(of->host), seq(of) {
}

void TakeRecorder::readSettings() {
    loopTakes = iniReadInt(settingsSection, "looptakes", 1);
    loopNoteTakes = iniReadInt(settingsSection, "notetakes", 0) != 0;
}

void TakeRecorder::writeSettings(CIniFile& file) const {
    file.writeInteger(settingsSection, "looptakes", loopTakes);
    file.writeInteger(settingsSection, "notetakes", loopNoteTakes);
}

// On the graph.

double TakeRecorder::plan(double ticks, bool running) {
    assert(seq->heldByThread());
    const CSeqProg* prog = seq->getProg();
    recFrom = running ? 0.0 : ticks;
    recTo = -1.0;
    passes.clear();
    if (!prog) return ticks;
    const double left = prog->leftLocator, right = prog->rightLocator;
    const bool punched = seq->punch && left < right;
    if (punched) {
        recFrom = left;
        recTo = seq->host->loop ? -1.0 : right;
    }
    if (running) return ticks;
    if (seq->preRoll > 0)
        return asMax(0.0, recFrom - seq->preRoll * double(barTicksAt(asInt(recFrom))));
    return punched && ticks >= right ? left : ticks;
}

int TakeRecorder::barTicksAt(int tick) const {
    const CTimesigPart* point = seq->getProg()->timesigInForce(tick);
    const int num = point ? point->getNum() : seq->options.num();
    const int den = point ? point->getDen() : seq->options.den();
    return asMax(1, 4 * quarterTicks / asMax(1, den) * num);
}

void TakeRecorder::arm() {
    assert(seq->heldByThread());
    stepRec.leave();
    CSeqProg* prog = seq->getProg();
    if (!prog) return;
    recReady = 0;
    const double pos = prog->pos;
    takeStart = asMax(pos, recFrom.load());
    takeLead = asRound(seq->host->ticksToFrames(takeStart - pos));
    prog->punchPos = takeStart.load();
    passes.clear();
    for (auto* songTrack : prog->tracks) armTrack(songTrack);
    takeBegun.storeRelease(true);
}

void TakeRecorder::armTrack(CSongTrack* songTrack) {
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

void TakeRecorder::follow(int frames) {
    punchOut();
    if (!seq->host->recording) stop();
    noticeArmed();
    if (!seq->playing || !seq->host->recording || seq->recording) return;
    if (!recReady.loadAcquire() || !reaches(frames)) return;
    seq->recording = 1;
    arm();
}

/// Sound of the end arrives later, by the latency.
void TakeRecorder::punchOut() {
    CQV* host = seq->host;
    const CSeqProg* prog = seq->getProg();
    if (!seq->recording || recTo < 0.0 || !prog || !host->recording) return;
    int64_t latest = 0;
    for (const auto* track : seq->tracks)
        if (track->armed) latest = std::max(latest, recordLatency(track));
    if (prog->pos < recTo + host->framesToTicks(double(latest))) return;
    host->recording = 0;
    host->hostNotices.raise(HostNotice::transport);
}

void TakeRecorder::noticeArmed() {
    bool any = false;
    for (const auto* track : seq->tracks) any = any || track->recArm;
    anyArmed = any;
}

/// Whether the coming block has something of the take that is asked for.
bool TakeRecorder::reaches(int frames) const {
    const CSeqProg* prog = seq->getProg();
    if (!prog) return true;
    const double at = prog->pos, to = recTo;
    return at + seq->host->framesToTicks(frames) > recFrom && (to < 0.0 || at < to);
}

void TakeRecorder::stop() {
    const double at = seq->getPos();
    if (seq->recording) takeEnd = recTo < 0.0 ? at : fLimit(at, 0.0, double(recTo));
    seq->recording = 0;
}

bool TakeRecorder::leadsIn() const {
    return seq->getPos() < recFrom;
}

bool TakeRecorder::runs() const {
    return seq->recording && seq->host->recording;
}

double TakeRecorder::tickInTake(double tick, int msg) const {
    const double from = recFrom, to = recTo;
    if (!seq->recording && tick < from)
        return noteOn(msg) && tick >= from - upbeatTicks ? from : -1.0;
    if (seq->recording && passes.count == 0) tick = std::max(tick, takeStart.load());
    if (to < 0.0 || tick < to) return tick;
    return noteOff(msg) ? to : -1.0;
}

// On the interface thread.

void TakeRecorder::idle() {
    if (takeBegun.exchange(false)) begin();
    stepRec.idle(seq);
    if (!recReady && !runs()) close();
    for (auto* track : seq->tracks) {
        track->take.idle(seq->host->recUndo);
        track->readyForTake();
    }
    edits.send();
    if (!recReady) noticeLoss();
    tellWarning();
}

void TakeRecorder::begin() {
    warned = false;
    diskWriteFailed = false;
    stepRec.setPart(nullptr, nullptr);
    seq->unselectParts();
    for (auto* track : seq->tracks)
        if (track->armed) track->take.begin();
    beginFiles();
    seq->songNotices.raise(SeqNotice::parts);
}

void TakeRecorder::beginFiles() {
    std::vector<CTrack*> audio;
    for (auto* track : seq->tracks)
        if (track->armed && track->takesAudio) audio.push_back(track);
    if (audio.empty()) return;
    bool temporary = false;
    const CStr folder = seq->host->newSampleFolder(&temporary);
    if (recThread.setFolder(folder, temporary)) return recThread.record(audio);
    for (CTrack* track : audio) track->armed = 0;
    seq->songNotices.raise(SeqNotice::noFolder);
    warnOnce("Project must be saved before you can record audio");
}

void TakeRecorder::finish() {
    if (!recReady) close();
}

/// Ends the take: the graph lets go of the tracks first, then everything that is left is placed.
void TakeRecorder::close() {
    CQV* host = seq->host;
    CUndo* step = host->recUndo ? host->recUndo : host->startTakeStep();
    edits.add([this] {
        stop();
        for (auto* track : seq->tracks) {
            track->armed = 0;
            track->nextPass();
        }
    });
    edits.settle();
    recThread.stopTake();
    for (auto* track : seq->tracks) {
        if (!track->take.running()) continue;
        track->take.finish(step, recThread.fileOf(track));
        disarm(track);
    }
    noticeLoss();
    recThread.forget();
    edits.settle();
    seq->songNotices.raise(SeqNotice::parts);
    recReady.storeRelease(1);
    if (step != host->recUndo) host->undoEnd(step, false);
}

/// What the user is told of a take, once: the first thing that went wrong.
void TakeRecorder::warnOnce(const CStr& text) {
    if (warned) return;
    warned = true;
    warning = text;
}

void TakeRecorder::noticeLoss() {
    if (recThread.lacksFile())
        warnOnce("No file for the recording can be made in the folder \"" + recThread.folder +
                 "\"");
    else if (diskWriteFailed)
        warnOnce("The disk is full or too slow: a part of the recording could not be written");
}

/// At the end of a pass, since others may follow while the message stands.
void TakeRecorder::tellWarning() {
    if (warning.empty()) return;
    const CStr text = warning;
    warning = "";
    showMsg(nullptr, "Record", text);
}

void TakeRecorder::recordSteps(CPart* part) {
    CSongTrack* on = part ? seq->partToSongTrack(part) : nullptr;
    const bool usable =
        on && !seq->isLocked(part) && (part->type == partMIDI || part->type == partDrum);
    stepRec.setPart(usable ? part : nullptr, usable ? on : nullptr);
    if (usable) on->track->recQueue->clear();
    seq->songNotices.raise(SeqNotice::parts);
}

void CSeq::stepRecClicked(CObject*) {
    CTrack* track = nullptr;
    recorder.recordSteps(recorder.stepRec.getPart() ? nullptr : getEditPartAndTrack(track));
}

void CTrack::readyForTake() {
    if (kind != trackAudio || !seq->recorder.recReady || seq->recorder.edits.pending()) return;
    const CSample* ready = recSample;
    const bool wanted = selected() || recArm;
    if (wanted ? ready && fitsTake(ready, this) : !ready) return;
    // Holds the sample that is not the track's.
    auto other = std::make_shared<std::unique_ptr<CSample>>(wanted ? newRecSample(this) : nullptr);
    seq->recorder.edits.add([this, other] {
        if (armed) return;
        CSample* old = recSample;
        recSample = other->release();
        other->reset(old);
    });
}
