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
    const int partEnd = part->pos + b.track()->seq->playedTicks(part);
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

/// An audio event that stands at `tick`, at tick `songPos`.
void playClip(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
              int delay) {
    if (e->sample == songTrack->track->recSample) return; // it is being recorded
    songTrack->voices->add(clipStart(songTrack, part, e, tick, songPos, delay));
}

void playDrum(CSongTrack* songTrack, CPart* part, const CDrumEvent* e, int delay) {
    CDrumSound* sound = songTrack->track->drumSound(e->sound);
    if (!sound || songTrack->track->drumLayer()->soundMuted(sound)) return;
    songTrack->hitDrum(sound, part, e->velocity, e->pan, e->tune, delay);
}

/// Plays what is due in the next `slice` frames of a main list.
void playEvents(const Block& b, CPart* part, CPlayStruct& p, int slice) {
    if (!p.current) return;
    const int g = groove(&b.track()->groove, p.current->delta + p.pos);
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
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
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
    double at = b.songTrack->pos;
    int stepDone = 0;
    if (at < part->pos) { // what lies before the part has no say yet
        stepDone = std::min(slice, asRound((part->pos - at) * b.fpt));
        at += stepDone * b.tpf;
    }
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

/// Plays the next `slice` frames of a part; false when nothing of it is left.
bool playPart(const Block& b, CPart* part, int slice) {
    const bool over = double(part->pos) + b.track()->seq->playedTicks(part) <= b.songTrack->pos;
    bool left = false;
    for (int i = 0; i < part->numPlay; i++) {
        CPlayStruct& p = *part->play(i);
        const bool envelope = p.kind == PlayKind::envelope;
        const bool ramping = envelope && p.state == RampState::between;
        if (over && !ramping) p.current = nullptr;
        if (!p.current) continue;
        if (envelope)
            playEnvelope(b, part, p, slice);
        else
            playEvents(b, part, p, slice);
        left = left || p.current;
    }
    return left;
}

void playSlice(const Block& b, int slice) {
    if (slice <= 0) return;
    b.songTrack->admitParts(b.songTrack->pos + slice * b.tpf);
    b.songTrack->eachPlaying([&](CPart* part) { return playPart(b, part, slice); });
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

double grooveLead(const CGroove* table) {
    const double amount = std::fabs(double(table->amount));
    if (!table->on || amount == 0.0) return 0.0;
    float furthest = 0.0f;
    const int steps = asMinMax(table->steps, 1, CGroove::maxSteps);
    for (int i = 0; i < steps; i++) furthest = std::max(furthest, std::fabs(table->offsets[i]));
    return std::ceil(amount * std::max(1, int(table->stepTicks)) * (1.0 + double(furthest)));
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
