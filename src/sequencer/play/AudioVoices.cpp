#include "sequencer/play/AudioVoices.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "engine/SongClock.h"
#include "engine/plan/GraphWorkers.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CVoice.h"
#include "instruments/Slices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace {

constexpr double semitonesPerOctave = 12.0;
constexpr double slowest = 1.0 / 1024, fastest = 1024.0; ///< source frames per output frame
constexpr double speedNoise = 1e-6; ///< frames by which a rounded speed may fall short of the end
constexpr float runOut = 0.999f;    ///< of the last frame, frame by frame
constexpr int drumFade = 256;       ///< frames in which a drum is silenced

double ratio(double semitones) {
    return std::exp2(semitones / semitonesPerOctave);
}

double speedLimit(double speed) {
    return std::isfinite(speed) ? std::clamp(speed, slowest, fastest) : 1.0;
}

void setFades(AudioVoice& v) {
    v.fadeInLen = v.fadeOutLen = 0;
    v.fadeOutPos = -1;
    if (!v.event) return;
    v.fadeInMs = v.event->fadeInMs;
    v.fadeOutMs = v.event->fadeOutMs;
    if (v.event->fadeInMs > 0.0f)
        v.fadeInLen = asRound(double(v.event->fadeInMs) * fadeFramesPerMs);
    if (v.event->fadeOutMs > 0.0f)
        v.fadeOutLen = asRound(double(v.event->fadeOutMs) * fadeFramesPerMs);
    v.fadeInPos = asInt(v.pos - v.start);
    if (v.fadeInPos >= v.fadeInLen) v.fadeInLen = 0;
}

SampleSpan spanOf(const AudioVoice& v) {
    return {v.pos, v.speed, v.reverse, v.start, v.end};
}

/// A number that differs, as good as surely, for other markers; 0 for none.
std::uint64_t markOf(const CAudioEvent* e) {
    if (!e || !isPinned(e)) return 0;
    std::uint64_t mark = std::uint64_t(e->pins.count);
    const auto mix = [&](std::uint64_t word) { mark = (mark ^ word) * 0x100000001B3; };
    for (const ClipPin& pin : e->pins) {
        mix(std::uint64_t(pin.frame));
        mix(std::bit_cast<std::uint32_t>(pin.pitch));
        mix(std::bit_cast<std::uint64_t>(pin.share));
    }
    return mark;
}

/// Whether the voice plays what the start asks for, but perhaps at another pitch or to another end.
bool plays(const AudioVoice& v, const VoiceStart& s) {
    if (v.part != s.part || v.sample != s.sample || v.out != s.out) return false;
    if (!s.event) return true; // a freeze file
    const int last = s.sample->frames - 1;
    const bool sameEnd = v.end == asMinMax(s.end, 0, last);
    const bool endMayMove =
        v.mode == playRepitch && !v.reverse && v.fadeOutLen == 0 && s.end > v.pos;
    return v.tick == s.tick && v.mode == s.mode && v.reverse == s.reverse && v.ticks == s.ticks &&
           v.start == asMinMax(s.start, 0, std::max(last, 0)) && (sameEnd || endMayMove) &&
           v.pins == markOf(s.event) && v.fadeInMs == s.event->fadeInMs &&
           v.fadeOutMs == s.event->fadeOutMs;
}

/// Source frame that is reached `frames` further on.
double sourceAt(const AudioVoice& v, double frames) {
    const double step =
        v.mode == playStretch ? wholeSteps(1.0 / v.stretch, v.sample->frames) : v.speed;
    return v.pos + frames * step;
}

/// At the level of the track that it belongs to.
void feedDrum(const CDrumSound* sound, const COutputChannel* track, int bus, CInputChannel* to,
              int frames) {
    const CSend* send = sound->output->sendLevels[bus];
    const float level = send->level;
    if (send->muted || level == 0.0f) return;
    const float trim = track->trim;
    const float share = float(track->vol) * (trim != 0.0f ? std::pow(4.0f, trim) : 1.0f);
    addScaled(to->bufL, sound->output->bufL, frames, level * level * share);
    addScaled(to->bufR, sound->output->bufR, frames, level * level * share);
}

} // namespace

AudioVoices::AudioVoices(CSongTrack* owner, bool withDrums)
    : songTrack(owner), drums(withDrums ? std::make_unique<CVoice[]>(count) : nullptr) {
}

AudioVoices::~AudioVoices() {
    dropAll();
}

CQV* AudioVoices::host() const {
    return songTrack->track->host;
}

/// A free slot; for a choke group the last one, or that which it holds.
AudioVoice* AudioVoices::findSlot(unsigned char group) {
    AudioVoice* found = nullptr;
    for (AudioVoice& v : voices) {
        if (v.active || v.spent) continue;
        found = &v;
        if (!group) break;
    }
    return found ? found : findHeld(group);
}

/// The voice that the next hit of a choke group is to end.
AudioVoice* AudioVoices::findHeld(unsigned char group) {
    const auto held = [group](const AudioVoice& v) {
        return v.active && v.group == group && v.choked < 0;
    };
    AudioVoice* const end = voices + count;
    AudioVoice* const found = group ? std::find_if(voices, end, held) : end;
    return found != end ? found : nullptr;
}

void AudioVoices::beginStride() {
    for (AudioVoice& v : voices) v.spent = false;
}

void AudioVoices::ask(const VoiceStart& s) {
    if (numAsked == count) return;
    int i = numAsked++;
    for (; i > 0 && asked[i - 1].delay > s.delay; i--) asked[i] = asked[i - 1];
    asked[i] = s;
}

void AudioVoices::admit() {
    for (int i = 0; i < numAsked; i++) add(asked[i]);
    numAsked = 0;
}

AudioVoice* AudioVoices::add(const VoiceStart& s) {
    if (!s.sample || !s.sample->valid || !s.out) return nullptr;
    if (s.sound && !drums) return nullptr;
    AudioVoice fresh;
    if (!place(fresh, s)) return nullptr;
    AudioVoice* v = findSlot(s.group);
    if (!v) return nullptr;
    if (AudioVoice* held = findHeld(s.group)) held->choked = std::max(s.delay, 0);
    release(*v);
    *v = fresh;
    begin(*v, s);
    return v;
}

/// Sets where and how fast it plays; false when nothing is left to play.
bool AudioVoices::place(AudioVoice& v, const VoiceStart& s) const {
    const CQV* root = host();
    const int last = s.sample->frames - 1;
    v.start = asMinMax(s.start, 0, std::max(last, 0));
    v.end = v.stop = asMinMax(s.end, 0, last);
    v.tick = s.tick;
    v.ticks = s.ticks;
    v.mode = asMinMax(s.mode, int(playRepitch), int(playStretch));
    v.reverse = s.reverse;
    v.pitch = s.pitch;
    v.sample = s.sample;
    v.event = s.event;
    v.delay = std::max(s.delay, 0);
    v.rate = double(s.sample->rate) / double(root->rate);
    const int length = v.end - v.start;
    if (v.mode != playRepitch) {
        if (s.ticks < 1 || length < 1) return false;
        v.tempoSpeed = length * ticksPerSecondPerBpm / (double(s.ticks) * double(root->rate));
    }
    v.pins = markOf(s.event);
    v.pos = v.pieceEnd = v.start;
    refresh(v);
    if (s.into > 0.0 && v.mode != playRepitch) {
        const double share = s.into / s.ticks;
        v.pos += v.pins ? framesAtShare(s.event, share) : share * (length + 1.0);
    } else if (s.into > 0.0) {
        v.pos += sourceFramesInto(s, v.pitch);
        if (v.speed == 1.0) v.pos = std::floor(v.pos + 0.5); // as a voice from its start stands
    }
    v.pos = v.pieceEnd = wholeSteps(v.pos, s.sample->frames);
    return v.pos <= v.end;
}

/// Frames of the sample that have passed when a clip is joined at its own speed.
double AudioVoices::sourceFramesInto(const VoiceStart& s, double pitch) const {
    const CQV* root = host();
    const int from = asInt(s.songPos - s.into), whole = asInt(s.into);
    const int sourceRate = tunedRate(s.sample, pitch);
    const double ticksPerFrame = double(root->tempoNow) * ticksPerSecondPerBpm / sourceRate;
    return songTrack->track->seq->ticksToFrames(from, whole, sourceRate) +
           (s.into - whole) / ticksPerFrame;
}

void AudioVoices::begin(AudioVoice& v, const VoiceStart& s) {
    v.part = s.part;
    v.sound = s.sound;
    v.group = s.group;
    v.out = s.out;
    v.active = true;
    setFades(v);
    v.stretchPos = asInt(v.pos);
    if (v.mode == playStretch)
        for (auto* stretcher : host()->stretchers) {
            if (!stretcher->start()) continue;
            v.stretcher = stretcher;
            break;
        }
    if (s.sound)
        s.sound->startHit(&drums[&v - voices], host(), s.velocity, s.pan, s.tune);
    else if (v.mode != playStretch)
        primeReader(*v.sample, spanOf(v), host()->frames);
}

void AudioVoices::release(AudioVoice& v) {
    if (v.stretcher) v.stretcher->end();
    v.stretcher = nullptr;
    v.spent = v.active;
    v.active = false;
}

/// Pitch and speed as event and tempo have them now.
void AudioVoices::refresh(AudioVoice& v) const {
    const double tempo = double(host()->tempoNow);
    if (v.event) v.pitch = v.event->semitones + double(v.event->fine);
    if (v.event && v.pins) followPins(v);
    if (v.mode == playResample) {
        v.speed = wholeSteps(speedLimit(tempo * v.tempoSpeed), v.sample->frames);
        return;
    }
    v.speed = wholeSteps(speedLimit(ratio(v.pitch) * v.rate), v.sample->frames);
    if (v.mode != playStretch) return;
    if (v.sample->fixedPitch) v.speed = 1.0;
    v.stretch = 1.0 / speedLimit(tempo * v.tempoSpeed);
    v.stretchLeft = std::max(0, asInt(outputUpTo(v, v.stop)));
}

/// Speed and pitch of the piece between two markers that it is in.
void AudioVoices::followPins(AudioVoice& v) const {
    const ClipPiece piece = pieceAt(v.event, v.pos - v.start);
    const double ticks = v.event->ticks * (piece.shareTo - piece.shareFrom);
    v.tempoSpeed = (piece.to - piece.from) * ticksPerSecondPerBpm / (ticks * double(host()->rate));
    v.pieceEnd = v.start + piece.to;
    v.pitch += double(piece.pitch);
}

/// Frames that a stretched voice lasts from where it stands to another place.
double AudioVoices::outputUpTo(const AudioVoice& v, double pos) const {
    if (!v.event || !v.pins || pos <= v.pieceEnd) return (pos - v.pos) * v.stretch;
    const double ticksPerFrame =
        double(host()->tempoNow) * ticksPerSecondPerBpm / double(host()->rate);
    const double share = shareAt(v.event, pos - v.start) - shareAt(v.event, v.pos - v.start);
    return share * v.event->ticks / ticksPerFrame;
}

void AudioVoices::render(int frames, int offset) {
    const SongClock& clock = *host()->clock;
    const int ahead = clock.left(offset + frames) - offset - frames;
    for (AudioVoice& v : voices)
        if (v.active && !v.sound) renderVoice(v, frames, offset, ahead);
    for (AudioVoice& v : voices)
        if (v.active && v.sound) renderDrum(v, frames, offset, ahead);
}

void AudioVoices::renderVoice(AudioVoice& v, int frames, int offset, int ahead) {
    int done = std::min(v.delay, frames);
    v.delay -= done;
    while (done < frames && v.active) {
        const int left = frames - done, at = offset + done;
        if (v.sliceLeft == 0 && !v.runsOut && v.tail == 0) beginSlice(v, left + ahead);
        if (v.sliceLeft == 0 && std::exchange(v.runsOut, false)) v.tail = tailFrames;
        done += v.sliceLeft > 0 ? playSlice(v, left, at) : playTail(v, left, at);
    }
}

/// Plans what can be played of the next `most` frames at one gain.
void AudioVoices::beginSlice(AudioVoice& v, int most) {
    int slice = most;
    refresh(v);
    if (v.leaving > 0) slice = std::min(slice, v.leaving);
    const float gain = fadeGain(v, slice);
    if (v.event && v.pins)
        slice = std::min(slice, std::max(1, asInt(std::ceil((v.pieceEnd - v.pos) * v.stretch))));
    cutAtEnd(v, slice);
    v.sliceLeft = std::max(0, slice);
    v.sliceGain = gain * gain;
}

/// Plays up to `left` frames of the slice; returns how many it were.
int AudioVoices::playSlice(AudioVoice& v, int left, int at) {
    const int n = std::min(left, v.sliceLeft);
    fillScratch(v, n);
    crossScratch(v, n);
    v.pos = sourceAt(v, n);
    addScratch(v, n, at, v.sliceGain);
    v.sliceLeft -= n;
    if (v.sliceLeft == 0 && std::exchange(v.runsOut, false)) v.tail = tailFrames;
    v.fadeInPos += n;
    if (v.sliceLeft == 0 && v.fadeInPos >= v.fadeInLen) v.fadeInLen = 0;
    if (v.fadeOutPos >= 0) v.fadeOutPos += n;
    if (v.leaving > 0 && (v.leaving -= n) == 0) release(v);
    return n;
}

/// The gain of the fades, before it is squared; they cut the slice.
float AudioVoices::fadeGain(AudioVoice& v, int& slice) const {
    float gain = 1.0f;
    if (v.fadeInLen > 0) {
        slice = std::min(slice, fadeStep);
        gain *= float(v.fadeInPos) / float(v.fadeInLen);
    }
    if (v.fadeOutLen > 0 && v.fadeOutPos < 0) {
        const double left =
            v.mode == playStretch ? outputUpTo(v, v.end) : (v.end - v.pos) / v.speed;
        const int remain = asInt(left);
        if (v.fadeOutLen >= remain)
            v.fadeOutPos = v.fadeOutLen - remain;
        else if (v.fadeOutLen + slice > remain)
            slice = remain - v.fadeOutLen;
    }
    if (v.fadeOutPos >= 0) {
        slice = std::min(slice, fadeStep);
        gain *= std::max(0.0f, 1.0f - float(v.fadeOutPos) / float(v.fadeOutLen));
    }
    return gain;
}

void AudioVoices::cutAtEnd(AudioVoice& v, int& slice) const {
    if (v.mode == playStretch) {
        if (v.stretchLeft >= slice) return;
        slice = v.stretchLeft;
    } else {
        if (asInt(v.pos + slice * v.speed) <= v.stop) return;
        slice = std::max(0, asInt((v.stop - v.pos) / v.speed + speedNoise));
    }
    v.runsOut = true;
}

void AudioVoices::fillScratch(AudioVoice& v, int slice) {
    CQV* root = host();
    float* left = root->scratch().left.data();
    float* right = root->scratch().right.data();
    const ReadMode mode = root->renderMode ? ReadMode::offline : ReadMode::live;
    bool played;
    if (v.mode == playStretch) {
        const StretchSpan span{float(v.stretch), float(v.speed), v.reverse, v.start, v.end};
        played = renderStretched(*v.sample, span, v.stretchPos, v.stretcher, slice, left, right,
                                 root->scratch().source.get(), mode);
    } else {
        played =
            ::render(*v.sample, spanOf(v), slice, left, right, root->scratch().source.get(), mode);
    }
    if (played) return;
    std::fill_n(left, slice, 0.0f);
    std::fill_n(right, slice, 0.0f);
}

/// The straight line of a voice that takes the place of another, or makes room for it.
void AudioVoices::crossScratch(AudioVoice& v, int slice) {
    if (v.joining == 0 && v.leaving == 0) return;
    float* left = host()->scratch().left.data();
    float* right = host()->scratch().right.data();
    const float step = 1.0f / float(crossFrames());
    for (int i = 0; i < slice; i++) {
        const int joins = std::max(0, v.joining - i), leaves = std::max(0, v.leaving - i);
        const float gain = (1.0f - float(joins) * step) *
                           (v.leaving > 0 ? std::min(1.0f, float(leaves) * step) : 1.0f);
        left[i] *= gain;
        right[i] *= gain;
    }
    v.joining = std::max(0, v.joining - slice);
}

int AudioVoices::crossFrames() const {
    return std::max(1, asRound(double(host()->rate) * crossMs / 1000));
}

void AudioVoices::addScratch(AudioVoice& v, int slice, int at, float gain) {
    const float* left = host()->scratch().left.data();
    const float* right = host()->scratch().right.data();
    addScaled(v.out->bufL + at, left, slice, gain);
    addScaled(v.out->bufR + at, right, slice, gain);
    v.lastLeft = left[slice - 1] * gain;
    v.lastRight = right[slice - 1] * gain;
}

/// Lets the last frame die away, so that no end clicks.
int AudioVoices::playTail(AudioVoice& v, int left, int at) {
    const int slice = std::min(left, v.tail);
    for (int i = 0; i < slice; i++) {
        v.out->bufL[at + i] += v.lastLeft;
        v.out->bufR[at + i] += v.lastRight;
        v.lastLeft *= runOut;
        v.lastRight *= runOut;
    }
    v.tail -= slice;
    if (v.tail == 0) release(v);
    return slice;
}

void AudioVoices::renderDrum(AudioVoice& v, int frames, int offset, int ahead) {
    const int wait = std::min(v.delay, frames);
    v.delay -= wait;
    const int end = v.choked < 0 ? frames : std::min(frames, v.choked);
    if (v.choked >= 0 && (v.choked -= end) == 0 && end <= wait) return release(v);
    if (wait >= end) return;
    CVoice& drum = drums[&v - voices];
    if (host()->clock->begins() && wait == 0) cutVoice(&drum);
    v.sound->ahead = ahead + frames - end;
    const COutputChannel* strip = v.sound->output.get();
    float* toL = strip->bufL + offset + wait;
    float* toR = strip->bufR + offset + wait;
    const int n = end - wait;
    if (v.fadeOutLen == 0) {
        v.sound->process(toL, toR, &drum, n);
    } else {
        float* left = host()->scratch().left.data();
        float* right = host()->scratch().right.data();
        std::fill_n(left, n, 0.0f);
        std::fill_n(right, n, 0.0f);
        v.sound->process(left, right, &drum, n);
        for (int i = 0; i < n; i++, v.fadeOutPos++) {
            const float at = float(v.fadeOutPos) / float(v.fadeOutLen);
            const float gain = fLimit(1.0f - at, 0.0f, 1.0f);
            toL[i] += left[i] * gain;
            toR[i] += right[i] * gain;
        }
    }
    const bool stopped = v.fadeOutLen > 0 && v.fadeOutPos >= v.fadeOutLen;
    if (stopped || v.choked == 0 || drum.state == CVoice::free) release(v);
}

void clearDrumStrips(CTrack* track, int frames) {
    if (track->kind != trackDrum) return;
    for (auto* sound : drumSounds(*track->drumLayer())) sound->clearStrip(frames);
}

void finishDrumStrips(CTrack* track, int frames) {
    COutputChannel* out = track->output();
    if (track->kind != trackDrum || !out) return;
    for (auto* sound : drumSounds(*track->drumLayer())) {
        sound->output->processFX(nullptr, frames);
        meterPart(sound->output.get(), frames);
        sound->addStrip(out, frames);
    }
}

void AudioVoices::beginRebuild(bool keepMain) {
    for (AudioVoice& v : voices) {
        v.orphan = v.active && !v.sound && !v.flushed && v.tail == 0 && v.leaving == 0;
        if (v.orphan && keepMain && (!v.part || v.part->mainPlays(songTrack->pass)))
            v.orphan = false;
    }
}

void AudioVoices::join(VoiceStart s) {
    bool another = false;
    for (AudioVoice& v : voices) {
        if (!v.orphan || v.part != s.part) continue;
        if (plays(v, s)) {
            v.orphan = false;
            v.event = s.event;
            v.end = v.stop = asMinMax(s.end, 0, s.sample->frames - 1);
            return;
        }
        another = true;
    }
    AudioVoice* joined = add(s);
    if (joined && another) joined->joining = crossFrames();
}

void AudioVoices::endRebuild() {
    for (AudioVoice& v : voices)
        if (std::exchange(v.orphan, false)) {
            v.leaving = crossFrames();
            v.sliceLeft = std::min(v.sliceLeft, v.leaving);
        }
}

void AudioVoices::flush(int frame, bool force) {
    for (AudioVoice& v : voices) {
        if (!v.active || (v.sound && !force)) continue;
        if (v.sound) {
            if (v.fadeOutLen == 0) v.fadeOutPos = -std::max(0, frame - v.delay);
            v.fadeOutLen = drumFade;
            continue;
        }
        const double reached = sourceAt(v, std::max(0, frame - v.delay));
        v.stop = std::min(v.stop, asRound(reached));
        v.flushed = true;
        if (v.sliceLeft > 0) cutAtEnd(v, v.sliceLeft);
    }
}

void AudioVoices::drop(const CObject* object) {
    for (AudioVoice& v : voices) {
        if (!v.active) continue;
        const bool reaches = v.out == object || v.out->comp == object;
        if (v.sample == object || v.part == object || v.sound == object || reaches) release(v);
    }
}

void AudioVoices::dropAll() {
    for (AudioVoice& v : voices) release(v);
}

void AudioVoices::forgetEvents(const CPart* part) {
    for (AudioVoice& v : voices)
        if (v.part == part) v.event = nullptr;
}

bool AudioVoices::sounding() const {
    return std::any_of(voices, voices + count, [](const AudioVoice& v) { return v.active; });
}

void feedDrums(CTrack* track, int bus, CInputChannel* to, int frames) {
    const COutputChannel* out = track->output();
    if (track->kind != trackDrum || !out) return;
    for (auto* sound : drumSounds(*track->drumLayer())) feedDrum(sound, out, bus, to, frames);
}
