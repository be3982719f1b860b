#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CClick.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/SongClock.h"
#include "engine/TransportRing.h"
#include "engine/plan/GraphPlan.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSynthProg.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"
#include "sequencer/take/RecQueue.h"

#include <algorithm>
#include <cassert>

namespace {

/// Song tracks whose parts are looked through in a block at most, while the transport stands.
constexpr int tracksPrepared = 4;

/// Whether a monitor mode lets the input of a track through.
bool monitored(MonitorMode mode, const CTrack* track) {
    switch (mode) {
    case MonitorMode::automatic:
        return track->selected() || track->recArm;
    case MonitorMode::record:
        return track->armed != 0;
    case MonitorMode::manual:
        return track->monitor == 1;
    default:
        return false;
    }
}

bool noteTrigger(const CSeq* seq) {
    return seq->options.useMarkers() && useMarkersMIDINoteTrigger;
}

/// What a program's block is played with.
struct ProgBlock {
    CSeqProg* prog;
    int frames, offset;
    bool current;
    bool stopNow;
    bool jumped;
};

/// Note-ons at the host's MIDI input choose the section that plays next.
void triggerMarkers(const ProgBlock& b) {
    CComp* midiIn = b.prog->seq->host->getMIDIIn();
    CMIDIQ* port = midiIn ? midiIn->outPort() : nullptr;
    if (!port) return;
    for (const CMIDIBytes* e = port->first(); e; e = e->next) {
        if (e->kind != eventMidi || !noteOn(e->data)) continue;
        if (CMarkerPart* marker = b.prog->noteToMarker(asByte1(e->data)))
            b.prog->setMarkerNow(marker);
    }
}

/// Asks song tracks whose mute or solo changed for what that means.
void askAudible(CSeqProg* prog) {
    prog->updateSolo();
    for (CSongTrack* t : prog->tracks) {
        const bool audible = !t->muted() && (!prog->anySolo || t->soloed());
        if (t->audible && !audible)
            t->requests.ask(requestFlush | requestSetup);
        else if (!t->audible && audible)
            t->requests.ask(requestSetup);
    }
}

void followHostLoop(CSeqProg* prog) {
    CSeq* seq = prog->seq;
    const CQV* host = seq->host;
    if (!seq->sync || !host->sync || !host->loop) return;
    const int from = host->loopStart, to = host->loopEnd;
    if (prog->leftLocator == from && prog->rightLocator == to) return;
    prog->leftLocator = from;
    prog->rightLocator = to;
    seq->songNotices.raise(SeqNotice::transport);
}

/// Whether a track records what is played, heard or not.
bool takesNotes(const CSeq* seq, const CSongTrack* t) {
    if (seq->recorder.stepRec.takesFrom(t)) return true;
    return seq->host->recording && (t->track->armed || t->track->wantsTake());
}

/// Who plays follows what is heard, and that comes late.
void receive(const ProgBlock& b, CSongTrack* t, double frame, int msg) {
    const CSeq* seq = b.prog->seq;
    const CQV* host = seq->host;
    const bool taken = host->recording != 0;
    const double now = b.prog->pos + host->framesToTicks(frame);
    const int late = int(recordLatency(t->track));
    if (late == 0 || host->masterSeq != seq)
        return b.prog->midiReceived(t, now, msg, nullptr, taken);
    const double heard = host->plans->timeBefore(late - asInt(frame)).ticks;
    b.prog->midiReceived(t, heard, msg, nullptr, taken, heard > now ? 1 : 0);
}

/// Has the track know what was played, whether it is taken or not.
void remember(const ProgBlock& b, CSongTrack* t, double frame, int msg) {
    const CQV* host = b.prog->seq->host;
    const PlayedTime& time = b.prog->seq->playedTime;
    const double ticks = host->framesToTicks(frame);
    const int late = int(recordLatency(t->track));
    const double now = b.prog->pos + ticks;
    const double heard = late > 0 ? host->plans->timeBefore(late - asInt(frame)).ticks : now;
    const bool ledBack = b.prog->looping && heard > now; // the loop, since
    const double where = ledBack ? heard : now - host->framesToTicks(double(late));
    const double ahead = b.prog->playing ? std::max(-where, 0.0) : 0.0; // of the song's start
    t->track->played->note({time.frames + asInt64(frame), time.ticks + ticks + ahead,
                            b.prog->playing ? std::max(where, 0.0) : -1.0, time.run, msg});
}

/// Hands what arrives at an instrument track to its output, as the monitor mode says, and to the
/// take.
void echoMidi(const ProgBlock& b, CSongTrack* t) {
    CTrack* track = t->track;
    CMIDIQ* in = track->inPort();
    CMIDIQ* out = track->outPort();
    CSeq* seq = b.prog->seq;
    if (!in || !out || noteTrigger(seq)) return;
    const bool heard = monitored(seq->options.midiMonitorMode(), track);
    const bool taken = heard || takesNotes(seq, t);
    for (const CMIDIBytes* e = in->first(); e; e = e->next) {
        if (e->kind == eventConsumed || e->time < b.offset || e->time >= b.offset + b.frames)
            continue;
        const int msg = e->kind == eventMidi ? track->setVel(track->setCh(e->data)) : e->data;
        if (heard) {
            out->insert(e->time, msg, e->kind, e->value, e->param, e->owner, e->extra);
            out->hasData = 1.0f;
        }
        if (e->kind != eventMidi) continue;
        remember(b, t, e->time, msg);
        if (taken) receive(b, t, e->time, msg);
    }
}

/// Drums that are played live.
void echoDrums(const ProgBlock& b, CSongTrack* t) {
    CTrack* track = t->track;
    CMIDIQ* in = track->inPort();
    CSeq* seq = b.prog->seq;
    if (!in || noteTrigger(seq)) return;
    const bool heard = monitored(seq->options.midiMonitorMode(), track);
    const bool taken = heard || takesNotes(seq, t);
    for (const CMIDIBytes* e = in->first(); e; e = e->next) {
        if (e->kind != eventMidi || e->time < b.offset || e->time >= b.offset + b.frames) continue;
        if (noteOff(e->data) && seq->recorder.stepRec.takesFrom(t)) receive(b, t, e->time, e->data);
        CDrumSound* sound = track->drumSound(asByte1(e->data) - firstDrumKey);
        if (!noteOn(e->data) || !sound) continue;
        const int msg = track->setVel(e->data);
        if (heard)
            t->hitDrum(sound, nullptr, float(asByte2(msg)) / 127.0f, 0.0f, 1.0f, asRound(e->time));
        remember(b, t, e->time, msg);
        if (taken) receive(b, t, e->time, msg);
    }
}

/// Lets the input of an audio track through.
void echoAudio(const ProgBlock& b, CTrack* track) {
    CInputChannel* in = track->input();
    COutputChannel* out = track->output();
    if (!in || !out) return;
    if (!monitored(b.prog->seq->options.audioMonitorMode(), track)) return;
    std::copy_n(in->bufL + b.offset, b.frames, out->bufL + b.offset);
    std::copy_n(in->bufR + b.offset, b.frames, out->bufR + b.offset);
}

/// Hands the input of an armed audio track to the take.
void recordAudio(const ProgBlock& b, CTrack* track) {
    const CInputChannel* in = track->input();
    if (!in || !b.prog->seq->recorder.runs() || !track->armed || !track->takesAudio) return;
    track->recSample->writeFrames(b.frames, in->bufL + b.offset, in->bufR + b.offset, true);
}

/// Looks through the parts of a few song tracks, so that a start need not.
void prepareStart(CSeqProg* prog) {
    int left = tracksPrepared;
    for (CSongTrack* t : prog->tracks)
        if (t->index.refresh(t->parts) && --left == 0) return;
}

void processTrack(const ProgBlock& b, CSongTrack* t) {
    if (b.stopNow) t->stop();
    if (b.jumped) t->requests.ask(requestFlush | requestSetup);
    if (b.current && t->track->kind == trackMIDI) echoMidi(b, t);
    if (b.current && t->track->kind == trackAudio) {
        echoAudio(b, t->track);
        recordAudio(b, t->track);
    }
    if (b.current && t->track->kind == trackDrum) echoDrums(b, t);
    t->pos = b.prog->pos;
    t->process(b.frames, b.offset);
}

/// Takes in the sources of audio and drum tracks.
void takeSources(const ProgBlock& b, CTrack* track) {
    if (track->kind != trackAudio && track->kind != trackDrum) return;
    CQV* host = b.prog->seq->host;
    for (CMIDICable* cable : track->midiCables) {
        if (cable->muted) continue;
        for (CMIDIBytes* e = cable->fromPort->first(); e; e = e->next)
            if (!host->midiMapped(track, cable->toPort, e))
                cable->toPort->insert(e->time, e->data, e->kind, e->value, e->param, e->owner,
                                      e->extra);
    }
}

void setLocators(CSeqProg* prog, const CMarkerPart* section) {
    if (prog->leftLocator == section->pos && prog->rightLocator == section->endTick()) return;
    prog->leftLocator = section->pos;
    prog->rightLocator = section->endTick();
    prog->seq->songNotices.raise(SeqNotice::transport);
}

/// Goes on to the section that was chosen; true when the running one is to repeat.
bool wrapMarkers(CSeqProg* prog) {
    CMarkerPart* playing = prog->playingMarker;
    CMarkerPart* active = prog->activeMarker;
    if (!prog->seq->options.useMarkers() || !playing || !active) return true;
    setLocators(prog, playing);
    if (prog->pos <= playing->endTick()) return false;
    prog->session.add(active);
    if (playing == active) return true;
    prog->pos = prog->pos - (playing->endTick() - active->pos);
    prog->playingMarker = active;
    setLocators(prog, active);
    return false;
}

bool wrapLoop(CSeqProg* prog) {
    const double left = prog->leftLocator, right = prog->rightLocator;
    if (right <= left || prog->pos <= right) return false;
    const double over = std::fmod(prog->pos - left, right - left);
    const double before = prog->pos;
    // A whole number of passes ends on the right locator, which is not beyond it.
    prog->pos = over > 0.0 ? left + over : right;
    prog->loopCount += asRound((before - prog->pos) / (right - left));
    return true;
}

void advance(const ProgBlock& b) {
    CSeqProg* prog = b.prog;
    CQV* host = prog->seq->host;
    const double tpf = host->ticksPerFrame();
    prog->prevPos = prog->pos.load();
    prog->pos = prog->pos + b.frames * tpf;
    prog->samplePos = prog->samplePos + b.frames;
    CSeq* seq = prog->seq;
    if (b.current && seq->recorder.runs()) seq->recorder.passes.recorded += b.frames;
    if (!prog->looping) return;
    const double reached = prog->pos;
    if (!wrapMarkers(prog) || !wrapLoop(prog)) {
        if (prog->pos == reached) return;
        prog->loopCount += 1;
    }
    if (b.current && seq->recorder.runs()) {
        const double over = host->ticksToFrames(prog->pos - double(prog->leftLocator));
        seq->recorder.passes.note(seq->recorder.passes.recorded - asRound(over), prog->leftLocator);
    }
    if (seq->recording) prog->punchPos = double(prog->leftLocator);
    prog->samplePos = asInt64(seq->ticksToFrames(0, asInt(prog->pos), asInt(double(host->rate))));
}

/// The user's second stop ends patterns that the latch keeps, too.
void silenceArps(const ListOf<CTrack>& tracks) {
    for (CTrack* track : tracks) track->arp->allNotesOff = 1;
}

void jumpTo(CSeqProg* prog, double ticks) {
    prog->pos = ticks;
    prog->prevPos = ticks;
}

} // namespace

bool CSeqProg::isLooping() {
    const CQV* host = seq->host;
    if (host->renderMode) return false;
    const double left = leftLocator, right = rightLocator, at = pos;
    const bool reached = at == right && prevPos < right;
    if (loop && left < right && (at < right || reached)) return true;
    return seq->options.useMarkers() && playingMarker && activeMarker;
}

void CSeqProg::updateSolo() {
    bool any = false;
    for (CSongTrack* t : tracks) any = any || t->soloed();
    anySolo = any;
}

void CSeqProg::process(int frames, int offset) {
    assert(seq->heldByThread());
    ProgBlock b{this, frames, offset, seq->getProg() == this, false, false};
    b.stopNow = stopRequest.exchange(0);
    looping = isLooping();
    if (b.stopNow) playing = 0;
    if (b.current && noteTrigger(seq)) triggerMarkers(b);
    if (playing) {
        followHostLoop(this);
        askAudible(this);
    }
    if (seq->host->clock->begins()) pos = seq->host->clock->exact(pos);
    b.jumped = requests.take(requestSetup);
    if (!playing) prepareStart(this);
    for (CSongTrack* t : tracks) processTrack(b, t);
    if (b.current)
        for (CSongTrack* t : tracks) takeSources(b, t->track);
    if (playing) advance(b);
}

void CSeqProg::play() {
    assert(seq->heldByThread());
    if (playing) return;
    CQV* host = seq->host;
    session.clear();
    loop = static_cast<unsigned char>(host->loop != 0);
    if (seq->sync && host->sync) {
        jumpTo(this, host->pos);
        leftLocator = host->loopStart.load();
        rightLocator = host->loopEnd.load();
        seq->songNotices.raise(SeqNotice::transport);
    }
    loopCount = 0;
    CMarkerPart* section = playingMarker;
    if (seq->options.useMarkers() && !host->renderMode && section) {
        jumpTo(this, section->pos);
        session.add(section);
    }
    uint64_t row = 0; // what chance decides is the same at each start
    for (CSongTrack* t : tracks) {
        t->pos = pos;
        t->track->arp->chance.seed(unsigned(row));
        if (CSynthProg* kit = t->track->synthProg.get()) kit->start(unsigned(row));
        t->chance.start(row++);
        t->requests.ask(requestSetup);
    }
    playing = 1;
}

void CSeqProg::flush(int frame) {
    assert(seq->heldByThread());
    for (CSongTrack* t : tracks) t->flush(frame, false);
}

void CSeqProg::midiReceived(CSongTrack* songTrack, double tick, int msg, void*, bool record,
                            int passesAgo) {
    const CQV* host = seq->host;
    CTrack* track = songTrack->track;
    if (track->kind == trackMIDI) msg = track->setCh(msg);
    const int pass = seq->recorder.passes.count - passesAgo;
    if (pass < 0) tick = seq->recorder.takeStart;
    RecEvent e{tick, tick, msg, asMax(pass, 0)};
    if (looping && noteOn(msg) && tick >= double(rightLocator) - TakeRecorder::upbeatTicks) {
        const CPart* part = track->recPart;
        e.tick = part ? asMax(part->pos, leftLocator) : leftLocator;
        e.pass++;
    }
    const bool inSteps =
        seq->recorder.stepRec.takesFrom(songTrack) && (noteOn(msg) || noteOff(msg));
    const bool soon = host->framesToTicks(host->click->countIn) <= quarterTicks;
    if (!inSteps) e.tick = seq->recorder.tickInTake(e.tick, msg);
    if (inSteps || (record && host->recording && soon && e.tick >= 0.0)) track->recQueue->push(e);
    if (track->kind == trackMIDI) track->addRemovePlayingNote(msg);
}

namespace {

/// The song starts for the inserts of a track and of its drums.
void startStrips(CTrack* track) {
    const auto start = [](CComp* insert) { insert->start(); };
    track->eachInsert(start);
    if (track->kind != trackDrum) return;
    for (auto* sound : drumSounds(*track->drumLayer()))
        for (auto* insert : sound->output->inserts) start(insert);
}

} // namespace

void CSeq::start() {
    assert(heldByThread());
    if (playing) return;
    playing = 1;
    playedTime.run++;
    if (CSeqProg* prog = getProg()) prog->play();
    for (CTrack* track : tracks) startStrips(track);
    tempo.follow();
    songNotices.raise(SeqNotice::transport);
}

void CSeq::stop() {
    assert(heldByThread());
    if (playing) {
        for (CSeqProg* prog : programs())
            if (prog->playing) prog->stopRequest = 1;
        playing = 0;
        playedTime.run++;
    }
    recorder.stop();
    songNotices.raise(SeqNotice::transport);
}

void CSeq::setPos(double ticks) {
    assert(heldByThread());
    CSeqProg* prog = getProg();
    if (recording || !prog) return;
    jumpTo(prog, fLimit(ticks, 0.0, double(maxTicks)));
    playedTime.run++;
    prog->samplePos = asInt64(ticksToFrames(0, asInt(prog->pos), asInt(double(host->rate))));
    tempo.follow();
    if (prog->playing)
        prog->requests.ask(requestSetup);
    else
        songNotices.raise(SeqNotice::position);
}

void CSeq::prepare(int frames) {
    CComp::prepare(frames);
    for (CTrack* track : tracks) track->prepare(frames);
    CSeqProg* prog = getProg();
    if (!prog) return;
    for (CSongTrack* t : prog->tracks)
        if (CMIDIQ* port = t->track->outPort()) port->freezeItems = &t->freezeItems;
}

void CSeq::process(int frames) {
    const ProcessGuard guard(this);
    if (!guard.enter) return;
    if (allNotesOff && !host->playing) silenceArps(tracks);
    mergeMIDI(frames);
    mergeAudio(frames);
    recorder.follow(frames);
    for (CSeqProg* prog : programs()) prog->process(frames, 0);
    if (playing) songTicks += host->ticksPerFrame() * frames;
    playedTime.frames += frames;
    playedTime.ticks += host->framesToTicks(frames);
    if (host->clock->ends(frames)) tempo.follow();
    for (CTrack* track : tracks) track->arpeggiate(frames);
}
