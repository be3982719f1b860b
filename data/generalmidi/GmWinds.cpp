#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

// Lips: the louder, the more partials, one after the other. The wider the tube, the fewer of them.
Patches brass(float depth, float attack, float top, float bell, float ground, float sway) {
    return {
        swaying(
            muffled(swelling(held("Brass", 0.9f, edgePair(depth, 0.4f), attack, 90), attack * 1.6f),
                    top, 0.2f),
            sway, 5.2f, 550),
        placed(through(held("Bell", 0.6f, rich(0.9f, 0.4f), attack, 90), filterBand, bell, 0.5f),
               0.35f),
        placed(held("Ground", ground, fm(0.24f), attack, 90), -0.25f),
        breath("Breath", 0.26f, 0.55f, 0.3f, 240, 0.0f, 8)};
}

Patches brassSection() {
    const auto blown = [](const char* name, float volume, float feed, float coarse) {
        return swelling(held(name, volume, spread(rich(feed, 0.45f), 0.3f, 0.9f), 30, 120, coarse),
                        45);
    };
    return {doubled(blown("Trumpets", 0.9f, 0.95f, 0), 0.35f, 15, 0.15f, 0.5f),
            blown("Trombones", 0.5f, 0.9f, -12),
            placed(struck("Lips", 0.6f, edge(1.0f), 220, 100, 12), 0.3f),
            breath("Breath", 0.4f, 0.6f, 0.2f, 120, 0.2f, 10)};
}

// Saws behind a filter that the key opens and that closes behind it.
Patches filterBrass(float attack, float cutoff, float q, float fall) {
    Patch saws =
        muffled(doubled(held("Saws", 0.9f, pulsePair(0.3f, 0.4f, 0.95f, 0.4f), attack, 120), 0.35f,
                        15, 0.15f, 0.5f),
                cutoff, q);
    saws.filterEnv = {.attack = attack * 1.4f,
                      .decay = fall,
                      .sustain = 0.5f,
                      .release = hold,
                      .initial = 0.3f,
                      .decayCurve = 0.2f};
    return {saws, placed(held("Low", 0.4f, fm(0.4f), attack, 120, -12), -0.5f),
            placed(held("Ground", 0.3f, fm(0.2f), attack, 120), 0.5f)};
}

struct Sax {
    float depth, top;       ///< how hard the reed beats, and what the bell lets out
    float body, bodyVolume; ///< where the tube sings
    float attack;
    float air, airCutoff;
};

// A cone with a reed: all partials, and a body that sings at one place.
Patches sax(const Sax& s) {
    const auto sung = [](const Patch& p) { return swaying(p, 0.16f, 5.0f, 350); };
    return {sung(muffled(
                swelling(held("Reed", 0.85f, edgePair(s.depth), s.attack, 90), s.attack * 1.3f),
                s.top, 0.15f)),
            sung(placed(through(held("Body", s.bodyVolume, edge(0.8f), s.attack, 90), filterBand,
                                s.body, 0.6f),
                        0.2f)),
            sung(placed(held("Ground", 0.5f, fm(0.3f), s.attack, 90), -0.25f)),
            breath("Breath", s.air, s.airCutoff, 0.3f, 150, 0.4f, 12)};
}

// A narrow cone with two reeds: little ground, much above, and a vowel.
Patches doubleReed(float depth, float highPass, float attack, float vowel) {
    return {
        swaying(placed(through(held("Reeds", 0.9f, edge(depth), attack, 80), filterHigh, highPass,
                               0.4f),
                       -0.16f),
                0.14f, 5.3f, 300),
        placed(through(held("Vowel", 0.7f, edge(0.7f), attack, 80), filterBand, vowel, 0.8f), 0.2f),
        held("Ground", 0.55f, fm(0.36f), attack, 80)};
}

// A tube that air blows over: nearly a sine, the air, and the tongue.
Patches tube(float pm, float air, float airCutoff, float attack, float tongue) {
    return {swaying(placed(held("Tube", 0.9f, fm(pm), attack, 110), -0.12f), 0.1f, 5.0f, 350),
            placed(breath("Air", air, airCutoff, 0.6f, 240, 0.4f, attack * 0.4f), 0.2f),
            struck("Tongue", tongue, fm(0.4f, 7.3f, 0.5f), 90, 50, 12)};
}

Family brasses() {
    return {
        "Brass",
        {{"Trumpet", "solo bright",
          [] {
              Patches p = brass(0.97f, 34, 1.0f, 0.46f, 0.3f, 0.16f);
              p.push_back(struck("Lips", 0.7f, edge(1.0f), 110, 60, 24));
              return p;
          }()},
         {"Trombone", "solo round",
          [] {
              Patches p = brass(0.84f, 50, 0.5f, 0.3f, 0.5f, 0.14f);
              p[1].volume = 1.0f;
              p.push_back(struck("Lips", 0.7f, edge(0.9f), 220, 60, 12));
              p[0] = through(p[0], filterLow, 0.7f, 0.1f);
              p[3].volume = 0.5f;
              return p;
          }()},
         {"Tuba", "solo deep", brass(0.5f, 130, 0.26f, 0.16f, 0.7f, 0.06f)},
         {"Muted trumpet",
          "solo nasal jazz",
          {swaying(placed(through(held("Mute", 1.0f, edge(0.95f), 28, 80), filterHigh, 0.46f, 0.3f),
                          -0.25f),
                   0.16f, 5.2f, 500),
           placed(through(held("Cup", 0.6f, edge(0.9f), 28, 80), filterBand, 0.56f, 0.7f), 0.3f),
           held("Ground", 0.3f, fm(0.16f), 28, 80)}},
         {"French horn", "solo soft far",
          [] {
              Patches p = brass(0.8f, 150, 0.36f, 0.4f, 0.4f, 0.06f);
              p[0] = swelling(p[0], 420);
              p[1].volume = 0.8f;
              for (Patch& s : p) s.reverb = 0.45f;
              return p;
          }()},
         {"Brass section", "ensemble stab", brassSection()},
         {"Synth brass", "analog stab eighties", filterBrass(12, 1.0f, 0.3f, 520)},
         {"Soft synth brass", "analog warm slow", filterBrass(160, 0.5f, 0.2f, 1800)}}};
}

Family reedsFamily() {
    return {"Reed",
            {{"Soprano sax", "solo bright",
              [] {
                  Patches p = sax({0.8f, 1.0f, 0.62f, 0.8f, 30, 0.4f, 0.9f});
                  p[0] = through(p[0], filterHigh, 0.34f, 0.2f);
                  return p;
              }()},
             {"Alto sax", "solo jazz", sax({0.9f, 0.66f, 0.47f, 0.9f, 26, 0.3f, 0.66f})},
             {"Tenor sax", "solo jazz warm",
              [] {
                  Patches p = sax({0.8f, 0.44f, 0.33f, 0.8f, 36, 0.6f, 0.5f});
                  for (Patch& s : p) s.velPhaseMod *= 0.4f;
                  return p;
              }()},
             {"Baritone sax", "solo deep",
              [] {
                  Patches p = sax({0.95f, 0.5f, 0.22f, 0.7f, 50, 0.3f, 0.4f});
                  p.push_back(placed(
                      through(held("Rasp", 0.5f, edge(1.0f), 50, 90, -12), filterHigh, 0.6f, 0.2f),
                      0.3f));
                  return p;
              }()},
             {"Oboe", "solo nasal",
              [] {
                  Patches p = doubleReed(0.86f, 0.3f, 40, 0.42f);
                  p[0] = through(p[0], filterBand, 0.72f, 0.7f);
                  return p;
              }()},
             {"English horn", "solo dark pastoral",
              [] {
                  Patches p = doubleReed(0.7f, 0.24f, 90, 0.34f);
                  p[0].osc = hollow(0.4f);
                  p.push_back(breath("Breath", 0.5f, 0.8f, 0.4f, 200, 0.5f, 20));
                  return p;
              }()},
             {"Bassoon", "solo low",
              [] {
                  Patches p = doubleReed(0.5f, 0.22f, 42, 0.27f);
                  p[0].osc = edgePair(0.7f);
                  p[0] = muffled(p[0], 0.36f, 0.3f);
                  p.push_back(struck("Tongue", 0.5f, hollow(0.7f), 110, 60));
                  return p;
              }()},
             {"Clarinet",
              "solo hollow",
              {swaying(placed(held("Reed", 0.9f, fm(0.42f, 12, 0.6f), 40, 90), -0.18f), 0.05f, 5.0f,
                       500),
               placed(breath("Breath", 0.2f, 0.55f, 0.4f, 130, 0.2f, 15), 0.3f)}}}};
}

Family pipesFamily() {
    Patches whistle = tube(0.06f, 0.3f, 0.9f, 70, 0.1f);
    whistle[0] = swaying(whistle[0], 0.3f, 6.0f, 120);
    Patches shakuhachi = tube(0.44f, 1.0f, 0.5f, 140, 0.9f);
    shakuhachi[0] = swaying(shakuhachi[0], 0.3f, 4.6f, 500);
    return {"Pipe",
            {{"Piccolo", "solo high", tube(0.36f, 0.36f, 1.0f, 30, 0.7f)},
             {"Flute", "solo soft", tube(0.44f, 0.34f, 0.6f, 65, 0.36f)},
             {"Recorder", "solo renaissance", tube(0.36f, 0.16f, 0.65f, 30, 0.6f)},
             {"Pan flute", "breath andes", tube(0.26f, 0.75f, 0.62f, 25, 0.9f)},
             {"Blown bottle", "breath jug", tube(0.14f, 0.85f, 0.4f, 55, 0.2f)},
             {"Shakuhachi", "breath japanese", shakuhachi},
             {"Whistle", "human clear", whistle},
             {"Ocarina", "clay round", tube(0.1f, 0.3f, 0.36f, 50, 0.3f)}}};
}

} // namespace

std::vector<Family> winds() {
    return {brasses(), reedsFamily(), pipesFamily()};
}

} // namespace gm
