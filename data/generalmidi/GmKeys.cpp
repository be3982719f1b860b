#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

// Strings and a hammer. Low strings ring longer and have more partials.
Patches piano(float feed, float pm, float detune, float hammer) {
    return {zone(struck("Strings", 0.85f, spread(rich(feed, pm + 0.06f), detune, 0.4f), 5200, 180),
                 0, 52),
            zone(struck("Strings", 0.85f, spread(rich(feed, pm), detune, 0.4f), 3200, 160), 53, 76),
            zone(struck("Strings", 0.9f, spread(rich(feed * 0.8f, pm), detune, 0.4f), 1500, 160),
                 77, 127),
            breath("Hammer", hammer, 0.5f, 0.2f, 45)};
}

// A bar of wood or metal: its ground, and a partial that the mallet strikes.
Patches bar(float decay, float partial, float strike, float strikeDecay, float release) {
    return {struck("Bar", 0.85f, spread(fm(0.16f, 12), 0.05f, 0.6f), decay, release),
            struck("Strike", strike, spread(fm(0.2f, 9.3f), 0.05f, 0.6f), strikeDecay, release,
                   partial)};
}

// Pipes or tone wheels: one an octave apart from the other, each with its odd partials.
Patches pipes(float low, float middle, float high, float attack, float colour) {
    return {held("Eight foot", middle, spread(fm(colour, 12), 0.06f), attack, 60),
            held("Sixteen foot", low, fm(colour, 12), attack, 60, -12),
            held("Four foot", high, spread(fm(colour, 12), 0.08f), attack, 60, 12)};
}

Patches reeds(float depth, float detune, float attack) {
    return {held("Reed", 0.8f, spread(edge(depth), detune), attack, 70),
            held("Second reed", 0.5f, spread(hollow(depth * 0.6f), detune * 0.7f), attack, 70)};
}

Family pianos() {
    return {
        "Piano",
        {{"Grand piano", "acoustic concert", piano(0.84f, 0.52f, 0.1f, 0.3f)},
         {"Bright piano", "acoustic pop hard", piano(0.93f, 0.62f, 0.1f, 0.5f)},
         {"Electric grand", "stage chorus",
          [] {
              Patches p = piano(0.7f, 0.66f, 0.14f, 0.2f);
              for (Patch& s : p) s = doubled(s, 0.4f, 14, 0.12f, 0.6f);
              return p;
          }()},
         {"Honky-tonk", "bar saloon out of tune", piano(0.88f, 0.56f, 0.46f, 0.5f)},
         {"Electric piano",
          "tine stage soft",
          {doubled(struck("Bar", 0.85f, spread(fm(0.48f), 0.06f), 3800, 180), 0.3f, 14, 0.1f, 0.7f),
           struck("Tine", 0.5f, fm(0.36f, 45.69f), 700, 150)}},
         {"Digital piano",
          "fm bell bright",
          {doubled(struck("Body", 0.8f, spread(fm(0.66f), 0.12f), 3400, 220), 0.4f, 16, 0.15f,
                   0.5f),
           struck("Bell", 0.6f, spread(fm(0.5f, 36), 0.1f), 1500, 200, 12)}},
         {"Harpsichord",
          "baroque plucked",
          {longer(struck("String", 0.7f, spread(edge(0.96f), 0.05f), 2200, 90), 0),
           struck("Octave", 0.5f, spread(hollow(0.8f), 0.06f), 1500, 90, 12),
           breath("Quill", 0.5f, 0.8f, 0.1f, 25)}},
         {"Clavi",
          "funk electric plucked",
          {struck("String", 0.8f, spread(edge(0.86f), 0.03f), 1500, 50),
           through(struck("Pickup", 0.7f, pulsePair(0, 0.2f, 0.9f, 0.4f), 900, 50), filterBand,
                   0.55f, 0.5f)}}}};
}

Family bells() {
    return {"Chromatic percussion",
            {{"Celesta", "sweet bell", bar(1600, 24, 0.3f, 500, 300)},
             {"Glockenspiel", "bright bell", bar(1800, 17.6f, 0.6f, 900, 500)},
             {"Music box",
              "toy small",
              {struck("Comb", 0.8f, spread(fm(0.36f, 36), 0.06f), 1700, 500),
               struck("Pin", 0.4f, fm(0.5f, 21.4f), 160, 100, 24)}},
             {"Vibraphone", "jazz mallet swaying",
              [] {
                  Patches p = bar(3600, 24, 0.3f, 500, 500);
                  for (Patch& s : p) s = trembling(s, 0.55f, 5.0f);
                  return p;
              }()},
             {"Marimba", "wood mallet", bar(650, 24, 0.4f, 110, 120)},
             {"Xylophone", "wood bright", bar(330, 19, 0.7f, 130, 90)},
             {"Tubular bells",
              "church chime",
              {struck("Tube", 0.8f, spread(fm(0.62f, 21.35f), 0.05f), 5000, 1800),
               struck("Hum", 0.5f, fm(0.2f), 4200, 1600, -12),
               struck("Strike", 0.4f, fm(0.6f, 29.6f), 500, 400, 12)}},
             {"Dulcimer",
              "hammered strings",
              {struck("String", 0.8f, spread(rich(0.9f, 0.5f), 0.16f), 1900, 400),
               struck("Shine", 0.4f, spread(hollow(0.7f), 0.2f), 900, 300, 12),
               breath("Hammer", 0.4f, 0.7f, 0.3f, 25)}}}};
}

Family organs() {
    return {"Organ",
            {{"Drawbar organ", "tone wheel jazz",
              [] {
                  Patches p = pipes(0.6f, 0.8f, 0.5f, 6, 0.3f);
                  for (Patch& s : p) s = doubled(s, 0.35f, 6, 0.3f, 5.8f);
                  return p;
              }()},
             {"Percussive organ", "tone wheel click",
              [] {
                  Patches p = pipes(0.4f, 0.8f, 0.4f, 3, 0.22f);
                  p.push_back(struck("Third harmonic", 0.7f, fm(0.2f, 12), 260, 60, 19));
                  return p;
              }()},
             {"Rock organ",
              "rotary driven",
              {driven(doubled(held("Wheels", 0.8f, spread(hollow(0.5f), 0.08f), 5, 60), 0.45f, 5,
                              0.4f, 6.4f)),
               held("Low", 0.6f, fm(0.4f, 12), 5, 60, -12),
               held("High", 0.5f, spread(fm(0.5f, 12), 0.1f), 5, 60, 19)}},
             {"Church organ", "pipes cathedral full",
              [] {
                  Patches p = pipes(0.6f, 0.75f, 0.6f, 60, 0.4f);
                  p.push_back(held("Mixture", 0.42f, spread(edge(0.6f), 0.1f), 70, 300, 24));
                  for (Patch& s : p) s.reverb = 0.5f, s.amp.release = 320;
                  return p;
              }()},
             {"Reed organ", "harmonium", reeds(0.62f, 0.08f, 70)},
             {"Accordion", "musette french", reeds(0.72f, 0.36f, 45)},
             {"Harmonica",
              "blues mouth",
              {swaying(held("Reed", 0.85f, spread(edge(0.66f), 0.03f), 40, 90), 0.12f, 5.2f, 300),
               breath("Breath", 0.3f, 0.6f, 0.4f, 120, 0.25f, 15)}},
             {"Tango accordion", "bandoneon", [] {
                  Patches p = reeds(0.8f, 0.14f, 30);
                  p[1].coarse = 12;
                  return p;
              }()}}};
}

} // namespace

std::vector<Family> keys() {
    return {pianos(), bells(), organs()};
}

} // namespace gm
