#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

Patches plucked(float feed, float depth, float decay, float buzz, float pick) {
    return {placed(struck("String", 0.9f, rich(feed, 0.5f), decay, 120), -0.18f),
            placed(struck("Buzz", buzz, edge(depth), decay * 0.6f, 100), 0.25f),
            breath("Pick", pick, 0.7f, 0.3f, 25)};
}

// A skin below the bridge: no lows, a knock, soon gone.
Patches banjo() {
    Patches p = plucked(0.9f, 0.8f, 380, 0.5f, 0.5f);
    p[0] = through(p[0], filterHigh, 0.3f, 0);
    p.push_back(breath("Skin", 0.8f, 0.34f, 0.7f, 60));
    p.push_back(struck("Ground", 0.3f, fm(0.2f), 420, 120));
    return p;
}

// The plectrum strikes the skin together with the string, which rattles on the neck.
Patches shamisen() {
    return {muffled(struck("String", 0.9f, edgePair(0.9f), 800, 120), 0.5f, 0.4f),
            swelling(placed(struck("Rattle", 0.6f, edge(1.0f), 1100, 100, 19), 0.2f), 90),
            breath("Plectrum", 0.55f, 0.46f, 0.3f, 55)};
}

// Silk on a long box: the pitch falls into its place.
Patches koto() {
    return {falling(placed(struck("String", 0.9f, hollow(0.4f), 1900, 300), -0.18f), 0.6f, 90),
            placed(struck("Octave", 0.4f, fm(0.4f), 2600, 300, 12), 0.3f),
            breath("Pick", 0.5f, 0.6f, 0.5f, 30)};
}

// Strings below those that are played go on sounding.
Patches sitar() {
    Patches p = plucked(0.92f, 0.95f, 2200, 0.6f, 0.3f);
    p[1] = swelling(p[1], 160);
    p.push_back(placed(
        through(held("Others", 0.3f, edge(0.9f), 420, 700, 12), filterHigh, 0.5f, 0.3f), 0.8f));
    return p;
}

Patches drum(float fall, float ms, float decay, float noiseVolume, float noiseCutoff) {
    return {falling(struck("Skin", 1.0f, fm(0.25f, 7.3f), decay, decay * 0.6f), fall, ms),
            breath("Stick", noiseVolume, noiseCutoff, 0.3f, 50)};
}

/// Noise that has no note: the same on all keys but for its height.
Patch wind(const char* name, float volume, int filter, float cutoff, float q, float attack,
           float release) {
    Patch p = breath(name, volume, cutoff, q, 600, 0.9f, attack);
    p.filter = filter;
    p.amp.release = release;
    p.velVolume = factory::usualVelocity;
    p.osc.detune = 0.4f;
    p.osc.width = 1.0f;
    return p;
}

Patch stirred(Patch p, int target, float amount, float hz, int wave) {
    p.lfos[target == targetVolume  ? 1
           : target == targetPitch ? 0
                                   : 3] = {
        .target = target, .amount = amount, .hz = hz, .wave = wave};
    return p;
}

Family ethnic() {
    return {"Ethnic",
            {{"Sitar", "india drone buzz", sitar()},
             {"Banjo", "folk bright", banjo()},
             {"Shamisen", "japan plucked", shamisen()},
             {"Koto", "japan harp", koto()},
             {"Kalimba",
              "africa thumb piano",
              {placed(struck("Tongue", 0.9f, fm(0.2f, 12), 900, 250), -0.2f),
               placed(struck("Buzz", 0.5f, fm(0.6f, 28.7f, 0.6f), 130, 60, 12), 0.3f)}},
             {"Bagpipe",
              "scotland drone",
              {placed(held("Chanter", 0.8f, edge(0.92f), 25, 60), 0.4f),
               placed(held("Drone", 0.9f, hollow(0.8f), 60, 80, -12), -0.4f)}},
             {"Fiddle",
              "folk violin",
              {swaying(held("String", 0.9f, spread(brightSaw(), 0.06f, 0.6f), 15, 60), 0.16f, 5.8f,
                       200),
               breath("Bow", 0.6f, 1.0f, 0.2f, 120, 0.4f, 5)}},
             {"Shanai",
              "india reed loud",
              {swaying(through(held("Reeds", 1.0f, spread(edge(1.0f), 0.03f, 0.5f), 25, 70),
                               filterHigh, 0.2f, 0.2f),
                       0.3f, 5.6f, 150),
               held("Ground", 0.4f, rich(0.8f), 25, 70)}}}};
}

Family percussive() {
    Patch reverse = wind("Cymbal", 1.0f, filterHigh, 0.75f, 0.2f, 1600, 20);
    reverse.amp.sustain = 0.0f;
    reverse.amp.decay = 30;
    return {"Percussive",
            {{"Tinkle bell",
              "small high",
              {struck("Bell", 0.9f, spread(fm(0.5f, 29.6f), 0.06f), 900, 600, 12)}},
             {"Agogo",
              "latin metal",
              {placed(struck("Bell", 0.9f, fm(0.6f, 6.6f, 0.4f), 300, 160), -0.18f),
               placed(struck("Ring", 0.6f, fm(0.5f, 19.1f), 420, 200, 12), 0.18f)}},
             {"Steel drums",
              "caribbean metal",
              {placed(struck("Pan", 0.9f, fm(0.42f, 12), 800, 260), -0.2f),
               placed(struck("Ring", 0.5f, fm(0.5f, 19.02f), 420, 200, 12), 0.3f)}},
             {"Woodblock",
              "wood dry",
              {falling(struck("Block", 0.9f, fm(0.36f, 9.1f), 80, 50), 4, 12),
               breath("Knock", 0.5f, 0.6f, 0.4f, 18)}},
             {"Taiko", "japan big drum",
              [] {
                  Patches p = drum(7, 120, 900, 1.0f, 0.3f);
                  p[0].osc = fm(0.1f);
                  p.push_back(falling(struck("Boom", 0.8f, fm(0.2f), 1300, 600, -12), 5, 90));
                  return p;
              }()},
             {"Melodic tom", "drum tuned",
              [] {
                  Patches p = drum(9, 90, 480, 0.6f, 0.6f);
                  p.push_back(struck("Overtone", 0.5f, fm(0.4f, 5.2f), 260, 200, 8));
                  return p;
              }()},
             {"Synth drum", "eighties falling", drum(24, 320, 420, 0.4f, 0.6f)},
             {"Reverse cymbal", "swell backwards", {reverse}}}};
}

Family soundEffects() {
    return {"Sound effects",
            {{"Fret noise",
              "guitar squeak",
              {falling(struck("Squeak", 0.6f, edge(0.9f), 160, 60, 12), -9, 150),
               breath("String", 0.8f, 0.75f, 0.6f, 160)}},
             {"Breath noise",
              "air human",
              {wind("Breath", 1.0f, filterBand, 0.5f, 0.7f, 260, 300),
               wind("Teeth", 0.3f, filterHigh, 0.9f, 0.1f, 420, 200)}},
             {"Seashore",
              "waves water",
              {stirred(wind("Waves", 1.0f, filterLow, 0.7f, 0.1f, 900, 1600), targetVolume, 0.8f,
                       0.16f, lfoSin)}},
             {"Bird tweet",
              "nature",
              {stirred(stirred(held("Bird", 0.9f, fm(0.3f, 0.2f), 10, 60, 24), targetPitch, 5.0f,
                               11.0f, lfoSaw),
                       targetVolume, 0.9f, 3.1f, lfoPulse)}},
             {"Telephone",
              "ring bell",
              {stirred(held("Bell", 0.9f, spread(fm(0.5f, 16.3f), 0.1f), 3, 120, 12), targetVolume,
                       0.95f, 18.0f, lfoPulse)}},
             {"Helicopter",
              "machine rotor",
              {stirred(wind("Rotor", 1.0f, filterLow, 0.6f, 0.3f, 200, 600), targetVolume, 0.95f,
                       11.0f, lfoSaw),
               stirred(held("Engine", 0.7f, edge(0.8f), 200, 600, -24), targetVolume, 0.7f, 11.0f,
                       lfoSaw)}},
             {"Applause",
              "crowd clapping",
              {stirred(wind("Hands", 1.0f, filterBand, 0.62f, 0.1f, 60, 900), targetVolume, 0.9f,
                       23.0f, lfoRandom),
               stirred(wind("Palms", 0.8f, filterBand, 0.36f, 0.3f, 60, 900), targetVolume, 0.9f,
                       17.0f, lfoRandom)}},
             {"Gunshot",
              "bang",
              {breath("Blast", 1.0f, 0.7f, 0.1f, 500), breath("Boom", 1.0f, 0.3f, 0.3f, 900),
               falling(struck("Body", 0.8f, fm(0.4f), 220, 120, -12), 12, 60)}}}};
}

} // namespace

std::vector<Family> percussion() {
    return {ethnic(), percussive(), soundEffects()};
}

} // namespace gm
