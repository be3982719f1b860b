#include "data/generalmidi/GmPieces.h"

namespace gm {

namespace {

struct Strings {
    float feed, pm, detune;
    float hammer, felt;   ///< how loud it strikes, and the band: the harder, the higher
    float length = 1.0f;  ///< of the ringing
    float lowest = clean; ///< of the frame: the smaller, the higher
};

// Strings and a hammer. Low strings ring longer and have more partials.
Patches piano(const Strings& s) {
    const auto strings = [&](int lowKey, int hiKey, float feed, float pm, float decay) {
        Patch p =
            struck("Strings", 0.85f, spread(rich(feed, pm), s.detune, 0.4f), decay * s.length, 160);
        return zone(through(p, filterHigh, s.lowest, 0), lowKey, hiKey);
    };
    return {strings(0, 52, s.feed, s.pm + 0.06f, 5200), strings(53, 76, s.feed, s.pm, 3200),
            strings(77, 127, s.feed * 0.8f, s.pm, 1500),
            breath("Hammer", s.hammer, s.felt, 0.2f, 45)};
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

// Two reeds that the same air moves, `apart` semitones from each other.
Patches reeds(float depth, float detune, float attack, float apart) {
    return {
        held("Reed", 0.8f, spread(edge(depth), detune), attack, 70),
        held("Second reed", 0.5f, spread(hollow(depth * 0.6f), detune * 0.7f), attack, 70, apart)};
}

Family pianos() {
    return {
        "Piano",
        {{"Grand piano", "acoustic concert",
          [] {
              Patches p = piano({0.8f, 0.5f, 0.1f, 0.3f, 0.4f});
              p.push_back(struck("Board", 0.5f, spread(fm(0.4f), 0.12f, 0.8f), 6500, 300));
              p.push_back(
                  struck("Duplex", 0.25f, spread(fm(0.5f, 12), 0.16f, 0.9f), 3600, 300, 24));
              return p;
          }()},
         {"Bright piano", "acoustic pop hard",
          [] {
              Patches p = piano({0.95f, 0.62f, 0.1f, 0.6f, 0.8f, 1.0f, 0.14f});
              p.push_back(struck("Shine", 0.35f, spread(hollow(0.9f), 0.12f, 0.8f), 3600, 160, 12));
              p.push_back(struck("Ground", 0.4f, spread(fm(0.3f), 0.1f, 0.8f), 5200, 160));
              return p;
          }()},
         {"Electric grand", "stage chorus",
          [] {
              Patches p = piano({0.6f, 0.7f, 0.14f, 0.35f, 0.6f, 0.8f, 0.24f});
              for (Patch& s : p) s = doubled(s, 0.4f, 14, 0.12f, 0.6f);
              return p;
          }()},
         {"Honky-tonk", "bar saloon out of tune",
          [] {
              Patches p = piano({0.86f, 0.56f, 0.46f, 0.7f, 0.5f, 0.7f});
              p.push_back(struck("Tacks", 0.8f, spread(edge(0.95f), 0.3f, 0.8f), 900, 90, 19));
              return p;
          }()},
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
           struck("Four foot", 0.6f, spread(hollow(0.95f), 0.06f), 1900, 90, 12),
           breath("Quill", 0.5f, 0.8f, 0.1f, 25)}},
         {"Clavi",
          "funk electric plucked",
          {struck("String", 0.8f, spread(edge(0.86f), 0.03f), 1500, 50),
           through(struck("Pickup", 0.7f, pulsePair(0, 0.2f, 0.9f, 0.4f), 900, 50), filterBand,
                   0.55f, 0.5f)}}}};
}

Family bells() {
    return {
        "Chromatic percussion",
        {{"Celesta", "sweet bell",
          [] {
              Patches p = bar(1600, 24, 0.4f, 500, 300);
              p.push_back(struck("Hammer", 0.6f, fm(0.5f, 14.3f), 110, 60, 31));
              return p;
          }()},
         {"Glockenspiel", "bright bell",
          [] {
              Patches p = bar(1800, 17.6f, 0.7f, 1400, 500);
              p.push_back(struck("Ring", 0.5f, spread(fm(0.4f, 29.2f), 0.08f), 1500, 500, 29.2f));
              return p;
          }()},
         {"Music box",
          "toy small",
          {struck("Comb", 0.8f, spread(fm(0.36f, 36), 0.06f), 1700, 500),
           struck("Pin", 0.4f, fm(0.5f, 21.4f), 160, 100, 24)}},
         {"Vibraphone", "jazz mallet swaying",
          [] {
              Patches p = bar(3600, 24, 0.16f, 300, 500);
              p[0].osc = spread(fm(0.05f, 24), 0.05f, 0.6f);
              for (Patch& s : p) s = trembling(s, 0.7f, 5.0f);
              return p;
          }()},
         {"Marimba", "wood mallet",
          [] {
              Patches p = bar(560, 24, 0.3f, 90, 120);
              p.push_back(breath("Wood", 0.5f, 0.26f, 0.5f, 60));
              return p;
          }()},
         {"Xylophone", "wood bright",
          [] {
              Patches p = bar(330, 19, 0.7f, 130, 90);
              p.push_back(breath("Stick", 0.4f, 0.7f, 0.4f, 25));
              return p;
          }()},
         {"Tubular bells",
          "church chime",
          {struck("Tube", 0.8f, spread(fm(0.62f, 21.35f), 0.05f), 5000, 1800),
           struck("Hum", 0.5f, fm(0.2f), 4200, 1600, -12),
           struck("Strike", 0.4f, fm(0.6f, 29.6f), 500, 400, 12)}},
         {"Dulcimer",
          "hammered strings",
          {through(
               struck("String", 0.8f, spread(pulsePair(0.1f, 0.3f, 0.9f, 0.4f), 0.2f), 1300, 400),
               filterHigh, 0.2f, 0),
           struck("Shine", 0.5f, spread(hollow(0.9f), 0.24f, 1.0f), 2200, 500, 24),
           struck("Ground", 0.4f, fm(0.2f), 1600, 300), breath("Hammer", 0.6f, 0.56f, 0.6f, 30)}}}};
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
                  p.push_back(held("Twelfth", 0.4f, spread(fm(0.5f, 12), 0.1f), 90, 300, 31));
                  for (Patch& s : p) s.reverb = 0.5f, s.amp.release = 320;
                  return p;
              }()},
             {"Reed organ", "harmonium",
              [] {
                  Patches p = reeds(0.56f, 0.08f, 110, -12);
                  p[0].osc = edgePair(0.56f);
                  p[0] = muffled(p[0], 0.46f, 0.2f);
                  for (Patch& s : p) s = trembling(s, 0.3f, 3.1f);
                  return p;
              }()},
             {"Accordion", "musette french",
              [] {
                  Patches p = reeds(0.9f, 0.36f, 45, -12);
                  p[0] = through(p[0], filterHigh, 0.26f, 0.1f);
                  p.push_back(held("Piccolo reed", 0.6f, spread(edge(0.8f), 0.3f), 60, 70, 12));
                  return p;
              }()},
             {"Harmonica",
              "blues mouth",
              {trembling(through(held("Reed", 1.0f, spread(edge(0.9f), 0.03f), 40, 90), filterBand,
                                 0.5f, 0.5f),
                         0.4f, 5.2f),
               held("Ground", 0.7f, hollow(0.2f), 60, 90),
               breath("Breath", 0.35f, 0.7f, 0.4f, 120, 0.4f, 15)}},
             {"Tango accordion", "bandoneon", [] {
                  Patches p = reeds(0.86f, 0.14f, 30, 12);
                  p[0].osc = edgePair(0.86f);
                  p[0] = muffled(p[0], 0.5f, 0.5f);
                  return p;
              }()}}};
}

} // namespace

std::vector<Family> keys() {
    return {pianos(), bells(), organs()};
}

} // namespace gm
