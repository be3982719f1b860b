#include "sequencer/SongPlayback.h"

#include "base/Numbers.h"
#include "common/Curves.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "sequencer/AudioVoices.h"
#include "sequencer/CGroove.h"
#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/Points.h"
#include "sequencer/TempoMap.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace {

/// Longest stretch of an envelope that is sent as one value, in frames.
constexpr int envelopeStep = 32;
constexpr int maxController = 127;
constexpr int maxBend = 16383;

/// What one block of one song track is played with.
struct Block {
    CSongTrack* songTrack;
    CMIDIQ* port;    ///< of notes; may be null
    CMIDIQ* control; ///< of automation; may be null
    double tpf, fpt; ///< ticks per frame, frames per tick
    int frames, offset;
    int done = 0; ///< frames of the block that lie behind
    double loopStart = 0.0, loopEnd = 0.0;
    bool looping = false;
    bool wraps = false; ///< at `loopEnd` the song goes on at `loopStart`

    CTrack* track() const { return songTrack->track; }
    /// Whether a tick lies behind the end of the running pass.
    bool pastLoop(double tick) const { return looping && loopStart != loopEnd && tick >= loopEnd; }
};

/// Where the pass that is running ends, and where the next one begins.
void takeLoop(Block& b, bool wrapped) {
    CSeqProg* prog = b.songTrack->prog;
    b.looping = prog->looping;
    b.loopStart = prog->leftLocator;
    b.loopEnd = prog->rightLocator;
    b.wraps = b.looping && b.loopEnd > b.loopStart;
    CMarkerPart* active = prog->activeMarker;
    CMarkerPart* playing = prog->playingMarker;
    if (!prog->seq->options.useMarkers() || !active || !playing) return;
    const CMarkerPart* section = wrapped ? active : playing;
    b.loopStart = active->pos;
    b.loopEnd = section->endTick();
    b.wraps = b.looping && section->length > 0 && b.loopEnd != b.loopStart;
}

void playNoteOff(const Block& b, CPart* part, const CMIDIEvent* event, int tick, int msg) {
    const int partEnd = part->pos + b.track()->seq->getTicks(part);
    const int len = std::max(1, std::min(std::max(1, event->length), partEnd - tick));
    const double due = tick - b.songTrack->pos + b.done * b.tpf + len - 1.0;
    b.songTrack->noteOffs->addMidiEvent(due, msg & 0xFFFF);
}

/// Sends one event of a MIDI part. `moved` is its tick with the groove, `tick` without.
void playMidiEvent(const Block& b, CPart* part, const CMIDIEvent* event, int tick, double moved) {
    if (!b.port) return;
    const int msg = b.track()->setCh(event->data);
    const bool note = noteOn(msg);
    if (note && b.songTrack->noteOffs->count >= CMIDIQ::maxEvents) return;
    const double frame = (moved - b.songTrack->pos) * b.fpt + b.done + b.offset;
    b.port->insert(frame, msg, eventMidi, 0.0f, 0, nullptr, nullptr);
    b.port->hasData = 1.0f;
    if (note) playNoteOff(b, part, event, tick, msg);
}

/// An audio event that stands at `tick`, for a voice at tick `songPos`.
VoiceStart clipStart(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
                     int delay) {
    VoiceStart start;
    start.part = part;
    start.event = e;
    start.sample = e->sample;
    start.start = e->start;
    start.end = e->end;
    start.mode = e->mode;
    start.reverse = e->reverse;
    start.pitch = e->semitones + double(e->fine);
    start.ticks = e->ticks;
    start.tick = tick;
    start.songPos = songPos;
    start.delay = delay;
    start.out = songTrack->track->output();
    return start;
}

void playClip(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
              int delay) {
    if (e->sample == songTrack->track->recSample) return; // it is being recorded
    songTrack->voices->add(clipStart(songTrack, part, e, tick, songPos, delay));
}

/// The same for a clip that has begun before `songPos`.
void joinClip(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
              int delay) {
    if (!e->sample || e->sample == songTrack->track->recSample) return;
    VoiceStart start = clipStart(songTrack, part, e, tick, songPos, delay);
    start.into = songPos - tick;
    songTrack->voices->join(start);
}

void playDrum(CSongTrack* songTrack, CPart* part, const CDrumEvent* e, int delay) {
    CDrumSound* sound = songTrack->track->drumSound(e->sound);
    if (!sound || songTrack->track->drumLayer()->soundMuted(sound)) return;
    songTrack->hitDrum(sound, part, e->velocity, e->pan, e->tune, delay);
}

/// The freeze files in place of the events, from a position on.
void playFrozen(CSongTrack* songTrack, double position, int delay) {
    for (const auto* item : each<CFreezeItem>(songTrack->freezeItems)) {
        if (!item->sample || !item->channel) continue;
        VoiceStart start;
        start.sample = item->sample;
        start.start = item->start;
        start.end = item->end;
        start.into = start.songPos = position;
        start.delay = delay;
        start.out = item->channel;
        songTrack->voices->join(start);
    }
}

/// Plays what is due in the next `slice` frames of a main list.
void playEvents(const Block& b, CPart* part, CPlayStruct& p, int slice) {
    if (!p.current) return;
    const int g = groove(&b.track()->groove, p.current->delta + p.pos);
    const double partEnd = double(part->pos) + b.track()->seq->getTicks(part);
    while (p.current) {
        const int tick = p.current->delta + p.pos;
        const double moved = double(tick) + g;
        if (asRound((moved - b.songTrack->pos) * b.fpt) >= slice) return;
        if (moved >= partEnd || b.pastLoop(moved)) {
            p.current = nullptr;
            return;
        }
        const int delay = b.done + std::max(0, asRound((moved - b.songTrack->pos) * b.fpt));
        if (p.kind == PlayKind::midi)
            playMidiEvent(b, part, static_cast<CMIDIEvent*>(p.current), tick, moved);
        else if (p.kind == PlayKind::audio)
            playClip(b.songTrack, part, static_cast<CAudioEvent*>(p.current), tick, moved, delay);
        else if (p.kind == PlayKind::drum)
            playDrum(b.songTrack, part, static_cast<CDrumEvent*>(p.current), delay);
        p.pos = tick;
        p.current = p.current->next;
    }
}

void sendLane(const Block& b, CPlayStruct& p, double frame, float value) {
    if (!p.lane->played()) return;
    insertEvent(p.lane, b.control, frame + b.offset, value, &p, b.track()->channel);
}

/// The ramp from `point`, which has been reached, to its follower.
void loadRamp(CPlayStruct& p, const CEnvEvent* point) {
    p.state = RampState::between;
    p.rampFrom = point->value;
    p.rampPos = 0.0;
    p.pos += point->delta;
    p.current = point->next;
    if (!p.current) return;
    const auto* next = static_cast<CEnvEvent*>(p.current);
    p.rampTo = next->value;
    p.rampLength = next->delta;
    p.curve = next->curve;
}

float rampValue(const CPlayStruct& p) {
    const double t = p.rampLength > 0.0 ? p.rampPos / p.rampLength : 1.0;
    const int shape = static_cast<const CEnvEvent*>(p.current)->shape;
    return getPoint(shape, p.rampFrom, p.rampTo, float(t), p.curve);
}

/// Plays the next `slice` frames of an envelope, in steps.
void playEnvelope(const Block& b, CPart* part, CPlayStruct& p, int slice) {
    const double partEnd = double(part->pos) + b.track()->seq->getTicks(part);
    double at = b.songTrack->pos;
    int stepDone = 0;
    while (p.current && stepDone < slice) {
        int step = std::min(slice - stepDone, envelopeStep);
        const double tick = double(p.current->delta) + p.pos;
        const double distance = (tick - at) * b.fpt;
        if (asRound(distance) >= step) {
            if (p.state != RampState::beforeFirst) {
                sendLane(b, p, b.done + stepDone, rampValue(p));
                p.rampPos += step * b.tpf;
            }
        } else if (tick >= part->pos && tick < partEnd) {
            const auto* point = static_cast<CEnvEvent*>(p.current);
            step = std::max(0, asRound(distance));
            sendLane(b, p, b.done + stepDone + std::max(0.0, distance), point->value);
            loadRamp(p, point);
        } else {
            p.current = nullptr;
        }
        at += step * b.tpf;
        stepDone += step;
    }
}

void playSlice(const Block& b, int slice) {
    if (slice <= 0) return;
    for (CPart* part : each<CPart>(b.songTrack->parts)) {
        const int pointers = part->numPlay;
        for (int i = 0; i < pointers; i++) {
            CPlayStruct* p = part->play(i);
            if (!p->current) continue;
            if (p->kind == PlayKind::envelope)
                playEnvelope(b, part, *p, slice);
            else
                playEvents(b, part, *p, slice);
        }
    }
}

void sendChase(const Block& b) {
    for (CSubTrack* lane : each<CSubTrack>(b.track()->subTracks)) {
        if (!lane->chasePending) continue;
        lane->chasePending = false;
        if (lane->played())
            insertEvent(lane, b.control, b.offset, lane->chaseValue, nullptr, b.track()->channel);
    }
}

/// Cuts the block at the ends of loop passes and plays each piece.
void playBlock(Block& b) {
    CSongTrack* songTrack = b.songTrack;
    bool wrapped = false;
    for (int left = b.frames; left > 0;) {
        takeLoop(b, wrapped);
        int slice = left;
        bool wrapNow = false;
        if (b.wraps && songTrack->pos + slice * b.tpf > b.loopEnd) {
            slice = asMinMax(asInt((b.loopEnd - songTrack->pos) * b.fpt), wrapped ? 1 : 0, left);
            wrapNow = wrapped = true;
        }
        playSlice(b, slice);
        songTrack->pos += slice * b.tpf;
        b.done += slice;
        left -= slice;
        if (!wrapNow) continue;
        songTrack->flush(b.offset + std::max(0, b.done - 1), false);
        songTrack->pos -= b.loopEnd - b.loopStart;
        songTrack->setup(b.loopStart, -b.tpf * b.done, false);
        if (b.track()->armed) b.track()->nextPass();
    }
}

/// Sends the note-offs that fall into the block; the others count from the next one on.
void playNoteOffs(const Block& b) {
    CSongTrack* songTrack = b.songTrack;
    std::swap(songTrack->noteOffs, songTrack->noteOffsNext);
    songTrack->noteOffs->clear();
    for (const CMIDIBytes* e = songTrack->noteOffsNext->first(); e; e = e->next) {
        const int frame = std::max(0, asRound(e->time * b.fpt));
        if (frame >= b.frames)
            songTrack->noteOffs->addMidiEvent(e->time - b.frames * b.tpf, e->data);
        else if (b.port)
            b.port->insert(b.offset + frame, e->data, eventMidi, 0.0f, 0, nullptr, nullptr);
    }
    songTrack->noteOffsNext->clear();
}

void endLiveNotes(CTrack* track, CMIDIQ* queue) {
    for (int& message : track->playingNotes) {
        if (!message) continue;
        queue->insert(0.0, message, eventMidi, 0.0f, 0, nullptr, nullptr);
        message = 0;
    }
}

/// Looks along one envelope for the value in force at `position`.
void chaseList(CSubTrack* lane, CPart* part, CEnvEvent* head, double position, int ticks) {
    double tick = double(part->pos) + part->offset;
    const double end = double(part->pos) + ticks;
    for (CEnvEvent* e = head; e; e = static_cast<CEnvEvent*>(e->next)) {
        tick += e->delta;
        if (tick < part->pos || tick >= end) continue;
        if (tick <= position)
            lane->chasePrior = e;
        else if (!lane->chasePrior && !lane->chaseNext)
            lane->chaseNext = e;
    }
}

void chaseLane(CSongTrack* songTrack, CSubTrack* lane, double position) {
    lane->chaseBlocked = lane->chasePending = false;
    lane->chasePrior = lane->chaseNext = nullptr;
    if (!lane->automation()) return;
    for (CPart* part : each<CPart>(songTrack->parts)) {
        const int pointers = part->numPlay;
        for (int i = 0; i < pointers; i++) {
            const CPlayStruct* p = part->play(i);
            if (p->lane != lane) continue;
            if (p->current && p->state != RampState::beforeFirst)
                lane->chaseBlocked = true;
            else
                chaseList(lane, part, static_cast<CEnvEvent*>(p->head), position,
                          songTrack->track->seq->getTicks(part));
        }
    }
    const CEnvEvent* point = lane->chasePrior ? lane->chasePrior : lane->chaseNext;
    if (!point || lane->chaseBlocked) return;
    lane->chaseValue = point->value;
    lane->chasePending = true;
}

PlayKind mainKind(int trackKind) {
    if (trackKind == trackAudio) return PlayKind::audio;
    return trackKind == trackDrum ? PlayKind::drum : PlayKind::midi;
}

/// Puts a pointer on the first event at or after `position` that lies in the part. Clips that have
/// begun before sound from their middle on, `delay` frames into the block.
void seekPointer(CSongTrack* songTrack, CPlayStruct& p, CPart* part, double position, int delay) {
    p.pos = part->pos + part->offset;
    CBaseEvent* prior = nullptr;
    CBaseEvent* e = p.head;
    while (e && (double(p.pos) + e->delta < position || p.pos + e->delta < part->pos)) {
        p.pos += e->delta;
        if (p.kind == PlayKind::audio && p.pos >= part->pos)
            joinClip(songTrack, part, static_cast<CAudioEvent*>(e), p.pos, position, delay);
        prior = e;
        e = e->next;
    }
    p.current = e;
    if (p.kind != PlayKind::envelope || !e || double(p.pos) + e->delta <= position) return;
    if (!prior) {
        p.state = RampState::beforeFirst;
        return;
    }
    p.rampFrom = static_cast<CEnvEvent*>(prior)->value;
    p.rampTo = static_cast<CEnvEvent*>(e)->value;
    p.curve = static_cast<CEnvEvent*>(e)->curve;
    p.rampLength = e->delta;
    p.rampPos = position - p.pos;
}

void addLanePointer(CPart* part, CSubTrack* lane) {
    if (!lane->automation() || lane->slot < 0 || lane->slot >= maxSlots) return;
    CPlayStruct* p = part->addPlay();
    if (!p) return;
    p->kind = PlayKind::envelope;
    p->lane = lane;
    p->param = lane->param;
    p->object = lane->object;
    p->head = part->getParam(lane->slot);
}

} // namespace

float getPoint(int shape, float from, float to, float t, float curve) {
    return automationPoint(shape, from, to, t, curve);
}

int groove(const CGroove* table, int tick) {
    const float amount = table->amount;
    if (!table->on || amount == 0.0f) return 0;
    const int steps = asMinMax(table->steps, 1, CGroove::maxSteps);
    const int stepTicks = std::max(1, table->stepTicks.load());
    const int64_t bar = int64_t(steps) * stepTicks;
    const int64_t start = int64_t(std::floor(double(tick) / double(bar))) * bar;
    const int64_t rem = tick - start;
    const int i = std::min(int(rem / stepTicks), steps - 1);
    const int64_t inStep = rem - int64_t(i) * stepTicks;
    const int64_t line = start + int64_t(i) * stepTicks + (inStep < stepTicks / 2 ? 0 : stepTicks);
    const int64_t target = line + asRound(double(table->offsets[i]) * stepTicks);
    return asRound(double(amount) * double(target - tick));
}

void insertEvent(CSubTrack* lane, CMIDIQ* queue, double frame, float value, CPlayStruct* pointer,
                 int channel) {
    if (!lane->automation() || !queue) return;
    value = fLimit(value, 0.0f, 1.0f);
    const float last = pointer ? pointer->lastValue : -1.0f;
    const int ch = std::max(0, channel) & 15;
    const auto unchanged = [&](int scale, int v) {
        return pointer && last >= 0.0f && asRound(double(last) * scale) == v;
    };
    switch (lane->target) {
    case targetParam:
        if (pointer && value == last) return;
        queue->insert(frame, 0, eventParam, value, lane->param, lane->object, nullptr);
        break;
    case targetController: {
        const int v = asMinMax(asRound(double(value) * maxController), 0, maxController);
        if (unchanged(maxController, v)) return;
        queue->insert(frame, asData(midiController + ch, lane->param & 127, v), eventMidi, 0.0f, 0,
                      nullptr, nullptr);
        break;
    }
    case targetPitchBend: {
        const int v = asRound(double(value) * maxBend);
        if (unchanged(maxBend, v)) return;
        queue->insert(frame, asData(midiPitchBend + ch, v & 127, (v >> 7) & 127), eventMidi, 0.0f,
                      0, nullptr, nullptr);
        break;
    }
    default:
        return;
    }
    if (!pointer) return;
    pointer->lastValue = value;
    lane->lastValue = value;
}

void CSongTrack::setup(double position, double offset, bool keepMain) {
    assert(track->heldByThread());
    const CQV* host = track->host;
    const int delay = std::max(0, asRound(host->ticksToFrames(-offset)));
    audible = !muted() && !(prog->anySolo && !soloed());
    frozen = !host->renderMode && audible && voices && !freezeItems.empty();
    if (voices) voices->beginRebuild(keepMain);
    if (frozen && !keepMain) playFrozen(this, position, delay);
    for (CPart* part : each<CPart>(parts)) setupPlayPointer(position, part, keepMain, delay);
    if (voices) voices->endRebuild();
    for (CSubTrack* lane : each<CSubTrack>(track->subTracks)) chaseLane(this, lane, position);
}

void CSongTrack::setupPlayPointer(double position, CPart* part, bool keepMain, int delay) {
    const bool kept = keepMain && part->mainPlays();
    part->numPlay = kept ? 1 : 0;
    if (!kept) {
        CPlayStruct* p = part->addPlay();
        p->kind = mainKind(track->kind);
        p->head = part->getEvents();
    }
    if (frozen) part->play(0)->current = nullptr; // the file plays in its place
    for (CSubTrack* lane : each<CSubTrack>(track->subTracks)) addLanePointer(part, lane);
    const bool plays = audible && !part->muted() && part->type != partPlain &&
                       double(part->pos) + track->seq->getTicks(part) > position;
    if (!plays) return;
    const int pointers = part->numPlay;
    for (int i = kept || frozen ? 1 : 0; i < pointers; i++)
        seekPointer(this, *part->play(i), part, position, delay);
}

void CSongTrack::process(int frames, int offset) {
    assert(track->heldByThread());
    CSeq* seq = track->seq;
    CQV* host = seq->host;
    const double tpf = double(host->tempoNow) * ticksPerSecondPerBpm / double(host->rate);
    const bool toInput = track->kind == trackAudio || track->kind == trackDrum;
    CMIDIQ* control = toInput ? track->inPort() : track->outPort();
    Block block{this, track->outPort(), control, tpf, 1.0 / tpf, frames, offset};

    if (prog == seq->getProg()) {
        track->preview.assignCh(track->channel);
        track->preview.process(control, frames * block.tpf, block.fpt);
        if (!track->selected() && control) endLiveNotes(track, control);
    }
    if (prog->playing) {
        if (requests.take(requestFlush)) flush(0, false);
        if (requests.take(requestSetup)) setup(pos, 0.0, false);
        if (requests.take(requestLanes)) setup(pos, 0.0, true);
        sendChase(block);
        playBlock(block);
        playNoteOffs(block);
    }
    if (!freezeItems.empty() && !host->renderMode) track->fxDone = true;
    if (voices) voices->render(frames, offset);
}

void CSongTrack::hitDrum(CDrumSound* sound, CPart* part, float velocity, float pan, float tune,
                         int delay) {
    auto* clip = static_cast<CSampleClip*>(sound->clips[0]);
    if (!voices || !clip) return;
    VoiceStart start;
    start.part = part;
    start.sample = clip;
    start.end = clip->end;
    start.delay = delay;
    start.group = sound->group;
    start.sound = sound;
    start.velocity = velocity;
    start.pan = pan;
    start.tune = tune;
    start.out = track->output();
    voices->add(start);
}

void CSongTrack::flush(int frame, bool force) {
    if (voices) voices->flush(frame, force);
    CMIDIQ* port = track->outPort();
    for (const CMIDIBytes* e = noteOffs->first(); e && port; e = e->next) {
        const int due = std::max(0, asRound(track->host->ticksToFrames(e->time)));
        port->insert(std::min(frame, due), e->data, eventMidi, 0.0f, 0, nullptr, nullptr);
    }
    noteOffs->clear();
}

void CSongTrack::stop() {
    flush(0, true);
    audible = false;
}
