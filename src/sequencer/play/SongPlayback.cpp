#include "sequencer/play/SongPlayback.h"

#include "base/Numbers.h"
#include "common/Curves.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/SongClock.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CGroove.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/TempoMap.h"

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
    double tpf;      ///< ticks per frame
    int frames, offset;
    int passed, left; ///< frames of the stride before the block, and from its start on
    int done = 0;     ///< frames of the block that lie behind
    double loopStart = 0.0, loopEnd = 0.0;
    bool looping = false;
    bool wraps = false; ///< at `loopEnd` the song goes on at `loopStart`
    double until = 0.0; ///< tick at which the slice ends, to the frame

    CTrack* track() const { return songTrack->track; }
    double framesOf(double ticks) const { return ticks / tpf; }
    /// Frames of the slice that lie before a tick, rounded.
    int frameAt(double tick) const;
    /// Whether a tick lies behind the end of the running pass.
    bool pastLoop(double tick) const { return looping && loopStart != loopEnd && tick >= loopEnd; }
    double ticksIn(int ms) const { return ms * tpf * double(songTrack->track->host->rate) / 1000; }
    int swing(double tick) const { return groove(&songTrack->track->groove, int(tick)); }
};

int Block::frameAt(double tick) const {
    return asRound(framesOf(tick - songTrack->pos));
}

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

/// Sends a note at tick `at`, which ends at tick `off`, but not before it has begun.
void strikeKey(const Block& b, int data, double at, double off) {
    if (!b.port) return;
    const int msg = b.track()->setCh(data);
    const bool note = noteOn(msg);
    if (note && b.songTrack->noteOffs->count >= CMIDIQ::maxEvents) return;
    const double frame = b.framesOf(at - b.songTrack->pos) + b.done + b.offset;
    b.port->insert(frame, msg, eventMidi, 0.0f, 0, nullptr, nullptr);
    b.port->hasData = 1.0f;
    const double due = std::max(off, at + b.tpf) - b.songTrack->pos + b.done * b.tpf;
    if (note) b.songTrack->noteOffs->addMidiEvent(due, msg & 0xFFFF);
}

/// An audio event that stands at `tick`, at tick `songPos`.
void playClip(CSongTrack* songTrack, CPart* part, CAudioEvent* e, int tick, double songPos,
              int delay) {
    if (e->sample == songTrack->track->recSample) return; // it is being recorded
    songTrack->voices->ask(clipStart(songTrack, part, e, tick, songPos, delay));
}

void strikeDrum(const Block& b, CPart* part, const Strike& s, double at) {
    CTrack* track = b.track();
    CDrumSound* sound = track->drumSound(s.sound);
    if (!sound || track->drumLayer()->soundMuted(sound)) return;
    const int delay = b.done + std::max(0, b.frameAt(at));
    b.songTrack->hitDrum(sound, part, s.velocity, s.pan, s.tune, delay);
}

Strike strikeOf(PlayKind kind, const CBaseEvent* event) {
    if (kind == PlayKind::midi) return {kind, asMessage(event)->data};
    const auto* hit = asHit(event);
    return {kind, 0, hit->sound, hit->velocity, hit->pan, hit->tune};
}

/// `part` may be null.
void strike(const Block& b, CPart* part, const Strike& s, double at, double off) {
    if (s.kind == PlayKind::midi)
        strikeKey(b, s.data, at, off);
    else
        strikeDrum(b, part, s, at);
}

/// Whether a note or hit plays this time. `tick` is that without the swing.
bool happens(const Block& b, const Strike& s, const CBaseEvent* event, int tick) {
    return !event->style.muted &&
           b.songTrack->chance.happens(event->style.chance, tick, s.data | s.sound << 24);
}

bool isStrike(PlayKind kind, const CBaseEvent* event) {
    return kind == PlayKind::drum || (kind == PlayKind::midi && noteOn(asMessage(event)->data));
}

/// Plays what stands at `tick`, with the swing at `moved`: once, and its repeats follow by
/// themselves.
void playStrike(const Block& b, CPart* part, PlayKind kind, const CBaseEvent* event, int tick,
                double moved) {
    const Strike s = strikeOf(kind, event);
    if (!isStrike(kind, event)) return strike(b, part, s, moved, moved);
    if (!happens(b, s, event, tick)) return;
    const int partEnd = part->pos + b.track()->seq->playedTicks(part);
    const int length =
        std::max(1, kind == PlayKind::midi ? asMessage(event)->length : asHit(event)->length);
    const Repeats r{s, tick,           moved, length, std::max(1, int(event->style.repeats)),
                    1, double(partEnd)};
    strike(b, part, s, moved, tick + std::max(1, std::min(r.start(1), partEnd - tick)) - 1.0);
    if (r.count > 1) b.songTrack->repeats.add(r);
}

/// Plays the repeats that are due in the next `slice` frames.
void playRepeats(const Block& b, int slice) {
    b.songTrack->repeats.keep([&](Repeats& r) {
        for (; r.next < r.count; r.next++) {
            const double at = r.moved + r.start(r.next);
            if (b.frameAt(at) >= slice) return true;
            if (at >= r.partEnd || b.pastLoop(at)) return false;
            const double end = std::min(r.tick + double(r.start(r.next + 1)), r.partEnd);
            strike(b, nullptr, r.strike, at, end - 1.0);
        }
        return false;
    });
}

/// The soft one before what stands at `tick`, if that lies in the slice.
void playFlam(const Block& b, CPart* part, PlayKind kind, const CBaseEvent* event, int tick) {
    const double moved = double(tick) + b.swing(tick);
    const double at = moved - b.ticksIn(event->style.flamMs);
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
    const bool within = at >= b.songTrack->reached && at < b.until;
    if (!within || moved >= partEnd || b.pastLoop(moved) || !isStrike(kind, event)) return;
    Strike s = strikeOf(kind, event);
    if (!happens(b, s, event, tick)) return;
    s.velocity /= 2;
    if (kind == PlayKind::midi)
        s.data = asData(s.data, asByte1(s.data), std::max(1, asByte2(s.data) / 2));
    strike(b, part, s, at, std::max((at + moved) / 2, moved - 1.0));
}

/// Whether a row of its own length leaves an event of a drum part out.
bool leftOut(CPart* part, const CBaseEvent* event, const RowLoops* rows, int tick) {
    return rows && !inRow(rows, asHit(event)->sound, tick - part->pos - part->offset);
}

/// The soft ones that go before events to come.
void playFlams(const Block& b, CPart* part, const CPlayStruct& p, const RowLoops* rows) {
    const double until = b.until + b.ticksIn(mostFlamMs) + b.songTrack->swingLead();
    int tick = p.pos;
    for (const CBaseEvent* e = p.current; e && (tick += e->delta) < until; e = e->next)
        if (e->style.flamMs > 0 && !leftOut(part, e, rows, tick))
            playFlam(b, part, p.kind, e, tick);
}

/// What rows that are shorter than the part repeat.
void playRows(const Block& b, CPart* part, const CPlayStruct& p, const RowLoops& rows) {
    const int start = part->pos + part->offset;
    const double lead = b.songTrack->swingLead();
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
    const double from = std::max(b.songTrack->reached - lead, double(part->pos)) - start;
    const double until = std::min(b.until + lead + b.ticksIn(mostFlamMs), partEnd) - start;
    eachRepeat(p.head, rows, from, until, [&](const CDrumEvent* hit, int own) {
        const int tick = start + own;
        const double moved = double(tick) + b.swing(tick);
        if (hit->style.flamMs > 0) playFlam(b, part, p.kind, hit, tick);
        if (moved < b.songTrack->reached || moved >= b.until) return;
        if (moved < partEnd && !b.pastLoop(moved)) playStrike(b, part, p.kind, hit, tick, moved);
    });
}

/// Ticks by which the swing moves all events of a main list in this stride: that of the first.
int swingOf(const Block& b, CPlayStruct& p) {
    if (!p.swung || b.passed + b.done == 0) p.swing = b.swing(double(p.current->delta) + p.pos);
    p.swung = true;
    return p.swing;
}

/// Plays what is due in the next `slice` frames of a main list.
void playEvents(const Block& b, CPart* part, CPlayStruct& p, const RowLoops* rows, int slice) {
    if (!p.current) return;
    if (p.kind != PlayKind::audio) playFlams(b, part, p, rows);
    const int g = swingOf(b, p);
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
    while (p.current) {
        const int tick = p.current->delta + p.pos;
        const double moved = double(tick) + g;
        if (b.frameAt(moved) >= slice) return;
        if (moved >= partEnd || b.pastLoop(moved)) {
            p.current = nullptr;
            return;
        }
        const int delay = b.done + std::max(0, b.frameAt(moved));
        if (p.kind == PlayKind::audio)
            playClip(b.songTrack, part, asClip(p.current), tick, moved, delay);
        else if (!leftOut(part, p.current, rows, tick))
            playStrike(b, part, p.kind, p.current, tick, moved);
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
    const auto* next = asLanePoint(p.current);
    p.rampTo = next->value;
    p.rampLength = next->delta;
    p.curve = next->curve;
}

float rampValue(const CPlayStruct& p) {
    const double t = p.rampLength > 0.0 ? p.rampPos / p.rampLength : 1.0;
    const int shape = asLanePoint(p.current)->shape;
    return getPoint(shape, p.rampFrom, p.rampTo, float(t), p.curve);
}

/// Frames of an envelope's step that lie before a frame of the slice, at tick `at`. Steps count
/// from the start of the stride, of the part, or from a point, whatever came last.
int stepPassed(const Block& b, const CPart* part, const CPlayStruct& p, int frame, double at) {
    int since = b.passed + b.done + frame;
    if (at >= part->pos) since = std::min(since, asRound(b.framesOf(at - part->pos)));
    if (p.state == RampState::between) since = std::min(since, asRound(b.framesOf(p.rampPos)));
    return since % envelopeStep;
}

/// Plays the next `slice` frames of an envelope, in steps; the last one may end behind them.
void playEnvelope(const Block& b, CPart* part, CPlayStruct& p, int slice) {
    const double partEnd = double(part->pos) + b.track()->seq->playedTicks(part);
    double at = b.songTrack->pos;
    int done = 0;
    if (at < part->pos) { // what lies before the part has no say yet
        done = std::min(slice, b.frameAt(part->pos));
        at += done * b.tpf;
    }
    while (p.current && done < slice) {
        const int passed = stepPassed(b, part, p, done, at);
        const int step = std::min(envelopeStep - passed, b.left - b.done - done);
        int n = std::min(step, slice - done);
        const double tick = double(p.current->delta) + p.pos;
        const double distance = b.framesOf(tick - at);
        if (asRound(distance) >= n) {
            if (p.state != RampState::beforeFirst) {
                if (passed == 0 && asRound(distance) >= step)
                    sendLane(b, p, b.done + done, rampValue(p));
                p.rampPos += n * b.tpf;
            }
        } else if (tick >= part->pos && tick < partEnd) {
            const auto* point = asLanePoint(p.current);
            n = std::max(0, asRound(distance));
            sendLane(b, p, b.done + done + std::max(0.0, distance), point->value);
            loadRamp(p, point);
        } else {
            p.current = nullptr;
        }
        at += n * b.tpf;
        done += n;
    }
}

/// Plays the next `slice` frames of a part; false when nothing of it is left.
bool playPart(const Block& b, CPart* part, int slice) {
    const bool over = double(part->pos) + b.track()->seq->playedTicks(part) <= b.songTrack->pos;
    const RowLoops* rows = b.songTrack->frozen ? nullptr : rowLoops(part);
    bool left = rows && !over;
    for (int i = 0; i < part->numPlay; i++) {
        CPlayStruct& p = *part->play(i);
        const bool envelope = p.kind == PlayKind::envelope;
        if (left && i == 0) playRows(b, part, p, *rows);
        const bool ramping = envelope && p.state == RampState::between;
        if (over && !ramping) p.current = nullptr;
        if (!p.current) continue;
        if (envelope)
            playEnvelope(b, part, p, slice);
        else
            playEvents(b, part, p, rows, slice);
        left = left || p.current;
    }
    return left;
}

void playSlice(Block& b, int slice) {
    if (slice <= 0) return;
    const double end = b.songTrack->pos + slice * b.tpf;
    b.until = end - 0.5 * b.tpf; // what rounds to a frame of the slice
    b.songTrack->admitParts(end + b.ticksIn(mostFlamMs));
    b.songTrack->eachPlaying([&](CPart* part) { return playPart(b, part, slice); });
    playRepeats(b, slice);
    b.songTrack->reached = b.until;
}

void sendChase(const Block& b) {
    for (CSubTrack* lane : b.track()->subTracks) {
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
            slice = asMinMax(asInt(b.framesOf(b.loopEnd - songTrack->pos)), wrapped ? 1 : 0, left);
            wrapNow = wrapped = true;
        }
        playSlice(b, slice);
        songTrack->pos += slice * b.tpf;
        b.done += slice;
        left -= slice;
        if (!wrapNow) continue;
        songTrack->flush(b.offset + std::max(0, b.done - 1), false);
        songTrack->pos -= b.loopEnd - b.loopStart;
        songTrack->chance.nextPass();
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
        const int frame = std::max(0, asRound(b.framesOf(e->time)));
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
    const double tpf = host->ticksPerFrame();
    const bool toInput = track->kind == trackAudio || track->kind == trackDrum;
    CMIDIQ* control = toInput ? track->inPort() : track->outPort();
    const SongClock& clock = *host->clock;
    Block block{this,   track->outPort(), control,        tpf,
                frames, offset,           clock.passed(), clock.left(frames)};

    if (prog == seq->getProg()) {
        track->preview.assignCh(track->channel);
        track->preview.process(control, frames * block.tpf, 1.0 / block.tpf);
        if (!track->selected() && control) endLiveNotes(track, control);
    }
    if (voices && clock.begins()) voices->beginStride();
    if (prog->playing) {
        if (requests.take(requestFlush)) flush(0, false);
        if (requests.take(requestSetup)) setup(pos, 0.0, false);
        if (requests.take(requestLanes)) setup(pos, 0.0, true);
        sendChase(block);
        playBlock(block);
        playNoteOffs(block);
    }
    if (!freezeItems.empty() && !host->renderMode) track->fxDone = true;
    if (!voices) return;
    voices->admit();
    track->willSound(this);
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
    voices->ask(start);
}

void CSongTrack::flush(int frame, bool force) {
    if (voices) voices->flush(frame, force);
    CMIDIQ* port = track->outPort();
    for (const CMIDIBytes* e = noteOffs->first(); e && port; e = e->next) {
        const int due = std::max(0, asRound(track->host->ticksToFrames(e->time)));
        port->insert(std::min(frame, due), e->data, eventMidi, 0.0f, 0, nullptr, nullptr);
    }
    noteOffs->clear();
    repeats.clear();
}

void CSongTrack::stop() {
    flush(0, true);
    audible = false;
}
