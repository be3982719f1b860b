#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

Patches lead(const Osc& osc, float second, float secondCoarse) {
    return {swaying(placed(held("Lead", 0.9f, osc, 2, 90), -0.2f), 0.14f, 5.6f, 350),
            swaying(placed(held("Second", second, osc, 3, 90, secondCoarse + 0.03f), 0.4f), 0.14f,
                    5.6f, 350)};
}

Patch slow(const char* name, float volume, const Osc& osc, float attack, float coarse = 0.0f,
           float release = 900) {
    Patch p = doubled(held(name, volume, osc, attack, release, coarse), 0.45f, 22, 0.2f, 0.4f);
    p.reverb = 0.4f;
    return p;
}

Patches vowelPad(float band, float attack) {
    return {swaying(through(slow("Voices", 1.0f, spread(rich(0.92f, 0.4f), 0.4f, 1.0f), attack),
                            filterBand, band, 0.6f),
                    0.1f, 4.8f, 300),
            placed(slow("Air", 0.5f, fm(0.4f, 12), attack * 1.5f, 12), 0.5f),
            placed(slow("Chest", 0.5f, fm(0.36f), attack), -0.5f)};
}

// A bell in front, a pad behind.
Patches bellPad(float ratio, float depth, float decay, float padDepth, float padCoarse) {
    Patches p = {placed(struck("Bell", 0.7f, fm(depth, ratio), decay, 900, 12), 0.3f),
                 slow("Pad", 0.7f, spread(fm(padDepth, 12, 0.4f), 0.36f, 1.0f), 320, padCoarse)};
    p[0].reverb = 0.4f;
    return p;
}

Patch wandering(Patch p, float cutoff, float amount, float hz) {
    p = through(p, filterLow, cutoff, 0.5f);
    p.lfos[3] = {.target = targetCutoff, .amount = amount, .hz = hz, .wave = lfoSin};
    return p;
}

Family leads() {
    return {"Synth lead",
            {{"Square lead", "hollow chip", lead(hollow(0.45f), 0.4f, 12)},
             {"Saw lead", "bright analog",
              [] {
                  Patches p = lead(brightSaw(), 0.6f, 0.04f);
                  p.push_back(placed(held("Edge", 0.4f, edge(0.95f), 2, 90, 12), -0.3f));
                  return p;
              }()},
             {"Calliope",
              "steam organ whistle",
              {placed(held("Pipe", 0.9f, fm(0.26f), 8, 90), -0.3f),
               placed(held("Octave", 0.6f, fm(0.2f), 30, 90, 12), 0.5f),
               placed(held("Twelfth", 0.6f, fm(0.2f), 35, 90, 19), 0.5f),
               breath("Steam", 0.7f, 0.6f, 0.4f, 300, 0.5f, 10)}},
             {"Chiff lead",
              "breath short attack",
              {held("Tone", 0.9f, spread(hollow(0.36f), 0.1f), 10, 120),
               struck("Chiff", 0.9f, edge(0.9f), 90, 60, 12), breath("Air", 0.6f, 0.7f, 0.3f, 70)}},
             {"Charang",
              "guitar distorted lead",
              {driven(held("Drive", 0.9f, spread(hollow(0.9f), 0.06f, 0.6f), 2, 120)),
               placed(held("Saw", 0.5f, brightSaw(), 2, 120, 12), 0.5f)}},
             {"Voice lead",
              "vocal solo",
              {swaying(placed(through(held("Throat", 1.0f, rich(0.9f, 0.5f), 50, 140), filterBand,
                                      0.44f, 0.85f),
                              -0.5f),
                       0.16f, 5.2f, 200),
               swaying(placed(through(held("Nose", 0.4f, edge(0.6f), 50, 140), filterBand, 0.58f,
                                      0.85f),
                              0.5f),
                       0.16f, 5.2f, 200),
               held("Tone", 0.5f, fm(0.1f), 30, 140)}},
             {"Fifths lead",
              "parallel power",
              {placed(held("Saw", 0.8f, brightSaw(), 2, 110), -0.5f),
               placed(held("Fifth", 0.7f, brightSaw(), 2, 110, 7), 0.5f)}},
             {"Bass and lead",
              "fat octave",
              {single(held("Lead", 0.8f, spread(edge(0.8f), 0.08f, 0.6f), 2, 90), 30),
               single(held("Bass", 0.9f, rich(0.9f, 0.4f), 2, 90, -12), 30)}}}};
}

Family padsFamily() {
    return {"Synth pad",
            {{"New age pad", "bell soft fantasia", bellPad(24, 0.5f, 2400, 0.4f, 0)},
             {"Warm pad",
              "analog soft slow",
              {slow("Saws", 0.9f, spread(rich(0.66f, 0.3f), 0.4f, 1.0f), 420),
               slow("Ground", 0.5f, fm(0.3f), 380, -12)}},
             {"Polysynth pad",
              "analog bright",
              {[] {
                   Patch p =
                       muffled(slow("Pulse", 0.9f, pulsePair(0.3f, 0.5f, 0.95f, 0.4f), 160, 0, 500),
                               0.9f, 0.45f);
                   p.filterEnv = {
                       .decay = 900, .sustain = 0.5f, .release = hold, .decayCurve = 0.2f};
                   return p;
               }(),
               placed(slow("Octave", 0.4f, edge(0.5f), 60, 24, 400), -0.4f)}},
             {"Choir pad", "voices space", vowelPad(0.36f, 260)},
             {"Bowed pad",
              "glass rubbed",
              {slow("Glass", 0.9f, spread(fm(0.42f, 19), 0.2f, 1.0f), 700),
               slow("Rim", 0.3f, fm(0.5f, 36), 1000)}},
             {"Metallic pad",
              "metal shimmer",
              {slow("Metal", 0.7f, spread(fm(0.66f, 21.35f, 0.3f), 0.2f, 1.0f), 160),
               slow("Ground", 0.7f, spread(hollow(0.3f), 0.2f, 1.0f), 200)}},
             {"Halo pad", "voices air high", vowelPad(0.55f, 500)},
             {"Sweep pad", "filter moving", [] {
                  Patch p = slow("Saws", 1.0f, pulsePair(0.4f, 0.4f, 0.95f, 0.45f), 300);
                  p = through(p, filterLow, 1.0f, 0.6f);
                  p.filterEnv = {.attack = 2200,
                                 .decay = 2600,
                                 .sustain = 0.45f,
                                 .release = hold,
                                 .initial = 0.2f};
                  return Patches{p, slow("Ground", 0.4f, fm(0.3f), 300)};
              }()}}};
}

Family effects() {
    Patch drop = placed(struck("Drop", 0.7f, fm(0.4f, 24), 700, 500, 12), 0.2f);
    drop.delay = 0.5f;
    Patch echo = placed(struck("Echo", 0.8f, hollow(0.7f), 600, 300), -0.3f);
    echo.delay = 0.7f;
    return {"Synth effects",
            {{"Rain",
              "drops glass",
              {drop, slow("Mist", 0.4f, spread(fm(0.5f, 31, 0.5f), 0.4f, 1.0f), 500)}},
             {"Soundtrack",
              "film fifth wide",
              {slow("Saws", 0.8f, spread(rich(0.85f, 0.4f), 0.42f, 1.0f), 380),
               placed(slow("Fifth", 0.6f, rich(0.8f, 0.4f), 600, 7), 0.4f)}},
             {"Crystal",
              "bell ice",
              {placed(struck("Crystal", 0.8f, fm(0.62f, 33), 2200, 900, 12), -0.6f),
               placed(struck("Ice", 0.4f, fm(0.5f, 21.4f), 900, 700, 24), 0.9f)}},
             {"Atmosphere",
              "guitar pad nylon",
              {placed(struck("String", 0.8f, rich(0.8f, 0.5f), 1400, 700), -0.3f),
               placed(struck("Nail", 0.4f, hollow(0.8f), 500, 400, 12), 0.5f),
               slow("Air", 0.7f, spread(rich(0.7f, 0.3f), 0.42f, 1.0f), 600, 12)}},
             {"Brightness",
              "shine digital",
              {placed(struck("Glass", 0.7f, fm(0.7f, 24, 0.5f), 2600, 800), -0.3f),
               through(slow("Shine", 0.7f, spread(edge(0.8f), 0.3f, 1.0f), 300, 12), filterHigh,
                       0.5f, 0.2f),
               slow("Ground", 0.3f, fm(0.3f), 240)}},
             {"Goblins",
              "dark moving",
              {wandering(slow("Cave", 1.0f, spread(fm(0.7f, 6.2f, 0.5f), 0.5f, 1.0f), 600), 0.7f,
                         0.6f, 0.6f),
               slow("Ground", 0.7f, fm(0.4f), 500)}},
             {"Echoes", "delay drops", {echo, placed(slow("Tail", 0.3f, fm(0.4f, 12), 300), 0.5f)}},
             {"Sci-fi",
              "space star theme",
              {wandering(slow("Saws", 1.0f, pulsePair(0.36f, 0.5f, 0.95f, 0.45f), 120), 0.66f, 0.8f,
                         3.4f),
               placed(struck("Star", 0.8f, fm(0.6f, 21.35f), 1700, 900, 24), 0.3f),
               slow("Space", 0.3f, fm(0.5f, 31, 0.5f), 900, 12)}}}};
}

} // namespace

std::vector<Family> synths() {
    return {leads(), padsFamily(), effects()};
}

} // namespace gm
