#include "instruments/Modulators.h"

#include "base/Numbers.h"
#include "common/Curves.h"
#include "common/WaveTables.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int typeEnv = 1, typeLfo = 2, typeVel = 3, typeCp = 4;

/// Frames of a stage: setting squared times the longest time, in 64 bits.
int stageFrames(const CEnvStage* stage, float setting, int maxTimeMs) {
    const double s = double(fLimit(setting, 0.0f, 1.0f));
    const double ms = s * s * std::clamp(maxTimeMs, 1, 60000);
    return asRound(ms * double(stage->rate) * 0.001);
}

} // namespace

const char* const targetNames[targetCount] = {"None", "Pitch", "Volume", "Pan",      "Cutoff",
                                              "Q",    "OscFB", "ModFB",  "PhaseMod", "Detune"};

CStr paramAsStr(int target) {
    return target > targetNone && target < targetCount ? targetNames[target] : "";
}

void CEnvStage::go(int newStage, float a, float b, int frames) {
    active = true;
    stage = newStage;
    from = a;
    to = b;
    remaining = total = frames;
}

float CEnvStage::bend() {
    if (curve != bentFor) {
        bentFor = curve;
        bent = envelopeBend(curve);
    }
    return bent;
}

void CEnvStage::hold(int newStage, float a, float b) {
    go(newStage, a, b, 0);
    active = false;
}

void CMod::setSlot(int slot, int target, ToStore<float> amount) {
    params[slot].index = target;
    params[slot].amount = amount;
}

CEnv::CEnv(int number, float a, float d, float s, float r)
    : CMod(number), envType(number <= 1 ? 1 : 0), attack(a), decay(d), sustain(s), release(r) {
    type = typeEnv;
}

void CEnv::reset(CEnvStage* stage) {
    stage->go(phaseAttack, initial, 1.0f, stageFrames(stage, attack, maxTime));
    stage->value = initial;
    stage->curve = ac;
}

void CEnv::next(CEnvStage* stage) {
    if (stage->stage == phaseAttack) {
        stage->go(phaseDecay, 1.0f, sustain, stageFrames(stage, decay, maxTime));
        stage->curve = dc;
    } else if (stage->stage == phaseDecay) {
        stage->hold(phaseSustain, sustain, sustain);
        stage->curve = 0.0f;
    } else if (stage->stage == phaseRelease) {
        stage->hold(phaseEnded, 0.0f, 0.0f);
        stage->curve = rc;
    }
}

void CEnv::noteOff(CEnvStage* stage) {
    stage->go(phaseRelease, stage->value, 0.0f, stageFrames(stage, release, maxTime));
}

CPitchEnv::CPitchEnv() : CMod(pitchEnvIndex) {
    type = typeEnv;
}

void CPitchEnv::reset(CEnvStage* stage) {
    stage->go(phaseAttack, initial, 0.0f, stageFrames(stage, attack, maxTime));
    stage->value = initial;
    stage->curve = ac;
}

void CPitchEnv::next(CEnvStage* stage) {
    if (stage->stage == phaseAttack) {
        stage->hold(phaseSustain, 0.0f, 0.0f);
        stage->value = stage->curve = 0.0f;
    } else if (stage->stage == phaseRelease) {
        stage->hold(phaseEnded, final, final);
        stage->curve = rc;
    }
}

void CPitchEnv::noteOff(CEnvStage* stage) {
    stage->go(phaseRelease, stage->value, final, stageFrames(stage, release, maxTime));
}

CLFO::CLFO(int number) : CMod(number) {
    type = typeLfo;
}

void CLFO::reset(CLFOStage* stage) {
    static const double* const tables[] = {sinus, triangle, saw, pulse};
    const int w = wave;
    stage->table = w >= lfoSin && w <= lfoPulse ? tables[w] : sinus;
    stage->phase = 0.0;
    stage->delayLeft = 0;
    stage->value = 0.5f;
}

double CLFO::frequency(float tempo) const {
    if (!sync) return double(fLimit(rate, 0.01f, 50.0f));
    const double beats = double(std::clamp<int>(div, 1, 64)) / std::clamp<int>(mul, 1, 64);
    return beats * double(fLimit(tempo, 10.0f, 250.0f)) / 60.0;
}

CVel::CVel() : CMod(velocityIndex) {
    type = typeVel;
}

CCP::CCP() : CMod(velocityIndex + 1) {
    type = typeCp;
}
