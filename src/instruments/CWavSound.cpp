#include "instruments/CWavSound.h"

#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "instruments/CSampleClip.h"
#include "instruments/WavLanes.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double slowest = 1.0 / 4096, fastest = 4096.0; ///< frames of the clip per frame

/// What follows a slice.
enum class Ending { none, stop, jump };

/// Up to eight lanes of voices of one sound.
struct WavBatch {
    const SlicePlan& plan;
    double tuning; ///< semitones
    float* left;
    float* right;
    LaneVoice voices[maxLanes];
    Ending endings[maxLanes] = {};
    bool jumped[maxLanes] = {}; ///< to the loop's start, with no frame since
    int count = 0;
    int lanes = 0;
    int frame = 0; ///< where the batch stands in the call
    WavLanes s;

    WavBatch(const SlicePlan& p, const CWavSound& sound, float* l, float* r)
        : plan(p), tuning(double(float(sound.coarse)) + double(float(sound.fine))), left(l),
          right(r) {}

    void add(CVoice* v, bool stereo) {
        jumped[count] = false;
        voices[count++] = {v, lanes, stereo};
        s.strip.load(lanes++, *v, 0);
        if (stereo) s.strip.load(lanes++, *v, 1);
    }

    /// Cuts a slice at the end of the clip, by the speed of the slice before.
    static Ending cutToEnd(const CVoice& v, int& n) {
        if (asInt(v.pos + n * v.speed) <= v.end) return Ending::none;
        n = std::max(0, asInt((v.end - v.pos) / v.speed));
        const bool loops = v.clip->loop == loopForward && v.clip->loopStart < v.end;
        return loops ? Ending::jump : Ending::stop;
    }

    static bool stop(CVoice* v) {
        v->state = CVoice::free;
        return false;
    }

    bool beginSlice(LaneVoice& lv, int most) {
        CVoice* v = lv.voice;
        const auto i = &lv - voices;
        for (;;) {
            if (!std::isfinite(v->pos)) return stop(v);
            int n = plan.begin(v, std::min(most, plan.sliceMax));
            endings[i] = cutToEnd(*v, n);
            plan.modulate(v, n);
            if (n > 0) {
                lv.slice = n;
                jumped[i] = false;
                startSlice(lv);
                return true;
            }
            plan.advance(v, 0);
            if (!follow(i)) return false;
        }
    }

    /// Does what its ending asks of a voice; false when it has ended.
    bool follow(std::ptrdiff_t i) {
        CVoice* v = voices[i].voice;
        if (endings[i] == Ending::none) return true;
        if (endings[i] == Ending::stop || jumped[i]) return stop(v);
        v->pos = v->clip->loopStart;
        jumped[i] = true;
        return true;
    }

    void startSlice(LaneVoice& lv) {
        CVoice* v = lv.voice;
        StripRamps ramps;
        ramps.begin(v, plan, lv.slice);
        v->first = false;
        s.strip.setSlice(lv.lane, ramps, true, !lv.stereo);
        if (lv.stereo) s.strip.setSlice(lv.lane + 1, ramps, false, true);

        const int keyOffset = v->note > -1 ? v->note - v->clip->orgKey : 0;
        const double semitones = double(v->sound->cur[targetPitch]) + keyOffset +
                                 double(v->pitch - float(v->note)) + tuning;
        v->speed = fLimit(pitchRatio(semitones) * double(v->sourceRatio), slowest, fastest);
        float l[SlicePlan::longest], r[SlicePlan::longest];
        const int sides = renderMemory(*v->clip, v->pos, v->speed, lv.slice, l, r);
        if (sides < 1) std::fill_n(l, lv.slice, 0.0f);
        s.put(lv.lane, frame, l, lv.slice);
        if (lv.stereo) s.put(lv.lane + 1, frame, sides == 2 ? r : l, lv.slice);
        v->pos += lv.slice * v->speed;
    }

    bool endSlice(LaneVoice& lv) {
        plan.advance(lv.voice, lv.slice);
        return follow(&lv - voices);
    }

    void run(int from, int n) {
        s.run(lanes, from, left, right, n);
        frame = from + n;
    }

    /// Renders what was added and empties the batch.
    void flush(CSound* sound, int frames) {
        frame = 0;
        runBatch(*this, frames);
        for (int i = 0; i < count; i++) {
            CVoice& v = *voices[i].voice;
            s.strip.store(voices[i].lane, v, 0);
            s.strip.store(voices[i].lane + (voices[i].stereo ? 1 : 0), v, 1);
            guardVoice(&v);
        }
        s.strip.meter(sound);
        for (int lane = 0; lane < lanes; lane++) s.strip.mute(lane);
        count = lanes = 0;
    }
};

void hold(Shared<float>& highest, Shared<float>& peak) {
    if (peak > highest) highest = float(peak);
    if (peak > 1.0f) peak = 1.0f;
}

} // namespace

CWavSound::CWavSound(CLayer* owner, CQV* host) : CSound(owner, host) {
    type = typeWavSound;
}

void CWavSound::addSample(CSampleClip* clip) {
    if (clipCount >= maxClips) return;
    if (clipCount == 0) id = extractFileName(clip->filename);
    clips[clipCount++] = clip;
}

void CWavSound::startVoice(CVoice* v) {
    v->clip = clips[0];
    v->stretchFrame = 0;
    v->start = v->clip->start;
    v->end = v->clip->end;
    v->pos = v->start;
    v->speed = 1.0;
    v->sourceRatio = v->clip->rate / v->rate;
}

void CWavSound::process(float* left, float* right, CVoice* voice, int frames) {
    processVoices(&voice, 1, left, right, frames);
}

void CWavSound::processVoices(CVoice** voices, int count, float* left, float* right, int frames) {
    eachLive(voices, count, frames,
             [&](CVoice** live, int n) { renderLive(live, n, left, right, frames); });
    hold(holdL, peakL);
    hold(holdR, peakR);
}

void CWavSound::renderLive(CVoice** voices, int count, float* left, float* right, int frames) {
    const SlicePlan plan(this, voices[0], 1.0f, true);
    WavBatch batch(plan, *this, left, right);
    for (const bool stereo : {true, false}) {
        for (int i = 0; i < count; i++) {
            CVoice* v = voices[i];
            if ((v->clip->chs == 2) != stereo) continue;
            if (batch.lanes + (stereo ? 2 : 1) > maxLanes) batch.flush(this, frames);
            batch.add(v, stereo);
        }
    }
    batch.flush(this, frames);
}
