#include "instruments/COSCSound.h"

#include "base/Numbers.h"
#include "common/WaveTables.h"
#include "instruments/CSampler.h"
#include "instruments/OscLanes.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double feedbackDepth = 0.2 * OscLanes::cycle; ///< of full feedback
constexpr double lowestHz = 13.75;                      ///< of the note 9 semitones up
constexpr double lowestNote = 9.0;
constexpr float mostOperatorLevel = 5.6f; ///< far beyond what the controls give
constexpr float sameFilter = 1e-9f;       ///< filters that differ by less sound alike

/// Settings of a sound for one call.
struct OscPlan : SlicePlan {
    double tuning, coarse2;
    int pmMul;
    float width;
    float inv; ///< +1 or -1: sign of the right pair

    OscPlan(COSCSound* s, const CVoice* any) : SlicePlan(s, any, COSCSound::ownGain, false) {
        base[targetFeed1] = s->feed1;
        base[targetFeed2] = s->feed2;
        base[targetPhaseMod] = s->phaseMod;
        base[targetDetune] = s->detune * s->detune * 0.5f;
        tuning = double(float(s->coarse)) + double(float(s->fine)) - lowestNote;
        coarse2 = double(float(s->coarse2));
        pmMul = asMinMax(s->pmMul, 1, COSCSound::maxPmMul);
        width = fLimit(s->width, 0.0f, 1.0f);
        inv = s->oscInv < 0.0f ? -1.0f : 1.0f;
    }
};

bool sameOperators(const COscState& a, const COscState& b) {
    return a.phase == b.phase && a.last == b.last;
}

/// Whether left and right of a voice are, and stay, the same signal but for the sign.
bool channelsEqual(const CVoice& v, const OscPlan& plan) {
    if (plan.base[targetDetune] != 0.0f) return false;
    if (!sameOperators(v.carL, v.carR) || !sameOperators(v.modL, v.modR)) return false;
    for (int i = 0; i < CVoice::rightSvf; i++)
        if (!(std::fabs(v.svf[i] - plan.inv * v.svf[CVoice::rightSvf + i]) < sameFilter))
            return false;
    return v.outR - v.outL == CVoice::rightSvf;
}

void tune(COscState& osc, double semitones, const CVoice& v) {
    if (osc.pitch == semitones) return;
    osc.pitch = semitones;
    osc.incr = pitchRatio(semitones) * lowestHz / double(v.rate);
}

/// Up to eight lanes of voices of one sound.
struct OscBatch {
    const OscPlan& plan;
    float* left;
    float* right;
    LaneVoice voices[maxLanes];
    int count = 0;
    int lanes = 0; ///< in use
    OscLanes s;

    OscBatch(const OscPlan& p, const COSCSound& sound, float* l, float* r)
        : plan(p), left(l), right(r) {
        s.modRing = double(fLimit(sound.modRing, 0.0f, 1.0f));
        s.oscRing = double(fLimit(sound.oscRing, 0.0f, 1.0f));
        s.dist = sound.dist != 0;
    }

    void add(CVoice* v, bool stereo) {
        if (v->state != CVoice::sounding) return leaveEmpty(stereo ? 2 : 1);
        LaneVoice& lv = voices[count++] = {v, lanes, stereo};
        loadOperators(lanes, v->carL, v->modL);
        s.strip.load(lanes, *v, 0);
        if (stereo) {
            s.direct[lanes] = (1.0f + plan.width) * 0.5f;
            s.cross[lanes] = plan.inv * (1.0f - plan.width) * 0.5f;
            lanes++;
            loadOperators(lanes, v->carR, v->modR);
            s.strip.load(lanes, *v, 1);
            s.direct[lanes] = plan.inv * (1.0f + plan.width) * 0.5f;
            s.cross[lanes] = (1.0f - plan.width) * 0.5f;
        } else {
            s.direct[lanes] = plan.inv < 0.0f ? plan.width : 1.0f;
            s.cross[lanes] = 0.0f;
        }
        lanes++;
        if (v->held.left > 0) resume(lv);
    }

    void leaveEmpty(int width) {
        for (; width > 0; width--) s.strip.leaveEmpty(lanes++);
    }

    void loadOperators(int lane, const COscState& car, const COscState& mod) {
        s.carPhase[lane] = car.phase;
        s.carLast[lane] = car.last;
        s.modPhase[lane] = mod.phase;
        s.modLast[lane] = mod.last;
    }

    bool beginSlice(LaneVoice& lv, int most) {
        CVoice* v = lv.voice;
        int n = 0;
        for (;;) {
            n = plan.begin(v, std::min(most, plan.sliceMax));
            plan.modulate(v, n);
            if (n > 0) break;
            plan.advance(v, 0);
        }
        lv.slice = n;
        for (int lane = lv.lane; lane <= lv.rightLane(); lane++) s.setBack(lane);
        setStrip(lv, stripRamps(v, plan, n));
        HeldSlice& held = v->held;
        held.feed1 = level(v->feed1Sq, targetFeed1, v, n);
        held.feed2 = level(v->feed2Sq, targetFeed2, v, n);
        held.phaseMod = level(v->phaseModSq, targetPhaseMod, v, n);
        setLevels(lv);
        setPitches(lv);
        v->first = false;
        return true;
    }

    void setStrip(const LaneVoice& lv, const StripRamps& ramps) {
        s.strip.setSlice(lv.lane, ramps, true, !lv.stereo);
        if (lv.stereo) {
            s.strip.setSlice(lv.lane + 1, ramps, false, true);
        } else {
            s.strip.gainR[lv.lane] *= plan.inv;
            s.strip.gainRStep[lv.lane] *= plan.inv;
        }
    }

    Ramp level(float& value, int target, const CVoice* v, int n) const {
        const float x = fLimit(v->sound->cur[target], -mostOperatorLevel, mostOperatorLevel);
        return rampTo(value, x * x, plan, v->first, n);
    }

    void setLevels(const LaneVoice& lv) {
        const HeldSlice& held = lv.voice->held;
        const double depth = plan.pmMul * OscLanes::cycle;
        for (int lane = lv.lane; lane <= lv.rightLane(); lane++) {
            s.feed1[lane] = double(held.feed1.value) * feedbackDepth;
            s.feed1Step[lane] = double(held.feed1.step) * feedbackDepth;
            s.feed2[lane] = double(held.feed2.value) * feedbackDepth;
            s.feed2Step[lane] = double(held.feed2.step) * feedbackDepth;
            s.phaseMod[lane] = double(held.phaseMod.value) * depth;
            s.phaseModStep[lane] = double(held.phaseMod.step) * depth;
        }
    }

    /// Goes on with a slice that the end of a call has cut off.
    void resume(LaneVoice& lv) {
        const CVoice* v = lv.voice;
        const HeldSlice& held = v->held;
        lv.slice = held.frames;
        lv.left = held.left;
        setStrip(lv, held.strip);
        setLevels(lv);
        for (int lane = lv.lane; lane <= lv.rightLane(); lane++) {
            s.strip.at[lane] = float(held.frames - held.left);
            s.feed1[lane] = held.feed1Now;
            s.feed2[lane] = held.feed2Now;
            s.phaseMod[lane] = held.modNow;
        }
        s.carIncr[lv.lane] = v->carL.incr;
        s.modIncr[lv.lane] = v->modL.incr;
        if (!lv.stereo) return;
        s.carIncr[lv.lane + 1] = v->carR.incr;
        s.modIncr[lv.lane + 1] = v->modR.incr;
    }

    /// Keeps what is left of a slice for the next call.
    void hold(const LaneVoice& lv) const {
        HeldSlice& held = lv.voice->held;
        held.frames = lv.slice;
        held.strip = s.strip.slice(lv.lane, lv.rightLane());
        if (!lv.stereo) {
            held.strip.gainR.value *= plan.inv;
            held.strip.gainR.step *= plan.inv;
        }
        held.feed1Now = s.feed1[lv.lane];
        held.feed2Now = s.feed2[lv.lane];
        held.modNow = s.phaseMod[lv.lane];
    }

    void setPitches(const LaneVoice& lv) {
        CVoice* v = lv.voice;
        const float* cur = v->sound->cur;
        const double p = double(cur[targetPitch]) + double(v->stages[pitchEnvIndex].value) +
                         double(v->pitch) + plan.tuning;
        const double apart = double(cur[targetDetune]);
        tune(v->carL, p + apart, *v);
        tune(v->modL, p + apart + plan.coarse2, *v);
        s.carIncr[lv.lane] = v->carL.incr;
        s.modIncr[lv.lane] = v->modL.incr;
        if (!lv.stereo) return;
        tune(v->carR, p - apart, *v);
        tune(v->modR, p - apart + plan.coarse2, *v);
        s.carIncr[lv.lane + 1] = v->carR.incr;
        s.modIncr[lv.lane + 1] = v->modR.incr;
    }

    bool endSlice(LaneVoice& lv) {
        SlicePlan::advance(lv.voice, lv.slice);
        return true;
    }

    void run(int from, int n) { s.run(lanes, left + from, right + from, n); }

    void storeOperators(int lane, COscState& car, COscState& mod) const {
        car.phase = s.carPhase[lane];
        car.last = s.carLast[lane];
        mod.phase = s.modPhase[lane];
        mod.last = s.modLast[lane];
    }

    /// Renders what was added and empties the batch.
    void flush(CSound* sound, int frames) {
        runBatch(*this, frames, sound->ahead);
        for (int i = 0; i < count; i++) {
            CVoice& v = *voices[i].voice;
            const int rightLane = voices[i].rightLane();
            storeOperators(voices[i].lane, v.carL, v.modL);
            s.strip.store(voices[i].lane, v, 0);
            storeOperators(rightLane, v.carR, v.modR);
            s.strip.store(rightLane, v, 1, voices[i].stereo ? 1.0f : plan.inv);
            v.held.left = voices[i].alive ? voices[i].left : 0;
            if (v.held.left > 0) hold(voices[i]);
            if (sound->ahead == 0) guardVoice(&v);
        }
        s.strip.meter(sound);
        for (int lane = 0; lane < lanes; lane++) s.strip.mute(lane);
        count = lanes = 0;
    }
};

/// Whether the amp envelope alone decides if a voice is heard, and nothing else of a voice that is
/// not heard matters to others.
bool canRest(const COSCSound& s) {
    const CMod::Param& amp = s.envelope[0]->params[0];
    if (amp.index != targetVolume || amp.amount != 1.0f) return false;
    return std::none_of(std::begin(s.lfo), std::end(s.lfo),
                        [](const auto& l) { return l->restart == restartMono; });
}

/// A note that has died away before its key or its release came to an end.
bool atRest(const CVoice& v) {
    const CEnvStage& amp = v.stages[0];
    return v.live() && !v.first && v.gainL == 0.0f && v.gainR == 0.0f &&
           amp.stage >= phaseSustain && amp.value == 0.0f && amp.to == 0.0f;
}

} // namespace

COSCSound::COSCSound(CLayer* owner, CQV* host) : CSound(owner, host) {
    id = "synth";
    type = typeOscSound;
}

void COSCSound::startVoice(CVoice* voice) {
    const double right = double(fLimit(phase, 0.0f, 1.0f)) * 0.5;
    voice->carL.start(0.0);
    voice->carR.start(right);
    voice->modL.start(0.0);
    voice->modR.start(right + double(fLimit(phase2, 0.0f, 1.0f)) * 0.5);
}

Stored<float>* COSCSound::target(int number) {
    switch (number) {
    case targetFeed1:
        return &feed1;
    case targetFeed2:
        return &feed2;
    case targetPhaseMod:
        return &phaseMod;
    case targetDetune:
        return &detune;
    default:
        return CSound::target(number);
    }
}

void COSCSound::process(float* left, float* right, CVoice* voice, int frames) {
    processVoices(&voice, 1, left, right, frames);
}

void COSCSound::processVoices(CVoice** voices, int count, float* left, float* right, int frames) {
    const bool mayRest = canRest(*this);
    eachSeated(
        voices, count, frames, [&](const CVoice& v) { return mayRest && atRest(v); },
        [&](CVoice** seated, int n) { renderSeated(seated, n, left, right, frames); });
}

void COSCSound::renderSeated(CVoice** voices, int count, float* left, float* right, int frames) {
    const OscPlan plan(this, voices[0]);
    for (int i = 0; i < count; i++)
        if (voices[i]->seat == Seat::none)
            voices[i]->seat = channelsEqual(*voices[i], plan) ? Seat::mono : Seat::stereo;
    OscBatch batch(plan, *this, left, right);
    for (const Seat seat : {Seat::stereo, Seat::mono}) {
        const bool stereo = seat == Seat::stereo;
        for (int i = 0; i < count; i++) {
            if (voices[i]->seat != seat) continue;
            if (batch.lanes + (stereo ? 2 : 1) > maxLanes) batch.flush(this, frames);
            batch.add(voices[i], stereo);
        }
    }
    batch.flush(this, frames);
}
