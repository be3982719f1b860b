#include "instruments/SynthDrums.h"

#include "instruments/CLayer.h"
#include "instruments/COSCSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/CWavSound.h"
#include "instruments/DrumKit.h"

#include <cmath>

namespace {

constexpr float envelopeMs = 5000.0f;
constexpr int hatGroup = 1;
constexpr float velocityDepth = 0.75f;
/// How much duller a soft stroke is: of the modulation, of noise, of a clip.
constexpr float brightness = 0.35f, noiseBrightness = 0.25f, strokeBrightness = 0.4f;

/// Settings of a sound that is all noise: a modulator far above the carrier, many cycles deep.
constexpr float noiseMod = 1.0f;
constexpr int noiseDepth = 32;
constexpr float noiseRatio = 31.7f;

/// One sound of the kit. Pitches are MIDI notes, reached at the lowest key of the zone.
struct Drum {
    const char* name;
    int lowKey, hiKey, group;
    float pitch, sweep, sweepMs; ///< final pitch, semitones above it at the start, time of the fall
    float volume, pan;
    float attackMs, decayMs;
    int filter;
    float cutoff, q;
    float phaseMod, coarse2; ///< modulator: depth, semitones above the carrier
    int pmMul;
    float feed1;
    float reverb;
    bool wide = false; ///< noise that is another on each side
};

const Drum drums[] = {
    {"Rim", 37, 37, 0, 80, 10, 10, 0.7f, 0.15f, 0, 45, filterBand, 0.75f, 0.5f, 0.5f, 8.4f, 3, 0,
     0.1f},
    {"Toms", 41, 41, 0, 40, 10, 120, 0.72f, 0.3f, 0, 420, filterLow, 0.7f, 0, 0.25f, 7.3f, 1, 0,
     0.15f},
    {"Toms", 43, 43, 0, 43, 10, 110, 0.72f, 0.2f, 0, 400, filterLow, 0.7f, 0, 0.25f, 7.3f, 1, 0,
     0.15f},
    {"Toms", 45, 45, 0, 46, 10, 100, 0.72f, 0.1f, 0, 380, filterLow, 0.72f, 0, 0.25f, 7.3f, 1, 0,
     0.15f},
    {"Toms", 47, 48, 0, 49, 10, 90, 0.72f, -0.1f, 0, 360, filterLow, 0.74f, 0, 0.25f, 7.3f, 1, 0,
     0.15f},
    {"Toms", 50, 50, 0, 53, 10, 80, 0.72f, -0.25f, 0, 340, filterLow, 0.76f, 0, 0.25f, 7.3f, 1, 0,
     0.15f},
    // Cymbals: a field of partials without harmony, and the wash around it.
    {"Crash metal", 49, 49, 0, 71, 0, 0, 0.5f, -0.3f, 0, 1500, filterHigh, 0.55f, 0, 0.9f, 8.37f, 7,
     0.5f, 0.2f},
    {"Crash", 49,         49,    0,    79,       0,          0,          0.75f, -0.3f, 2,
     2200,    filterBand, 0.86f, 0.1f, noiseMod, noiseRatio, noiseDepth, 0,     0.25f, true},
    {"China metal", 52, 52, 0, 66, 0, 0, 0.6f, -0.35f, 0, 900, filterHigh, 0.5f, 0, 0.95f, 6.3f, 9,
     0.6f, 0.2f},
    {"China", 52,         52,   0,    73,       0,          0,          0.7f, -0.35f, 2,
     1500,    filterBand, 0.7f, 0.2f, noiseMod, noiseRatio, noiseDepth, 0,    0.25f,  true},
    {"Splash metal", 55, 55, 0, 76, 0, 0, 0.5f, -0.2f, 0, 600, filterHigh, 0.6f, 0, 0.9f, 9.1f, 7,
     0.5f, 0.2f},
    {"Splash", 55,         55,   0,    82,       0,          0,          0.7f, -0.2f, 1,
     900,      filterBand, 0.9f, 0.1f, noiseMod, noiseRatio, noiseDepth, 0,    0.2f,  true},
    {"Crash 2 metal", 57, 57, 0, 69, 0, 0, 0.5f, 0.3f, 0, 1400, filterHigh, 0.55f, 0, 0.9f, 7.9f, 8,
     0.5f, 0.2f},
    {"Crash 2", 57,         57,    0,    76,       0,          0,          0.75f, 0.3f,  2,
     2000,      filterBand, 0.82f, 0.1f, noiseMod, noiseRatio, noiseDepth, 0,     0.25f, true},
    {"Ride", 51, 51, 0, 83, 0, 0, 0.55f, 0.35f, 0, 1100, filterHigh, 0.62f, 0, 0.75f, 8.37f, 4,
     0.3f, 0.1f},
    {"Ride wash", 51, 51, 0, 80, 0, 0, 0.4f, 0.35f, 1, 700, filterBand, 0.86f, 0.1f, noiseMod,
     noiseRatio, noiseDepth, 0, 0.1f},
    {"Ride bell", 53, 53, 0, 84, 0, 0, 0.55f, 0.35f, 0, 900, filterHigh, 0.5f, 0, 0.5f, 5.4f, 2, 0,
     0.1f},
    {"Ride 2", 59, 59, 0, 81, 0, 0, 0.55f, 0.3f, 0, 1100, filterHigh, 0.6f, 0, 0.78f, 7.7f, 4, 0.3f,
     0.1f},
    {"Ride 2 wash", 59, 59, 0, 78, 0, 0, 0.4f, 0.3f, 1, 700, filterBand, 0.84f, 0.1f, noiseMod,
     noiseRatio, noiseDepth, 0, 0.1f},
    {"Tambourine", 54, 54, 0, 80, 0, 0, 0.62f, 0.25f, 1, 140, filterHigh, 0.95f, 0.2f, noiseMod,
     noiseRatio, noiseDepth, 0, 0.05f},
    {"Cowbell", 56, 56, 0, 72, 0, 0, 0.66f, -0.2f, 0, 190, filterBand, 0.6f, 0.4f, 0.5f, 6.6f, 1,
     0.5f, 0.1f},
    {"Vibraslap", 58, 58, 0, 66, 0, 0, 0.6f, 0.2f, 1, 500, filterBand, 0.6f, 0.5f, noiseMod,
     noiseRatio, noiseDepth, 0, 0.15f},
    {"Bongos", 60, 64, 0, 62, 5, 30, 0.6f, -0.15f, 0, 150, filterLow, 0.75f, 0, 0.2f, 7.2f, 1, 0,
     0.1f},
    {"Timbales", 65, 66, 0, 63, 4, 60, 0.58f, 0.15f, 0, 260, filterLow, 0.85f, 0, 0.4f, 8.2f, 1, 0,
     0.15f},
    {"Agogo", 67, 68, 0, 82, 0, 0, 0.64f, -0.25f, 0, 260, filterBand, 0.7f, 0.4f, 0.4f, 5.9f, 1,
     0.3f, 0.1f},
    {"Shaker", 69, 70, 0, 84, 0, 0, 0.52f, -0.25f, 18, 60, filterHigh, 0.97f, 0.1f, noiseMod,
     noiseRatio, noiseDepth, 0, 0.03f},
    {"Whistle", 71, 72, 0, 96, 0, 0, 0.44f, 0.1f, 8, 260, filterLow, 0.9f, 0, 0.1f, 0.3f, 1, 0,
     0.1f},
    {"Guiro", 73, 74, 0, 70, 0, 0, 0.6f, 0.2f, 8, 240, filterBand, 0.7f, 0.4f, noiseMod, noiseRatio,
     noiseDepth, 0, 0.08f},
    {"Blocks", 75, 77, 0, 80, 3, 8, 0.78f, 0.1f, 0, 70, filterBand, 0.7f, 0.4f, 0.2f, 9.1f, 1, 0,
     0.1f},
    {"Cuica", 78, 79, 0, 64, 7, 120, 0.5f, -0.1f, 5, 200, filterLow, 0.7f, 0, 0.2f, 0.2f, 1, 0.4f,
     0.1f},
    {"Triangle", 80, 81, 0, 103, 0, 0, 0.5f, 0.3f, 0, 800, filterHigh, 0.4f, 0, 0.35f, 8.7f, 1, 0,
     0.12f},
    {"Bells", 82, 87, 0, 92, 0, 0, 0.5f, -0.2f, 0, 500, filterHigh, 0.5f, 0, 0.4f, 6.7f, 1, 0,
     0.12f},
    {"Effects", 27, 34, 0, 72, 6, 20, 0.55f, 0, 0, 90, filterBand, 0.7f, 0.3f, 0.4f, 8.3f, 2, 0,
     0.1f},
};

/// Setting of an envelope stage that lasts so long.
float stageOf(float ms) {
    return std::sqrt(ms / envelopeMs);
}

void setAmp(CEnv& env, const Drum& d) {
    constexpr float fallFast = 0.22f;
    env.attack = stageOf(d.attackMs);
    env.decay = stageOf(d.decayMs);
    env.dc = fallFast;
    env.sustain = 0.0f;
    env.release = stageOf(d.decayMs);
}

/// The fall of the pitch: the envelope moves it both ways around the middle.
void setSweep(CEnv& env, const Drum& d) {
    constexpr float fallFast = 0.3f;
    env.attack = 0.0f;
    env.decay = stageOf(d.sweepMs);
    env.dc = fallFast;
    env.sustain = 0.0f;
    env.release = stageOf(d.sweepMs);
    env.setSlot(0, targetPitch, d.sweep * 0.5f);
}

COSCSound* makeDrum(CLayer* layer, CQV* host, const Drum& d) {
    auto* s = new COSCSound(layer, host);
    s->id = d.name;
    s->lowKey = d.lowKey;
    s->hiKey = d.hiKey;
    s->group = static_cast<unsigned char>(d.group);
    s->coarse = d.pitch + d.sweep * 0.5f - float(d.lowKey);
    s->bendRange = 0;
    s->volume = d.volume;
    s->pan = d.pan;
    s->filter = d.filter;
    s->cutoff = d.cutoff;
    s->q = d.q;
    s->phaseMod = d.phaseMod;
    s->coarse2 = d.coarse2;
    s->pmMul = d.pmMul;
    s->feed1 = d.feed1;
    s->sends[0] = d.reverb;
    setAmp(*s->envelope[0], d);
    if (d.sweep > 0.0f) setSweep(*s->envelope[2], d);
    s->vel->setSlot(0, targetVolume, velocityDepth);
    if (d.wide) {
        s->width = 1.0f;
        s->detune = 0.4f;
    }
    if (d.pmMul == noiseDepth) {
        s->vel->setSlot(1, targetCutoff, noiseBrightness);
    } else {
        s->vel->setSlot(1, targetPhaseMod, brightness);
    }
    return s;
}

/// What a clip of the kit plays on.
struct Struck {
    const char* name;
    int resource, lowKey, hiKey, orgKey, group;
    float volume, pan, reverb;
};

const Struck clips[] = {{"Kick", drumKick, 35, 36, 36, 0, 0.95f, 0, 0.02f},
                        {"Snare", drumSnare, 38, 38, 38, 0, 0.8f, 0, 0.14f},
                        {"Snare 2", drumSnare, 40, 40, 37, 0, 0.78f, 0.05f, 0.14f},
                        {"Clap", drumClap, 39, 39, 39, 0, 0.8f, -0.1f, 0.25f},
                        {"Closed hat", drumHatClosed, 42, 42, 42, hatGroup, 0.6f, 0.2f, 0.03f},
                        {"Pedal hat", drumHatClosed, 44, 44, 46, hatGroup, 0.5f, 0.2f, 0.03f},
                        {"Open hat", drumHatOpen, 46, 46, 46, hatGroup, 0.6f, 0.2f, 0.06f}};

CWavSound* makeStruck(CLayer* layer, CSampler* sampler, const Struck& d) {
    auto* clip = new CSampleClip;
    loadResource(clip, d.resource);
    clip->playAll();
    clip->peakfile();
    clip->setOrgKey(d.orgKey);
    sampler->clips.add(clip);
    auto* s = new CWavSound(layer, sampler->host);
    s->addSample(clip);
    s->id = d.name;
    s->lowKey = d.lowKey;
    s->hiKey = d.hiKey;
    s->group = static_cast<unsigned char>(d.group);
    s->bendRange = 0;
    s->volume = d.volume;
    s->pan = d.pan;
    s->sends[0] = d.reverb;
    s->vel->setSlot(0, targetVolume, velocityDepth);
    s->vel->setSlot(1, targetCutoff, strokeBrightness);
    s->envelope[0]->release = 1.0f; // a stroke rings on when the key is let go
    return s;
}

} // namespace

CSynthProg* synthDrumKit(CSampler* sampler) {
    auto* prog = new CSynthProg(sampler->host, sampler);
    prog->id = "Drums";
    CLayer* layer = prog->addLayer();
    prog->family = "Drums";
    prog->words = "kit general midi";
    for (const Struck& d : clips) layer->addSound(makeStruck(layer, sampler, d));
    for (const Drum& d : drums) layer->addSound(makeDrum(layer, sampler->host, d));
    return prog;
}
