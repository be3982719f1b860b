#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

// Lips: the louder, the more partials, one after the other.
Patches brass(float feed, float attack, float body, float depth) {
    return {
        swaying(swelling(held("Brass", 0.9f, spread(rich(feed, 0.46f), 0.04f, 0.5f), attack, 90),
                         attack * 1.6f),
                depth, 5.2f, 550),
        through(held("Bell", 0.5f, spread(rich(feed * 0.9f, 0.4f), 0.03f), attack, 90), filterBand,
                body, 0.4f),
        breath("Breath", 0.26f, 0.55f, 0.3f, 80, 0.1f, 8)};
}

Patches brassSection(float feed, float attack, float detune) {
    return {
        doubled(swelling(held("Brass", 0.9f, spread(rich(feed, 0.45f), detune, 0.9f), attack, 120),
                         attack * 1.5f),
                0.35f, 15, 0.15f, 0.5f),
        swelling(held("Low", 0.55f, spread(rich(feed, 0.4f), detune, 1.0f), attack, 120, -12),
                 attack * 1.5f)};
}

// A cone with a reed: all partials, and a body that sings at one place.
Patches sax(float feed, float body, float attack, float air) {
    return {
        swaying(swelling(held("Reed", 0.85f, spread(rich(feed, 0.56f), 0.03f, 0.5f), attack, 90),
                         attack * 1.3f),
                0.16f, 5.0f, 350),
        swaying(through(held("Body", 0.6f, edge(0.7f), attack, 90), filterBand, body, 0.5f), 0.16f,
                5.0f, 350),
        breath("Breath", air, 0.6f, 0.3f, 150, 0.3f, 12)};
}

// A narrow cone with two reeds: little ground, much above.
Patches doubleReed(float depth, float highPass, float attack) {
    return {swaying(through(held("Reeds", 0.9f, spread(edge(depth), 0.03f, 0.5f), attack, 80),
                            filterHigh, highPass, 0.4f),
                    0.14f, 5.3f, 300),
            held("Ground", 0.6f, fm(0.36f), attack, 80)};
}

// A tube that air blows over: nearly a sine, the air, and the tongue.
Patches tube(float pm, float air, float airCutoff, float attack, float tongue) {
    return {swaying(held("Tube", 0.9f, spread(fm(pm), 0.02f, 0.5f), attack, 110), 0.1f, 5.0f, 350),
            breath("Air", air, airCutoff, 0.6f, 240, 0.4f, attack * 0.4f),
            struck("Tongue", tongue, fm(0.4f, 7.3f, 0.5f), 90, 50, 12)};
}

Family brasses() {
    return {"Brass",
            {{"Trumpet", "solo bright", brass(0.95f, 32, 0.42f, 0.16f)},
             {"Trombone", "solo round", brass(0.88f, 48, 0.3f, 0.14f)},
             {"Tuba", "solo deep", brass(0.72f, 55, 0.2f, 0.06f)},
             {"Muted trumpet", "solo nasal jazz",
              [] {
                  Patches p = brass(0.95f, 28, 0.6f, 0.16f);
                  p[0] = through(p[0], filterHigh, 0.24f, 0.1f);
                  return p;
              }()},
             {"French horn", "solo soft far", brass(0.62f, 65, 0.25f, 0.06f)},
             {"Brass section", "ensemble stab", brassSection(0.95f, 30, 0.3f)},
             {"Synth brass", "analog stab eighties", brassSection(0.92f, 12, 0.44f)},
             {"Soft synth brass", "analog warm slow", brassSection(0.7f, 70, 0.4f)}}};
}

Family reedsFamily() {
    return {"Reed",
            {{"Soprano sax", "solo bright", sax(0.88f, 0.48f, 35, 0.2f)},
             {"Alto sax", "solo jazz", sax(0.86f, 0.4f, 38, 0.26f)},
             {"Tenor sax", "solo jazz warm", sax(0.82f, 0.33f, 42, 0.34f)},
             {"Baritone sax", "solo deep", sax(0.9f, 0.26f, 45, 0.3f)},
             {"Oboe", "solo nasal", doubleReed(0.86f, 0.22f, 40)},
             {"English horn", "solo dark pastoral", doubleReed(0.72f, 0.17f, 48)},
             {"Bassoon", "solo low", doubleReed(0.6f, 0.13f, 42)},
             {"Clarinet",
              "solo hollow",
              {swaying(held("Reed", 0.9f, spread(fm(0.42f, 12, 0.6f), 0.02f, 0.5f), 40, 90), 0.05f,
                       5.0f, 500),
               breath("Breath", 0.2f, 0.55f, 0.4f, 130, 0.2f, 15)}}}};
}

Family pipesFamily() {
    Patches whistle = tube(0.12f, 0.2f, 0.75f, 40, 0.1f);
    whistle[0] = swaying(whistle[0], 0.25f, 6.0f, 120);
    Patches shakuhachi = tube(0.52f, 0.7f, 0.6f, 70, 0.6f);
    shakuhachi[0] = swaying(shakuhachi[0], 0.3f, 4.6f, 500);
    return {"Pipe",
            {{"Piccolo", "solo high", tube(0.3f, 0.26f, 0.75f, 45, 0.4f)},
             {"Flute", "solo soft", tube(0.44f, 0.34f, 0.6f, 65, 0.36f)},
             {"Recorder", "solo renaissance", tube(0.36f, 0.16f, 0.65f, 30, 0.6f)},
             {"Pan flute", "breath andes", tube(0.26f, 0.75f, 0.62f, 25, 0.9f)},
             {"Blown bottle", "breath jug", tube(0.14f, 0.85f, 0.4f, 55, 0.2f)},
             {"Shakuhachi", "breath japanese", shakuhachi},
             {"Whistle", "human clear", whistle},
             {"Ocarina", "clay round", tube(0.2f, 0.1f, 0.5f, 40, 0.3f)}}};
}

} // namespace

std::vector<Family> winds() {
    return {brasses(), reedsFamily(), pipesFamily()};
}

} // namespace gm
