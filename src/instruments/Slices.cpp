#include "instruments/Slices.h"

#include "base/Numbers.h"
#include "common/Curves.h"
#include "engine/CQV.h"
#include "instruments/CSynthProg.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace {

constexpr int tableMask = 0xFFFF;
constexpr double tableSteps = 65535.0;
constexpr double cutoffRate = 44100.0; ///< at which a cutoff is the root of the coefficient
constexpr float qMax = 0.97f;
constexpr double tailSeconds = 0.01;
constexpr double maxSemitones = 240.0;
constexpr float mostGain = 16.0f; ///< far beyond what the controls give
constexpr float denormal = 1e-10f;
constexpr float inaudible = 1e-5f; ///< gain
constexpr int farWrap = 1 << 30;   ///< beyond any slice

/// Place of a phase in a table: rounded, modulo its length; a phase stays within -1 to 2.
int tableIndex(double phase) {
    constexpr double lift = 65536.0; // keeps the number positive, so that truncation rounds down
    return int(int64_t(phase * tableSteps + (lift + 0.5)) & tableMask);
}

/// The value of an envelope `n` frames on.
void follow(CEnvStage& s, int n) {
    if (s.active && s.total > 0)
        s.value =
            curvePoint(s.from, s.to, float(s.total - s.remaining + n) / float(s.total), s.bend());
}

void flush(float& v) {
    if (std::fabs(v) < denormal) v = 0.0f;
}

} // namespace

SlicePlan::SlicePlan(CSound* s, const CVoice* any, float gain, bool wholeWraps)
    : sound(s), truncateWraps(wholeWraps) {
    const double rate = double(any->rate);
    sliceMax = asMinMax(asRound(rate * 0.001), 1, longest);
    cutScale = float(cutoffRate / rate);
    limit = float(1.0 / (rate * 6.2831855 * 0.001));
    base[targetPitch] = s->bend() * float(int(s->bendRange));
    base[targetVolume] = s->volume * gain;
    base[targetPan] = s->pan;
    base[targetCutoff] = s->cutoff;
    base[targetQ] = s->q;

    for (const auto& e : s->envelope) addRoutes(*e);
    addRoutes(*s->pitchEnv);
    const float tempo = any->host->tempoNow;
    for (int i = 0; i < lfoCount; i++) {
        const CLFO& l = *s->lfo[i];
        const int before = routeCount;
        addRoutes(l);
        lfoUsed[i] = routeCount > before;
        lfoIncr[i] = l.frequency(tempo) / rate;
        randomWave[i] = l.wave == lfoRandom;
    }
    const std::span moving(routes, size_t(routeCount));
    dies = std::ranges::count(moving, targetVolume, &Route::target) == 1 && routes[0].source == 0 &&
           routes[0].target == targetVolume && routes[0].amount == 1.0f;
    addRoutes(*s->vel);
}

void SlicePlan::addRoutes(const CMod& mod) {
    for (const CMod::Param& p : mod.params) {
        const int target = p.index;
        const float amount = p.amount;
        if (target <= targetNone || target >= targetCount || amount == 0.0f) continue;
        routes[routeCount++] = {(unsigned char)mod.index, (unsigned char)target, amount};
    }
}

int SlicePlan::cutToLfo(CLFOStage& stage, int n) const {
    if (stage.delayLeft > 0) {
        stage.toWrap = farWrap;
        return std::min(n, stage.delayLeft);
    }
    const double rest = 1.0 - stage.phase;
    if (rest > stage.incr * (n + 1)) {
        stage.toWrap = farWrap;
        return n;
    }
    const double frames = rest / stage.incr;
    stage.toWrap = std::max(0, truncateWraps ? asInt(frames) : asRound(frames));
    return std::min(n, stage.toWrap);
}

int SlicePlan::begin(CVoice* v, int n) const {
    float* cur = sound->cur;
    std::copy(std::begin(base), std::end(base), cur);
    cur[targetVolume] *= v->gainMul;
    cur[targetPan] += v->panAdd;
    cur[targetCutoff] *= v->cutoffMul;

    if (v->glideLeft > 0) n = std::min(n, v->glideLeft);
    for (const CEnvStage& stage : v->stages)
        if (stage.active) n = std::min(n, stage.remaining);
    for (int i = 0; i < lfoCount; i++) {
        v->lfoStages[i].incr = lfoIncr[i];
        n = cutToLfo(v->lfoStages[i], n);
    }
    return n;
}

void SlicePlan::modulateLfo(CVoice* v, int i, int n) const {
    CLFOStage& stage = v->lfoStages[i];
    stage.waits = stage.delayLeft > 0;
    if (stage.waits) {
        stage.value = 0.5f;
        stage.delayLeft -= n;
        return;
    }
    if (lfoUsed[i] && !randomWave[i])
        stage.value = float(stage.table[tableIndex(stage.phase)] * 0.5 + 0.5);
    stage.phase += stage.incr * n;
}

void SlicePlan::modulate(CVoice* v, int n) const {
    float source[sources];
    for (int i = 0; i < stageCount; i++) {
        CEnvStage& s = v->stages[i];
        follow(s, n);
        source[i] = s.value;
    }
    for (int i = 0; i < lfoCount; i++) {
        modulateLfo(v, i, n);
        source[firstLfoIndex + i] = v->lfoStages[i].value;
    }
    source[velocityIndex] = v->velocity;

    float* cur = sound->cur;
    for (int i = 0; i < routeCount; i++) {
        const Route& r = routes[i];
        const float s = source[r.source];
        if (isAdditive(r.target))
            cur[r.target] += r.amount * (2.0f * s - 1.0f);
        else
            cur[r.target] *= 1.0f + r.amount * (s - 1.0f);
    }
    cur[targetCutoff] = fLimit(cur[targetCutoff], 0.0f, 1.0f);
    cur[targetQ] = fLimit(cur[targetQ], 0.0f, qMax);
}

void SlicePlan::fade(CVoice* v) const {
    CEnvStage& amp = v->stages[0];
    const bool falls = amp.active && amp.stage >= phaseDecay && amp.to == 0.0f;
    if (dies && falls && std::max(v->gainL, v->gainR) < inaudible) amp.remaining = 0;
}

void SlicePlan::advance(CVoice* v, int n) {
    if (v->glideLeft > 0) {
        v->glideLeft -= n;
        v->pitch += v->glideStep * float(n);
    }
    for (int i = 0; i < stageCount; i++) {
        CEnvStage& s = v->stages[i];
        if (!s.active) continue;
        s.remaining -= n;
        if (s.remaining > 0) continue;
        s.value = s.to;
        v->mods[i]->next(&s);
        if (i == 0 && s.stage == phaseEnded) {
            startTail(v);
            return;
        }
    }
    for (int i = 0; i < lfoCount; i++) {
        CLFOStage& s = v->lfoStages[i];
        if (s.toWrap == farWrap) continue;
        s.toWrap -= n;
        if (s.toWrap > 0) continue;
        s.phase -= 1.0;
        if (v->lfos[i]->wave == lfoRandom) s.value = float(v->chance.unit());
    }
}

float SlicePlan::coefficient(float cutoff) const {
    const float f = cutoff * cutoff;
    if (cutScale == 1.0f) return f;
    const float f4 = f * f * f * f;
    return std::min(f * cutScale + std::max(0.0f, 1.0f - cutScale) * f4 * f4, 1.0f);
}

StripTargets stripTargets(const CVoice& v, const SlicePlan& plan) {
    const float* cur = v.sound->cur;
    const float pan = fLimit(cur[targetPan], -1.0f, 1.0f);
    const float level = fLimit(cur[targetVolume] * cur[targetVolume], 0.0f, mostGain);
    return {level * (pan >= 0.0f ? 1.0f - pan : pan * -0.5f + 1.0f),
            level * (pan >= 0.0f ? pan * 0.5f + 1.0f : pan + 1.0f),
            plan.coefficient(cur[targetCutoff]), 1.0f - cur[targetQ]};
}

StripRamps stripRamps(CVoice* v, const SlicePlan& plan, int n) {
    const StripTargets to = stripTargets(*v, plan);
    float values[] = {v->gainL, v->gainR, v->cut2};
    Ramp ramps[3];
    rampsTo(values, {to.gainL, to.gainR, to.cut}, ramps, plan, v->first, n);
    v->gainL = values[0];
    v->gainR = values[1];
    v->cut2 = values[2];
    return {ramps[0], ramps[1], ramps[2], to.damp};
}

double pitchRatio(double semitones) {
    return std::exp2(fLimit(semitones, -maxSemitones, maxSemitones) / 12.0);
}

void startTail(CVoice* v) {
    v->tail = asInt(double(v->rate) * tailSeconds);
}

void passRest(CVoice* v, int frames) {
    CEnvStage& amp = v->stages[0];
    if (v->tail < 1) {
        if (!amp.active) return;
        amp.remaining -= frames;
        if (amp.remaining > 0) return;
        v->mods[0]->next(&amp);
        startTail(v);
        v->seat = Seat::ended;
        return;
    }
    v->tail -= frames;
    if (v->tail <= 0) v->state = CVoice::free;
}

void guardVoice(CVoice* v) {
    if (v->state != CVoice::sounding) return;
    float sum = 0.0f;
    for (float s : v->svf) sum += s;
    if (!std::isfinite(sum)) std::fill(std::begin(v->svf), std::end(v->svf), 0.0f);
    for (int i = 0; i < CVoice::rightSvf; i++) flush(v->svf[i]);
    flush(v->gainL);
    flush(v->gainR);
    flush(v->cut2);
}

namespace {

float valueAt(const Ramp& ramp, int frame) {
    return ramp.value + ramp.step * float(frame);
}

/// Takes back what a slice has done ahead for the frames that it does not come to.
void shortenSlice(CVoice* v) {
    const HeldSlice& held = v->held;
    const int done = held.frames - held.left;
    v->gainL = valueAt(held.strip.gainL, done);
    v->gainR = valueAt(held.strip.gainR, done);
    v->cut2 = valueAt(held.strip.cut, done);
    v->feed1Sq = valueAt(held.feed1, done);
    v->feed2Sq = valueAt(held.feed2, done);
    v->phaseModSq = valueAt(held.phaseMod, done);
    v->pos -= held.left * v->speed;
    for (CEnvStage& s : v->stages) follow(s, done);
    for (CLFOStage& s : v->lfoStages) {
        if (s.waits)
            s.delayLeft += held.left;
        else
            s.phase -= s.incr * held.left;
    }
    SlicePlan::advance(v, done);
}

} // namespace

void cutVoice(CVoice* v) {
    if (v->state == CVoice::sounding) {
        if (v->held.left > 0) shortenSlice(v);
        guardVoice(v);
    }
    v->held.left = 0;
    v->seat = Seat::none;
}

void endVoice(CVoice* v) {
    v->state = CVoice::free;
    v->held.left = 0;
    v->seat = Seat::none;
}
