#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

// A string that a finger or a pick leaves: bright at once, round soon after.
Patches guitar(const Osc& osc, float decay, float pick, float pickCutoff) {
    return {zone(struck("String", 0.9f, osc, decay * 1.5f, 110), 0, 54),
            zone(struck("String", 0.9f, osc, decay, 100), 55, 127),
            breath("Pick", pick, pickCutoff, 0.3f, 30)};
}

// The same under a finger, or far from the bridge: the top goes through a low-pass, the knock is
// that of the box.
Patches softGuitar(float depth, float cutoff, float decay, float knock, float box) {
    return {muffled(struck("String", 0.9f, edgePair(depth), decay, 110), cutoff),
            struck("Ground", 0.6f, fm(0.2f), decay * 1.2f, 110),
            breath("Knock", knock, box, 0.6f, 60)};
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

// One bow: the string, its box, and the hair. The larger the box, the lower it sings, and the less
// of the string's top it lets through.
Patches bow(float attack, float top, float boxCutoff, float box, float hair, float hairCutoff,
            float vibratoDepth) {
    const auto sung = [&](const Patch& p) { return swaying(p, vibratoDepth, 5.6f, 260); };
    return {
        sung(muffled(swelling(held("String", 0.8f, edgePair(0.9f), attack, 150), attack), top)),
        sung(placed(through(held("Box", box, plainSaw(), attack, 140), filterBand, boxCutoff, 0.5f),
                    0.25f)),
        sung(placed(held("Ground", 0.45f, fm(0.2f), attack, 150), -0.25f)),
        breath("Bow", hair, hairCutoff, 0.3f, 200, 0.5f, attack * 0.4f)};
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
            doubled(held("Chest", 0.5f, fm(0.36f), attack, 320), 0.5f, 20, 0.2f, 0.6f),
            breath("Air", 0.14f, 0.8f, 0.1f, 400, 0.6f, attack)};
}

Family guitars() {
    return {
        "Guitar",
        {{"Nylon guitar", "acoustic classic spanish", softGuitar(0.8f, 0.66f, 1300, 0.3f, 0.24f)},
         {"Steel guitar", "acoustic folk western",
          [] {
              Patches p = guitar(rich(0.92f, 0.5f), 2000, 0.6f, 0.8f);
              p.push_back(placed(struck("Shine", 0.45f, hollow(0.92f), 1100, 110, 12), 0.3f));
              p.push_back(breath("Box", 0.6f, 0.22f, 0.6f, 90));
              p.push_back(placed(struck("Octaves", 0.3f, hollow(0.6f), 1600, 110, 24), 0.4f));
              for (int i = 0; i < 2; i++) p[size_t(i)].pan = -0.3f;
              for (int i = 0; i < 2; i++) p[size_t(i)].cutoff = 0.36f;
              return p;
          }()},
         {"Jazz guitar", "electric round soft", softGuitar(0.4f, 0.3f, 3600, 0.5f, 0.5f)},
         {"Clean guitar", "electric chorus",
          [] {
              Patches p = guitar(pulsePair(0, 0.4f, 0.8f, 0.3f), 3200, 0.35f, 0.65f);
              for (Patch& s : p) s = doubled(s, 0.4f, 12, 0.15f, 0.7f);
              for (int i = 0; i < 2; i++) p[size_t(i)].cutoff = 0.3f;
              p.push_back(longer(struck("Ground", 0.3f, fm(0.2f), 4000, 110), 0.2f));
              p.push_back(
                  longer(placed(struck("Chime", 0.5f, fm(0.3f, 12), 3000, 110, 12), 0.4f), 0.5f));
              return p;
          }()},
         {"Muted guitar",
          "electric palm short",
          {muffled(struck("String", 0.9f, edgePair(0.8f), 240, 100), 0.5f, 0.3f),
           struck("Ground", 0.5f, fm(0.3f), 150, 90), breath("Palm", 0.8f, 0.3f, 0.5f, 45),
           breath("Pick", 0.5f, 0.8f, 0.2f, 20)}},
         {"Overdriven guitar",
          "electric rock crunch",
          {driven(longer(placed(struck("String", 0.9f, hollow(0.72f), 5000, 100), -0.3f), 0.5f)),
           longer(placed(struck("Body", 0.5f, rich(0.9f, 0.45f), 4000, 100), 0.5f), 0.4f),
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
          {placed(struck("Harmonic", 0.9f, fm(0.3f, 12), 2600, 200, 12), -0.1f),
           placed(struck("Pick", 0.4f, hollow(0.7f), 120, 60, 12), 0.2f)}}}};
}

Family basses() {
    return {
        "Bass",
        {{"Acoustic bass", "upright jazz",
          [] {
              Patches p = bassString(0.6f, 0.5f, 800);
              p.push_back(breath("Finger", 0.8f, 0.24f, 0.6f, 110));
              p[0].pan = -0.14f;
              p.push_back(placed(struck("Box", 0.5f, fm(0.3f), 1300, 120), 0.2f));
              return p;
          }()},
         {"Finger bass",
          "electric round",
          {muffled(longer(struck("String", 0.9f, edgePair(0.9f), 1200, 80), 0.2f), 0.46f, 0.7f),
           longer(struck("Ground", 0.8f, fm(0.3f), 1800, 80), 0.2f),
           breath("Finger", 0.4f, 0.4f, 0.6f, 50)}},
         {"Picked bass",
          "electric bright",
          {longer(placed(struck("String", 0.9f, edge(0.8f), 2400, 80), -0.12f), 0.12f),
           placed(struck("Ground", 0.5f, fm(0.3f), 2600, 80), 0.12f),
           breath("Pick", 0.6f, 0.75f, 0.3f, 30)}},
         {"Fretless bass",
          "electric singing",
          {swaying(longer(struck("String", 0.9f, fm(0.66f), 3400, 110), 0.35f), 0.12f, 4.8f, 350),
           swelling(longer(struck("Mwah", 0.5f, rich(0.8f, 0.4f), 2400, 110), 0.2f), 180)}},
         {"Slap bass", "electric funk thumb",
          [] {
              Patches p = bassString(0.84f, 0.8f, 1500);
              p.push_back(breath("Thumb", 0.5f, 0.9f, 0.1f, 50));
              p.push_back(struck("Fret", 0.4f, hollow(0.9f), 380, 50, 24));
              return p;
          }()},
         {"Pop bass", "electric funk popped",
          [] {
              Patches p = bassString(0.7f, 1.0f, 1200);
              p[0] = through(struck("String", 0.9f, pulsePair(0, 0.5f, 0.9f, 0.4f), 900, 70),
                             filterBand, 0.46f, 0.5f);
              p[1].coarse = 12;
              p.push_back(struck("Ground", 0.6f, fm(0.4f), 900, 70));
              return p;
          }()},
         {"Synth bass", "analog filter", synthBass(pulsePair(0.16f, 0.4f), 0.86f, 0.5f, 420)},
         {"Square bass", "analog hollow rubber", synthBass(hollow(0.5f), 0.8f, 0.65f, 240)}}};
}

Family bowed() {
    Patches tremolo = section(40, 200, 0.95f, 0.5f);
    for (Patch& p : tremolo) p = trembling(p, 0.6f, 11.0f);
    return {
        "Strings",
        {{"Violin", "solo bowed", bow(90, 1.0f, 0.66f, 0.8f, 0.36f, 0.9f, 0.24f)},
         {"Viola", "solo bowed dark", bow(190, 0.42f, 0.37f, 1.0f, 0.9f, 0.48f, 0.22f)},
         {"Cello", "solo bowed low", bow(50, 0.4f, 0.2f, 1.0f, 0.7f, 0.44f, 0.2f)},
         {"Contrabass", "solo bowed deep", bow(200, 0.36f, 0.17f, 0.6f, 0.3f, 0.36f, 0.12f)},
         {"Tremolo strings", "ensemble shaking", tremolo},
         {"Pizzicato strings",
          "ensemble plucked",
          {doubled(muffled(struck("Strings", 0.9f, edgePair(0.7f), 480, 160), 0.7f), 0.5f, 18, 0.2f,
                   0.7f),
           struck("Wood", 0.7f, fm(0.4f), 200, 90, -12), breath("Finger", 0.4f, 0.4f, 0.5f, 40)}},
         {"Harp",
          "orchestra plucked",
          {placed(struck("String", 0.9f, rich(0.3f, 0.3f), 900, 500), -0.25f),
           placed(struck("Octave", 0.4f, fm(0.16f), 1900, 500, 12), 0.5f),
           struck("Finger", 0.4f, fm(0.6f, 12), 130, 60, 24)}},
         {"Timpani",
          "orchestra drum",
          {falling(struck("Skin", 0.95f, fm(0.3f, 7.0f), 1300, 600), 1.5f, 60),
           struck("Overtone", 0.5f, fm(0.3f, 5.2f), 600, 400, 7),
           breath("Stick", 0.7f, 0.35f, 0.3f, 60)}}}};
}

Family ensembles() {
    return {"Ensemble",
            {{"Strings", "orchestra ensemble", section(260, 320, 0.95f, 0.5f)},
             {"Slow strings", "orchestra ensemble soft", section(420, 600, 0.85f, 0.6f)},
             {"Synth strings", "analog ensemble machine",
              [] {
                  Patches p = section(120, 420, 0.92f, 0.3f);
                  for (Patch& s : p) s = doubled(s, 0.6f, 12, 0.35f, 0.9f);
                  p[0] = through(p[0], filterHigh, 0.7f, 0.3f);
                  p[1].coarse = 12;
                  p[1].osc.detune = 0;
                  p.push_back(held("Ground", 0.4f, spread(fm(0.3f), 0.3f, 1.0f), 160, 420));
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
             {"Synth voice", "vocal digital", voices(0.25f, 0.74f, 30)},
             {"Orchestra hit",
              "stab tutti",
              {struck("Tutti", 0.9f, spread(brightSaw(), 0.4f, 1.0f), 700, 250),
               struck("Low", 0.8f, rich(0.9f, 0.4f), 800, 250, -12),
               placed(struck("High", 0.6f, edge(0.9f), 500, 250, 12), 0.4f),
               breath("Blow", 0.8f, 0.5f, 0.1f, 120)}}}};
}

} // namespace

std::vector<Family> strings() {
    return {guitars(), basses(), bowed(), ensembles()};
}

} // namespace gm
