#include "sequencer/AudioVoices.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Mixing.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CVoice.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipTimes.h"
#include "sequencer/TempoMap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double semitonesPerOctave = 12.0;
constexpr double slowest = 1.0 / 1024, fastest = 1024.0; ///< source frames per output frame
constexpr double fadeRate = 44.1; ///< frames of a fade's millisecond, at any rate
constexpr float runOut = 0.999f;  ///< of the last frame, frame by frame
constexpr int drumFade = 256;     ///< frames in which a drum is silenced

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
    if (v.event->fadeInMs > 0.0f) v.fadeInLen = asRound(double(v.event->fadeInMs) * fadeRate);
    if (v.event->fadeOutMs > 0.0f) v.fadeOutLen = asRound(double(v.event->fadeOutMs) * fadeRate);
    v.fadeInPos = asInt(v.pos - v.start);
    if (v.fadeInPos >= v.fadeInLen) v.fadeInLen = 0;
}

SampleSpan spanOf(const AudioVoice& v) {
    return {v.pos, v.speed, v.reverse, v.start, v.end};
}

/// Source frame that is reached `frames` further on.
double sourceAt(const AudioVoice& v, double frames) {
    return v.pos + (v.mode == playStretch ? frames / v.stretch : frames * v.speed);
}

/// The sends of a drum's strip, at the level of the track that it belongs to.
void feedSends(CDrumSound* sound, const COutputChannel* track, int frames, CQV* host) {
    const float trim = track->trim;
    const float share = float(track->vol) * (trim != 0.0f ? std::pow(4.0f, trim) : 1.0f);
    CListItem* it = nullptr;
    for (const CSend* send : sound->output->sendLevels) {
        auto* bus = static_cast<CComp*>(host->sends.next2(&it));
        if (!bus) return;
        const CInputChannel* in = bus->input();
        const float level = send->level;
        if (!in || send->muted || level == 0.0f) continue;
        addScaled(in->bufL, sound->output->bufL, frames, level * level * share);
        addScaled(in->bufR, sound->output->bufR, frames, level * level * share);
    }
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

/// A free slot; for a choke group the one that it holds, else the last free one.
AudioVoice* AudioVoices::findSlot(unsigned char group) {
    AudioVoice* found = nullptr;
    for (AudioVoice& v : voices) {
        if (group && v.active && v.group == group) return &v;
        if (v.active) continue;
        found = &v;
        if (!group) break;
    }
    return found;
}

AudioVoice* AudioVoices::add(const VoiceStart& s) {
    if (!s.sample || !s.sample->valid || !s.out) return nullptr;
    if (s.sound && !drums) return nullptr;
    AudioVoice fresh;
    if (!place(fresh, s)) return nullptr;
    AudioVoice* v = findSlot(s.group);
    if (!v) return nullptr;
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
    v.end = asMinMax(s.end, 0, last);
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
    refresh(v);
    v.pos = v.start;
    if (s.into > 0.0 && v.mode != playRepitch) {
        v.pos += s.into / s.ticks * (length + 1.0);
    } else if (s.into > 0.0) {
        const int from = asInt(s.songPos - s.into), sourceRate = tunedRate(s.sample, v.pitch);
        v.pos += songTrack->track->seq->ticksToFrames(from, asInt(s.into), sourceRate);
    }
    return v.pos <= v.end;
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
        for (auto* stretcher : each<CElastiqueRender>(host()->stretchers)) {
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
    v.active = false;
}

/// Pitch and speed as event and tempo have them now.
void AudioVoices::refresh(AudioVoice& v) const {
    const double tempo = double(host()->tempoNow);
    if (v.event) v.pitch = v.event->semitones + double(v.event->fine);
    if (v.mode == playResample) {
        v.speed = speedLimit(tempo * v.tempoSpeed);
        return;
    }
    v.speed = speedLimit(ratio(v.pitch) * v.rate);
    if (v.mode != playStretch) return;
    if (v.sample->fixedPitch) v.speed = 1.0;
    v.stretch = 1.0 / speedLimit(tempo * v.tempoSpeed);
    v.stretchLeft = std::max(0, asInt((v.end - v.pos) * v.stretch));
}

void AudioVoices::render(int frames, int offset) {
    for (AudioVoice& v : voices)
        if (v.active && !v.sound) renderVoice(v, frames, offset);
    if (!drums) return;
    for (auto* sound : each<CDrumSound>(songTrack->track->drumLayer()->sounds))
        sound->clearStrip(frames);
    for (AudioVoice& v : voices)
        if (v.active && v.sound) renderDrum(v, frames, offset);
    finishDrums(frames);
}

void AudioVoices::renderVoice(AudioVoice& v, int frames, int offset) {
    int done = std::min(v.delay, frames);
    v.delay -= done;
    while (done < frames && v.active) {
        const int left = frames - done, at = offset + done;
        done += v.tail > 0 ? playTail(v, left, at) : playSlice(v, left, at);
    }
}

/// Plays up to `left` frames at one gain; returns how many it were.
int AudioVoices::playSlice(AudioVoice& v, int left, int at) {
    int slice = left;
    refresh(v);
    const float gain = fadeGain(v, slice);
    cutAtEnd(v, slice);
    if (slice < 1) return 0;
    fillScratch(v, slice);
    v.pos = sourceAt(v, slice);
    addScratch(v, slice, at, gain * gain);
    v.fadeInPos += slice;
    if (v.fadeInPos >= v.fadeInLen) v.fadeInLen = 0;
    if (v.fadeOutPos >= 0) v.fadeOutPos += slice;
    return slice;
}

/// The gain of the fades, before it is squared; they cut the slice.
float AudioVoices::fadeGain(AudioVoice& v, int& slice) const {
    float gain = 1.0f;
    if (v.fadeInLen > 0) {
        slice = std::min(slice, fadeStep);
        gain *= float(v.fadeInPos) / float(v.fadeInLen);
    }
    if (v.fadeOutLen > 0 && v.fadeOutPos < 0) {
        const double source = v.end - v.pos;
        const int remain = asInt(v.mode == playStretch ? source * v.stretch : source / v.speed);
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
        if (asInt(v.pos + slice * v.speed) <= v.end) return;
        slice = std::max(0, asInt((v.end - v.pos) / v.speed));
    }
    v.tail = tailFrames;
}

void AudioVoices::fillScratch(AudioVoice& v, int slice) {
    CQV* root = host();
    float* left = root->tmpBuffers[0];
    float* right = root->tmpBuffers[1];
    const ReadMode mode = root->renderMode ? ReadMode::offline : ReadMode::live;
    bool played;
    if (v.mode == playStretch) {
        const StretchSpan span{float(v.stretch), float(v.speed), v.reverse, v.start, v.end};
        played = renderStretched(*v.sample, span, v.stretchPos, v.stretcher, slice, left, right,
                                 root->sampleScratch.get(), mode);
    } else {
        played =
            ::render(*v.sample, spanOf(v), slice, left, right, root->sampleScratch.get(), mode);
    }
    if (played) return;
    std::fill_n(left, slice, 0.0f);
    std::fill_n(right, slice, 0.0f);
}

void AudioVoices::addScratch(AudioVoice& v, int slice, int at, float gain) {
    const float* left = host()->tmpBuffers[0];
    const float* right = host()->tmpBuffers[1];
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

void AudioVoices::renderDrum(AudioVoice& v, int frames, int offset) {
    const int wait = std::min(v.delay, frames);
    v.delay -= wait;
    if (wait == frames) return;
    CVoice& drum = drums[&v - voices];
    const COutputChannel* strip = v.sound->output.get();
    float* toL = strip->bufL + offset + wait;
    float* toR = strip->bufR + offset + wait;
    const int n = frames - wait;
    if (v.fadeOutLen == 0) {
        v.sound->process(toL, toR, &drum, n);
    } else {
        float* left = host()->tmpBuffers[0];
        float* right = host()->tmpBuffers[1];
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
    if (stopped || drum.state == CVoice::free) release(v);
}

/// The strips of the drums, into the sends and the track.
void AudioVoices::finishDrums(int frames) {
    COutputChannel* out = songTrack->track->output();
    if (!out) return;
    for (auto* sound : each<CDrumSound>(songTrack->track->drumLayer()->sounds)) {
        sound->output->processFX(nullptr, frames);
        feedSends(sound, out, frames, host());
        sound->addStrip(out, frames);
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
        v.end = std::min(v.end, asRound(reached));
    }
}

void AudioVoices::drop(const CObject* object) {
    for (AudioVoice& v : voices)
        if (v.active &&
            (v.sample == object || v.part == object || v.sound == object || v.out == object))
            release(v);
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
