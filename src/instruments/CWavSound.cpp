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
        if (v->state != CVoice::sounding) return leaveEmpty(stereo ? 2 : 1);
        jumped[count] = false;
        LaneVoice& lv = voices[count++] = {v, lanes, stereo};
        s.strip.load(lanes++, *v, 0);
        if (stereo) s.strip.load(lanes++, *v, 1);
        if (v->held.left > 0) resume(lv);
    }

    void leaveEmpty(int width) {
        for (; width > 0; width--) s.strip.leaveEmpty(lanes++);
    }

    /// Goes on with a slice that the end of a call has cut off.
    void resume(LaneVoice& lv) {
        const CVoice* v = lv.voice;
        const HeldSlice& held = v->held;
        lv.slice = held.frames;
        lv.left = held.left;
        endings[&lv - voices] = held.ends ? Ending::stop : held.jumps ? Ending::jump : Ending::none;
        setStrip(lv, held.strip);
        for (int lane = lv.lane; lane <= lv.rightLane(); lane++)
            s.strip.at[lane] = float(held.frames - held.left);
        read(lv, v->pos - held.left * v->speed, held.left);
    }

    /// Keeps what is left of a slice for the next call.
    void hold(const LaneVoice& lv) const {
        HeldSlice& held = lv.voice->held;
        const Ending ending = endings[&lv - voices];
        held.frames = lv.slice;
        held.ends = ending == Ending::stop;
        held.jumps = ending == Ending::jump;
        held.strip = s.strip.slice(lv.lane, lv.rightLane());
    }

    void setStrip(const LaneVoice& lv, const StripRamps& ramps) {
        s.strip.setSlice(lv.lane, ramps, true, !lv.stereo);
        if (lv.stereo) s.strip.setSlice(lv.lane + 1, ramps, false, true);
    }

    /// Brings `n` frames of the clip into the lanes.
    void read(const LaneVoice& lv, double pos, int n) {
        const CVoice* v = lv.voice;
        float l[SlicePlan::longest], r[SlicePlan::longest];
        const int sides = renderMemory(*v->clip, pos, v->speed, n, l, r);
        if (sides < 1) std::fill_n(l, n, 0.0f);
        s.put(lv.lane, frame, l, n);
        if (lv.stereo) s.put(lv.lane + 1, frame, sides == 2 ? r : l, n);
    }

    /// Cuts a slice at the end of the clip, by the speed of the slice before.
    static Ending cutToEnd(const CVoice& v, int& n) {
        if (asInt(v.pos + n * v.speed) <= v.end) return Ending::none;
        n = std::max(0, asInt((v.end - v.pos) / v.speed));
        const bool loops = v.clip->loop == loopForward && v.clip->loopStart < v.end;
        return loops ? Ending::jump : Ending::stop;
    }

    static bool stop(CVoice* v) {
        v->state = CVoice::free; // the seat stays
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
        setStrip(lv, stripRamps(v, plan, lv.slice));
        v->first = false;
        const int keyOffset = v->note > -1 ? v->note - v->clip->orgKey : 0;
        const double semitones = double(v->sound->cur[targetPitch]) + keyOffset +
                                 double(v->pitch - float(v->note)) + tuning;
        const double ratio = pitchRatio(semitones) * double(v->sourceRatio);
        v->speed = wholeSteps(fLimit(ratio, slowest, fastest), v->clip->frames);
        v->pos = wholeSteps(v->pos, v->clip->frames);
        read(lv, v->pos, lv.slice);
        v->pos += lv.slice * v->speed;
    }

    bool endSlice(LaneVoice& lv) {
        plan.fade(lv.voice);
        SlicePlan::advance(lv.voice, lv.slice);
        return follow(&lv - voices);
    }

    void run(int from, int n) {
        s.run(lanes, from, left, right, n);
        frame = from + n;
    }

    /// Renders what was added and empties the batch.
    void flush(CSound* sound, int frames) {
        frame = 0;
        runBatch(*this, frames, sound->ahead);
        for (int i = 0; i < count; i++) {
            CVoice& v = *voices[i].voice;
            s.strip.store(voices[i].lane, v, 0);
            s.strip.store(voices[i].rightLane(), v, 1);
            v.held.left = voices[i].alive ? voices[i].left : 0;
            if (v.held.left > 0) hold(voices[i]);
            if (sound->ahead == 0) guardVoice(&v);
        }
        s.strip.meter(sound);
        for (int lane = 0; lane < lanes; lane++) s.strip.mute(lane);
        count = lanes = 0;
    }
};

void raise(Shared<float>& highest, Shared<float>& peak) {
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
    eachSeated(
        voices, count, frames, [](const CVoice&) { return false; },
        [&](CVoice** seated, int n) { renderSeated(seated, n, left, right, frames); });
    raise(holdL, peakL);
    raise(holdR, peakR);
}

void CWavSound::renderSeated(CVoice** voices, int count, float* left, float* right, int frames) {
    const SlicePlan plan(this, voices[0], 1.0f, true);
    WavBatch batch(plan, *this, left, right);
    for (const Seat seat : {Seat::stereo, Seat::mono}) {
        const bool stereo = seat == Seat::stereo;
        for (int i = 0; i < count; i++) {
            CVoice* v = voices[i];
            if (v->seat == Seat::none) v->seat = v->clip->chs == 2 ? Seat::stereo : Seat::mono;
            if (v->seat != seat) continue;
            if (batch.lanes + (stereo ? 2 : 1) > maxLanes) batch.flush(this, frames);
            batch.add(v, stereo);
        }
    }
    batch.flush(this, frames);
}
