#include "data/generalmidi/GmPieces.h"

#include <algorithm>

namespace gm {

namespace {

constexpr float room = 0.16f; ///< of the reverb of a program
constexpr int bendRange = 2;  ///< that files reckon with

Patch plain(const char* name, float volume, const Osc& osc, float coarse) {
    Patch p;
    p.name = name;
    p.volume = volume;
    p.osc = osc;
    p.coarse = coarse;
    p.filter = filterHigh;
    p.cutoff = clean;
    p.reverb = room;
    p.bend = bendRange;
    if (osc.feed > 0.0f) p.velFeed = 0.3f;
    if (osc.phaseMod > 0.0f) p.velPhaseMod = 0.25f;
    return p;
}

} // namespace

Osc fm(float pm, float modCoarse, float modFeed) {
    return {.phaseMod = pm, .modCoarse = modCoarse, .modFeed = modFeed};
}

Osc spread(Osc osc, float detune, float width) {
    osc.detune = detune;
    osc.width = width;
    return osc;
}

Osc edgePair(float depth, float apart) {
    Osc osc = edge(depth, 0, 0, apart);

    osc.inverted = true;
    return osc;
}

Osc rich(float feed, float pm) {
    return {.feed = feed, .phaseMod = pm};
}

Patch struck(const char* name, float volume, const Osc& osc, float decay, float release,
             float coarse) {
    Patch p = plain(name, volume, osc, coarse);
    p.amp = {.attack = 1, .decay = decay, .sustain = 0, .release = release, .decayCurve = 0.3f};
    const Env colour = {
        .decay = decay * 0.4f, .sustain = 0.35f, .release = hold, .decayCurve = 0.2f};
    if (osc.phaseMod > 0.0f) p.mod = {targetPhaseMod, 0.5f, colour};
    if (osc.feed > 0.0f) p.mod2 = {targetFeed1, 0.5f, colour};
    return p;
}

Patch held(const char* name, float volume, const Osc& osc, float attack, float release,
           float coarse) {
    Patch p = plain(name, volume, osc, coarse);
    p.amp = {.attack = attack, .decay = 600, .sustain = 0.88f, .release = release};
    return p;
}

Patch breath(const char* name, float volume, float cutoff, float q, float decay, float sustain,
             float attack) {
    Patch p = plain(name, volume, noise, 0);
    p.filter = filterBand;
    p.cutoff = cutoff;
    p.q = q;
    p.velPhaseMod = 0;
    p.velVolume = 0.92f;
    p.amp = {
        .attack = attack, .decay = decay, .sustain = sustain, .release = 60, .decayCurve = 0.3f};
    return p;
}

Patch zone(Patch p, int lowKey, int hiKey) {
    p.lowKey = lowKey;
    p.hiKey = hiKey;
    return p;
}

Patch placed(Patch p, float pan) {
    p.pan = pan;
    return p;
}

Patch swaying(Patch p, float semitones, float hz, int delayMs) {
    p.lfos[0] = vibrato(semitones, hz, delayMs);
    return p;
}

Patch trembling(Patch p, float amount, float hz) {
    p.lfos[1] = {.target = targetVolume, .amount = amount, .hz = hz, .wave = lfoSin};
    return p;
}

Patch swelling(Patch p, float ms) {
    const Env rise = {
        .attack = ms, .decay = ms * 6, .sustain = 0.8f, .release = hold, .initial = 0.2f};
    if (p.osc.phaseMod > 0.0f) p.mod = {targetPhaseMod, 0.5f, rise};
    if (p.osc.feed > 0.0f) p.mod2 = {targetFeed1, 0.6f, rise};
    return p;
}

Patch through(Patch p, int filter, float cutoff, float q) {
    p.filter = filter;
    p.cutoff = cutoff;
    p.q = q;
    return p;
}

Patch muffled(Patch p, float cutoff, float q) {
    p.velCutoff = 0.25f;
    return through(p, filterLow, cutoff, q);
}

Patches followed(const Patches& patches) {
    // What a high-pass takes from low notes, and a low-pass from high ones, comes back as volume.
    constexpr struct {
        int lowKey, hiKey;
        float cutoff, volumeHigh, volumeLow;
    } parts[] = {{0, 35, 0.71f, 1.3f, 1.0f},
                 {36, 47, 0.84f, 1.2f, 1.0f},
                 {48, 71, 1.0f, 1.0f, 1.0f},
                 {72, 83, 1.19f, 0.84f, 1.05f},
                 {84, 127, 1.41f, 0.7f, 1.15f}};
    Patches all;
    for (const Patch& p : patches) {
        const bool filtered = p.osc.times != noise.times && p.cutoff != clean && p.cutoff < 1.0f;
        if (!filtered) all.push_back(p);
        for (const auto& part : parts) {
            if (!filtered || part.hiKey < p.lowKey || part.lowKey > p.hiKey) continue;
            all.push_back(zone(p, std::max(part.lowKey, p.lowKey), std::min(part.hiKey, p.hiKey)));
            all.back().cutoff = std::min(1.0f, p.cutoff * part.cutoff);
            all.back().volume *= p.filter == filterLow ? part.volumeLow : part.volumeHigh;
        }
    }
    return all;
}

Patch driven(Patch p) {
    p.dist = true;
    return p;
}

Patch doubled(Patch p, float wet, float delay, float depth, float hz) {
    p.chorus = {.wet = wet, .delay = delay, .depth = depth, .hz = hz};
    return p;
}

Patch longer(Patch p, float sustain) {
    p.amp.sustain = sustain;
    return p;
}

Patch single(Patch p, int glide) {
    p.mono = true;
    p.glide = glide;
    return p;
}

Patch falling(Patch p, float semitones, float ms) {
    p.mod = {targetPitch,
             semitones * 0.5f,
             {.decay = ms, .sustain = 0, .release = hold, .decayCurve = 0.3f}};
    p.coarse += semitones * 0.5f;
    return p;
}

} // namespace gm
