#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

// A string that a finger or a pick leaves: bright at once, round soon after.
Patches guitar(float feed, float pm, float decay, float pick, float pickCutoff) {
    return {
        zone(struck("String", 0.9f, spread(rich(feed, pm), 0.05f, 0.5f), decay * 1.5f, 110), 0, 54),
        zone(struck("String", 0.9f, spread(rich(feed, pm), 0.05f, 0.5f), decay, 100), 55, 127),
        breath("Pick", pick, pickCutoff, 0.3f, 30)};
}

Patches bassString(float pm, float slap, float decay) {
    Patches p = {struck("String", 0.9f, fm(pm), decay, 80),
                 struck("Attack", slap, spread(fm(0.7f, 12, 0.6f), 0.05f, 0.6f), 160, 50)};
    return p;
}

Patches synthBass(const Osc& osc, float cutoff, float q, float fall) {
    Patch p = through(held("Saws", 1.0f, osc, 2, 70), filterLow, cutoff, q);
    p.filterEnv = {.decay = fall, .sustain = 0.45f, .release = hold, .decayCurve = 0.2f};
    p.velCutoff = 0.35f;
    return {p, held("Ground", 0.6f, fm(0.36f), 2, 70)};
}

// One bow: the string, its box, and the hair.
Patches bow(float attack, float boxCutoff, float hair, float vibratoDepth) {
    return {
        swaying(swelling(held("String", 0.8f, spread(rich(0.95f, 0.45f), 0.05f, 0.5f), attack, 150),
                         attack),
                vibratoDepth, 5.6f, 260),
        swaying(through(held("Box", 0.6f, plainSaw(0.03f, 0.8f), attack, 140), filterBand,
                        boxCutoff, 0.4f),
                vibratoDepth, 5.6f, 260),
        breath("Bow", hair, 0.75f, 0.2f, 200, 0.4f, 40)};
}

// Many bows.
Patches section(float attack, float release, float feed, float low) {
    return {
        doubled(swelling(held("High", 0.8f, spread(rich(feed, 0.4f), 0.4f, 1.0f), attack, release),
                         attack),
                0.5f, 22, 0.2f, 0.7f),
        held("Low", low, spread(rich(feed, 0.3f), 0.46f, 1.0f), attack * 1.2f, release, -12)};
}

// A vowel: what passes through two bands.
Patches voices(float first, float second, float attack) {
    const auto part = [&](const char* name, float volume, float cutoff) {
        return swaying(
            doubled(through(held(name, volume, spread(rich(0.92f, 0.4f), 0.36f, 1.0f), attack, 320),
                            filterBand, cutoff, 0.62f),
                    0.5f, 20, 0.2f, 0.6f),
            0.12f, 5.0f, 300);
    };
    return {part("Throat", 0.8f, first), part("Mouth", 0.7f, second),
            // Notes beyond the bands keep their strength.
            doubled(held("Chest", 0.5f, spread(fm(0.36f), 0.3f, 1.0f), attack, 320), 0.5f, 20, 0.2f,
                    0.6f),
            breath("Air", 0.14f, 0.8f, 0.1f, 400, 0.6f, attack)};
}

Family guitars() {
    return {
        "Guitar",
        {{"Nylon guitar", "acoustic classic spanish", guitar(0.74f, 0.45f, 1500, 0.3f, 0.45f)},
         {"Steel guitar", "acoustic folk western", guitar(0.92f, 0.5f, 2000, 0.5f, 0.75f)},
         {"Jazz guitar", "electric round soft", guitar(0.6f, 0.4f, 1700, 0.2f, 0.4f)},
         {"Clean guitar", "electric chorus",
          [] {
              Patches p = guitar(0.84f, 0.55f, 2400, 0.35f, 0.65f);
              for (Patch& s : p) s = doubled(s, 0.4f, 12, 0.15f, 0.7f);
              return p;
          }()},
         {"Muted guitar", "electric palm short", guitar(0.8f, 0.45f, 220, 0.6f, 0.5f)},
         {"Overdriven guitar",
          "electric rock crunch",
          {driven(
               longer(struck("String", 0.9f, spread(hollow(0.72f), 0.05f, 0.5f), 5000, 100), 0.5f)),
           longer(struck("Body", 0.5f, rich(0.9f, 0.45f), 4000, 100), 0.4f),
           breath("Pick", 0.4f, 0.6f, 0.3f, 30)}},
         {"Distortion guitar",
          "electric metal lead",
          {driven(longer(struck("String", 1.0f, spread(hollow(0.95f), 0.08f, 0.7f), 6000, 100),
                         0.75f)),
           driven(through(
               longer(struck("Low", 0.8f, pulsePair(0, 1.0f, 0.92f, 0.4f), 6000, 100, -12), 0.7f),
               filterBand, 0.36f, 0.6f))}},
         {"Guitar harmonics",
          "electric flageolet",
          {struck("Harmonic", 0.9f, spread(fm(0.3f, 12), 0.05f), 2600, 200, 12),
           struck("Pick", 0.4f, hollow(0.7f), 120, 60, 12)}}}};
}

Family basses() {
    return {
        "Bass",
        {{"Acoustic bass", "upright jazz",
          [] {
              Patches p = bassString(0.6f, 0.4f, 1900);
              p.push_back(breath("Finger", 0.5f, 0.42f, 0.4f, 55));
              return p;
          }()},
         {"Finger bass", "electric round", bassString(0.72f, 0.35f, 2600)},
         {"Picked bass", "electric bright",
          [] {
              Patches p = bassString(0.8f, 0.6f, 2400);
              p.push_back(breath("Pick", 0.4f, 0.7f, 0.3f, 20));
              return p;
          }()},
         {"Fretless bass",
          "electric singing",
          {swaying(longer(struck("String", 0.9f, fm(0.66f), 3400, 110), 0.35f), 0.12f, 4.8f, 350),
           swelling(longer(struck("Mwah", 0.5f, rich(0.8f, 0.4f), 2400, 110), 0.2f), 180)}},
         {"Slap bass", "electric funk thumb", bassString(0.84f, 0.9f, 1900)},
         {"Pop bass", "electric funk popped",
          [] {
              Patches p = bassString(0.78f, 0.9f, 1500);
              p[1].coarse = 12;
              return p;
          }()},
         {"Synth bass", "analog filter", synthBass(pulsePair(0.16f, 0.4f), 0.86f, 0.5f, 420)},
         {"Square bass", "analog hollow rubber", synthBass(hollow(0.5f), 0.8f, 0.65f, 240)}}};
}

Family bowed() {
    Patches tremolo = section(40, 200, 0.95f, 0.5f);
    for (Patch& p : tremolo) p = trembling(p, 0.6f, 11.0f);
    return {"Strings",
            {{"Violin", "solo bowed", bow(80, 0.4f, 0.3f, 0.24f)},
             {"Viola", "solo bowed dark", bow(90, 0.33f, 0.26f, 0.22f)},
             {"Cello", "solo bowed low", bow(95, 0.24f, 0.24f, 0.2f)},
             {"Contrabass", "solo bowed deep", bow(120, 0.18f, 0.24f, 0.12f)},
             {"Tremolo strings", "ensemble shaking", tremolo},
             {"Pizzicato strings",
              "ensemble plucked",
              {struck("Strings", 0.9f, spread(rich(0.8f, 0.5f), 0.26f), 330, 130),
               struck("Wood", 0.5f, spread(fm(0.4f), 0.1f), 160, 90, -12),
               breath("Finger", 0.4f, 0.5f, 0.3f, 30)}},
             {"Harp",
              "orchestra plucked",
              {struck("String", 0.9f, spread(rich(0.56f, 0.46f), 0.1f), 2200, 700),
               struck("Finger", 0.3f, fm(0.4f, 12), 90, 60, 12)}},
             {"Timpani",
              "orchestra drum",
              {falling(struck("Skin", 0.95f, fm(0.3f, 7.0f), 1300, 600), 1.5f, 60),
               struck("Overtone", 0.5f, fm(0.3f, 5.2f), 600, 400, 7),
               breath("Stick", 0.7f, 0.35f, 0.3f, 60)}}}};
}

Family ensembles() {
    return {"Ensemble",
            {{"Strings", "orchestra ensemble", section(160, 320, 0.95f, 0.5f)},
             {"Slow strings", "orchestra ensemble soft", section(420, 600, 0.85f, 0.6f)},
             {"Synth strings", "analog ensemble machine",
              [] {
                  Patches p = section(120, 420, 0.92f, 0.3f);
                  for (Patch& s : p) s = doubled(s, 0.6f, 12, 0.35f, 0.9f);
                  p[1].coarse = 12;
                  return p;
              }()},
             {"Soft synth strings", "analog ensemble warm",
              [] {
                  Patches p = section(300, 620, 0.7f, 0.5f);
                  for (Patch& s : p) s = doubled(s, 0.6f, 14, 0.3f, 0.5f);
                  return p;
              }()},
             {"Choir aahs", "voices vowel", voices(0.34f, 0.42f, 120)},
             {"Choir oohs", "voices dark", voices(0.22f, 0.3f, 150)},
             {"Synth voice", "vocal digital", voices(0.27f, 0.6f, 60)},
             {"Orchestra hit",
              "stab tutti",
              {struck("Tutti", 0.9f, spread(brightSaw(), 0.4f, 1.0f), 700, 250),
               struck("Low", 0.8f, spread(rich(0.9f, 0.4f), 0.3f), 800, 250, -12),
               struck("High", 0.6f, spread(edge(0.9f), 0.4f, 1.0f), 500, 250, 12),
               breath("Blow", 0.8f, 0.5f, 0.1f, 120)}}}};
}

} // namespace

std::vector<Family> strings() {
    return {guitars(), basses(), bowed(), ensembles()};
}

} // namespace gm
