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
        voices[count++] = {v, lanes, stereo};
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
        StripRamps ramps;
        ramps.begin(v, plan, n);
        setLevels(lv, n);
        setPitches(lv);
        v->first = false;
        s.strip.setSlice(lv.lane, ramps, true, !lv.stereo);
        if (lv.stereo) {
            s.strip.setSlice(lv.lane + 1, ramps, false, true);
        } else {
            s.strip.gainR[lv.lane] *= plan.inv;
            s.strip.gainRStep[lv.lane] *= plan.inv;
        }
        return true;
    }

    Ramp level(float& value, int target, const CVoice* v, int n) const {
        const float x = fLimit(v->sound->cur[target], -mostOperatorLevel, mostOperatorLevel);
        return rampTo(value, x * x, plan, v->first, n);
    }

    void setLevels(const LaneVoice& lv, int n) {
        CVoice* v = lv.voice;
        const Ramp feed1 = level(v->feed1Sq, targetFeed1, v, n);
        const Ramp feed2 = level(v->feed2Sq, targetFeed2, v, n);
        const Ramp phaseMod = level(v->phaseModSq, targetPhaseMod, v, n);
        const double depth = plan.pmMul * OscLanes::cycle;
        const int end = lv.lane + (lv.stereo ? 2 : 1);
        for (int lane = lv.lane; lane < end; lane++) {
            s.feed1[lane] = double(feed1.value) * feedbackDepth;
            s.feed1Step[lane] = double(feed1.step) * feedbackDepth;
            s.feed2[lane] = double(feed2.value) * feedbackDepth;
            s.feed2Step[lane] = double(feed2.step) * feedbackDepth;
            s.phaseMod[lane] = double(phaseMod.value) * depth;
            s.phaseModStep[lane] = double(phaseMod.step) * depth;
        }
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
        plan.advance(lv.voice, lv.slice);
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
        runBatch(*this, frames);
        for (int i = 0; i < count; i++) {
            CVoice& v = *voices[i].voice;
            storeOperators(voices[i].lane, v.carL, v.modL);
            s.strip.store(voices[i].lane, v, 0);
            const bool stereo = voices[i].stereo;
            const int rightLane = voices[i].lane + (stereo ? 1 : 0);
            storeOperators(rightLane, v.carR, v.modR);
            s.strip.store(rightLane, v, 1, stereo ? 1.0f : plan.inv);
            guardVoice(&v);
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

/// Spends the rest of its release, without a sound.
void passRest(CVoice* v, int frames) {
    CEnvStage& amp = v->stages[0];
    if (!amp.active) return;
    amp.remaining -= frames;
    if (amp.remaining > 0) return;
    v->mods[0]->next(&amp);
    startTail(v);
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
    CVoice* heard[CSampler::voiceCount];
    int n = 0;
    const bool mayRest = canRest(*this);
    for (int i = 0; i < count; i++) {
        if (mayRest && atRest(*voices[i]))
            passRest(voices[i], frames);
        else
            heard[n++] = voices[i];
    }
    eachLive(heard, n, frames,
             [&](CVoice** live, int k) { renderLive(live, k, left, right, frames); });
}

void COSCSound::renderLive(CVoice** voices, int count, float* left, float* right, int frames) {
    const OscPlan plan(this, voices[0]);
    bool stereo[maxBatchVoices];
    for (int i = 0; i < count; i++) stereo[i] = !channelsEqual(*voices[i], plan);
    OscBatch batch(plan, *this, left, right);
    for (const bool pass : {true, false}) {
        for (int i = 0; i < count; i++) {
            if (stereo[i] != pass) continue;
            if (batch.lanes + (pass ? 2 : 1) > maxLanes) batch.flush(this, frames);
            batch.add(voices[i], pass);
        }
    }
    batch.flush(this, frames);
}
