#include "instruments/CSound.h"

#include "base/Numbers.h"
#include "common/WaveTables.h"
#include "common/fx/CChorus.h"
#include "common/fx/CPhaser.h"
#include "engine/CQV.h"
#include "engine/SongClock.h"
#include "instruments/CSynthProg.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float ampRelease = 0.1f;
constexpr float setPanFloor = -11.0f; ///< below it `setPan` clamps to -1

} // namespace

CSound::CSound(CLayer* owner, CQV* host) : layer(owner) {
    category = categorySampler;
    createSinus();
    for (int i = 0; i < envelopeCount; i++)
        envelope[i] = std::make_unique<CEnv>(i, 0.0f, 0.0f, 1.0f, 1.0f);
    envelope[0]->release = ampRelease;
    envelope[0]->setSlot(0, targetVolume, 1.0f);
    envelope[1]->setSlot(0, targetCutoff, 1.0f);
    for (int i = 0; i < lfoCount; i++) {
        lfo[i] = std::make_unique<CLFO>(firstLfoIndex + i);
        lfo[i]->setSlot(0, targetPitch + i, 0.0f);
    }
    pitchEnv = std::make_unique<CPitchEnv>();
    vel = std::make_unique<CVel>();
    for (int i = 0; i < modSlots; i++) vel->setSlot(i, targetVolume + i, 0.0f);
    cp = std::make_unique<CCP>();
    fx[0] = std::make_unique<CPhaser>(float(host->rate), 0);
    fx[1] = std::make_unique<CChorus>(float(host->rate), 0);
}

CSound::~CSound() = default;

void CSound::process(float*, float*, CVoice*, int) {
}

void CSound::processVoices(CVoice** voices, int count, float* left, float* right, int frames) {
    for (int i = 0; i < count; i++) process(left, right, voices[i], frames);
}

void CSound::initVoice(CVoice* voice) {
    voice->first = true;
    voice->held.left = 0;
    Random& chance = layer->prog->chance;
    voice->chance = chance; // the rest of the program's goes on elsewhere
    chance.seed(unsigned(chance.integer()));
    voice->seat = Seat::none;
    voice->sound = this;
    voice->gainMul = 1.0f;
    voice->panAdd = 0.0f;
    voice->cutoffMul = 1.0f;
    const int tap = std::clamp<int>(filter, filterLow, filterHigh);
    voice->outL = &voice->svf[tap];
    voice->outR = &voice->svf[CVoice::rightSvf + tap];
    std::fill(std::begin(voice->svf), std::end(voice->svf), 0.0f);
    initMods(voice);
}

void CSound::initMods(CVoice* voice) {
    voice->modCount = stageCount;
    for (int i = 0; i < envelopeCount; i++) voice->mods[i] = envelope[i].get();
    voice->mods[pitchEnvIndex] = pitchEnv.get();
    for (int i = 0; i < stageCount; i++) {
        voice->stages[i].rate = voice->rate;
        voice->mods[i]->reset(&voice->stages[i]);
    }

    for (int i = 0; i < lfoCount; i++) {
        CLFO* l = voice->lfos[i] = lfo[i].get();
        CLFOStage& stage = voice->lfoStages[i];
        l->reset(&stage);
        stage.delayLeft = asRound(std::clamp<int>(l->delay, 0, 5000) * double(voice->rate) * 0.001);
        const int restart = l->restart;
        if (restart == restartFree) {
            const double incr = l->frequency(voice->host->tempoNow) / double(voice->rate);
            const double cycles = double(voice->host->clock->strideStart()) * incr;
            stage.phase = cycles - std::floor(cycles);
        } else if (restart == restartMono && voice->previous) {
            stage.phase = voice->previous->lfoStages[i].phase;
        }
    }
}

CPhaser* CSound::phaser() const {
    return static_cast<CPhaser*>(fx[0].get());
}
CChorus* CSound::chorus() const {
    return static_cast<CChorus*>(fx[1].get());
}
float CSound::bend() const {
    return layer->prog->bend[0];
}

void CSound::setVolume(ToStore<float> v) {
    volume = fLimit(v, 0.0f, 1.0f);
}
void CSound::setCutoff(ToStore<float> v) {
    cutoff = fLimit(v, 0.0f, 1.0f);
}
void CSound::setQ(ToStore<float> v) {
    q = fLimit(v, 0.0f, 1.0f);
}

void CSound::setPan(ToStore<float> v) {
    pan = v >= setPanFloor ? std::min(float(v), 1.0f) : -1.0f;
}

void CSound::setFilter(ToStore<int> v) {
    filter = v;
}

void CSound::pitchInitialChanged(ToStore<int> semitones) {
    pitchEnv->initial = float(semitones);
}
void CSound::pitchAttackChanged(ToStore<int> percent) {
    pitchEnv->attack = float(percent) * 0.01f;
}
void CSound::pitchFinalChanged(ToStore<int> semitones) {
    pitchEnv->final = float(semitones);
}
void CSound::pitchReleaseChanged(ToStore<int> percent) {
    pitchEnv->release = float(percent) * 0.01f;
}

void CSound::copyData(const CSound* other) {
    mode = other->mode;
    mute = other->mute;
    colour = other->colour;
    volume = other->volume;
    pan = other->pan;
    filter = other->filter;
    cutoff = other->cutoff;
    q = other->q;
    dist = other->dist;
    coarse = other->coarse;
    fine = other->fine;
    lowKey = other->lowKey;
    hiKey = other->hiKey;
    lowVel = other->lowVel;
    hiVel = other->hiVel;
    group = other->group;
    glide = other->glide;
    bendRange = other->bendRange;
}

Stored<float>* CSound::target(int number) {
    switch (number) {
    case targetVolume:
        return &volume;
    case targetPan:
        return &pan;
    case targetCutoff:
        return &cutoff;
    case targetQ:
        return &q;
    default:
        return nullptr;
    }
}

void setValue(CSound* sound, int target, ToStore<float> value) {
    const float share = fLimit(value, 0.0f, 1.0f);
    if (Stored<float>* word = sound->target(target))
        *word = target == targetPan ? 2.0f * share - 1.0f : share;
}

StoredValue targetOf(CSound* sound, int target) {
    static const StoredValue::Kind kind = {
        "Sound",
        [](const CObject* o, int number) {
            // A sound hands out its words without being const, though it changes nothing.
            auto* s = const_cast<CSound*>(static_cast<const CSound*>(o));
            return StoredValue::Numbers{double(*s->target(number))};
        },
        [](CObject* o, int number, const StoredValue::Numbers& to) {
            *static_cast<CSound*>(o)->target(number) = float(to[0]);
        }};
    return {&kind, sound, target};
}
