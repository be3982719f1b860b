#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

Patches plucked(float feed, float depth, float decay, float buzz, float pick) {
    return {struck("String", 0.9f, spread(rich(feed, 0.5f), 0.04f, 0.5f), decay, 120),
            struck("Buzz", buzz, spread(edge(depth), 0.05f, 0.7f), decay * 0.6f, 100),
            breath("Pick", pick, 0.7f, 0.3f, 25)};
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
    Patches sitar = plucked(0.92f, 0.95f, 2600, 0.6f, 0.3f);
    sitar[1] = swelling(sitar[1], 160);
    return {"Ethnic",
            {{"Sitar", "india drone buzz", sitar},
             {"Banjo", "folk bright", plucked(0.9f, 0.8f, 480, 0.4f, 0.5f)},
             {"Shamisen", "japan plucked", plucked(0.94f, 0.9f, 700, 0.3f, 0.8f)},
             {"Koto", "japan harp", plucked(0.86f, 0.7f, 1700, 0.25f, 0.4f)},
             {"Kalimba",
              "africa thumb piano",
              {struck("Tongue", 0.9f, spread(fm(0.2f, 12), 0.04f), 900, 250),
               struck("Buzz", 0.4f, fm(0.5f, 28.7f), 90, 60, 12)}},
             {"Bagpipe",
              "scotland drone",
              {held("Chanter", 0.8f, spread(edge(0.92f), 0.05f, 0.7f), 25, 60),
               held("Drone", 0.5f, spread(hollow(0.8f), 0.1f), 60, 80, -12)}},
             {"Fiddle",
              "folk violin",
              {swaying(held("String", 0.9f, spread(brightSaw(), 0.06f, 0.6f), 40, 90), 0.16f, 5.8f,
                       200),
               breath("Bow", 0.4f, 0.8f, 0.2f, 120, 0.4f, 15)}},
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
              {struck("Bell", 0.9f, spread(fm(0.6f, 6.6f, 0.4f), 0.04f), 300, 160),
               struck("Ring", 0.6f, spread(fm(0.5f, 19.1f), 0.08f), 420, 200, 12)}},
             {"Steel drums",
              "caribbean metal",
              {struck("Pan", 0.9f, spread(fm(0.42f, 12), 0.08f), 800, 260),
               struck("Ring", 0.5f, spread(fm(0.5f, 19.02f), 0.1f), 420, 200, 12)}},
             {"Woodblock",
              "wood dry",
              {falling(struck("Block", 0.9f, fm(0.36f, 9.1f), 80, 50), 4, 12),
               breath("Knock", 0.5f, 0.6f, 0.4f, 18)}},
             {"Taiko", "japan big drum", drum(7, 120, 900, 0.8f, 0.35f)},
             {"Melodic tom", "drum tuned", drum(9, 90, 480, 0.5f, 0.45f)},
             {"Synth drum", "eighties falling", drum(24, 320, 420, 0.4f, 0.6f)},
             {"Reverse cymbal", "swell backwards", {reverse}}}};
}

Family soundEffects() {
    return {"Sound effects",
            {{"Fret noise",
              "guitar squeak",
              {falling(struck("Squeak", 0.6f, edge(0.9f), 160, 60, 12), -9, 150),
               breath("String", 0.8f, 0.75f, 0.6f, 160)}},
             {"Breath noise", "air human", {wind("Breath", 1.0f, filterBand, 0.6f, 0.3f, 60, 200)}},
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
              {stirred(wind("Hands", 1.0f, filterBand, 0.55f, 0.2f, 300, 900), targetVolume, 0.6f,
                       23.0f, lfoRandom)}},
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
