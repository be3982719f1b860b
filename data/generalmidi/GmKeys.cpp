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
            struck("Strings", 0.85f, spread(rich(feed, pm), s.detune, 0.6f), decay * s.length, 140);
        if (s.detune == 0.0f) p.pan = -0.25f;
        return zone(through(p, filterHigh, s.lowest, 0), lowKey, hiKey);
    };
    return {strings(0, 52, s.feed, s.pm + 0.06f, 5200), strings(53, 76, s.feed, s.pm, 3200),
            strings(77, 127, s.feed * 0.8f, s.pm, 1500),
            breath("Hammer", s.hammer, s.felt, 0.2f, 45)};
}

// A bar of wood or metal: its ground, and a partial that the mallet strikes.
Patches bar(float decay, float partial, float strike, float strikeDecay, float release) {
    return {placed(struck("Bar", 0.85f, fm(0.16f, 12), decay, release), -0.16f),
            placed(struck("Strike", strike, fm(0.2f, 9.3f), strikeDecay, release, partial), 0.3f)};
}

// Pipes or tone wheels: one an octave apart from the other, each with its odd partials.
Patches pipes(float low, float middle, float high, float attack, float colour) {
    return {placed(held("Eight foot", middle, fm(colour, 12), attack, 60), -0.2f),
            held("Sixteen foot", low, fm(colour, 12), attack, 60, -12),
            placed(held("Four foot", high, fm(colour, 12), attack, 60, 12), 0.4f)};
}

// Two reeds that the same air moves, `apart` semitones from each other.
Patches reeds(float depth, float detune, float attack, float apart) {
    return {held("Reed", 0.8f, spread(edge(depth), detune), attack, 70),
            placed(held("Second reed", 0.5f, hollow(depth * 0.6f), attack, 70, apart), detune)};
}

Family pianos() {
    return {
        "Piano",
        {{"Grand piano", "acoustic concert",
          [] {
              Patches p = piano({0.76f, 0.56f, 0, 0.34f, 0.4f});
              p.push_back(placed(struck("Duplex", 0.3f, fm(0.5f, 12), 2800, 140, 24), 0.8f));
              return p;
          }()},
         {"Bright piano", "acoustic pop hard",
          [] {
              Patches p = piano({0.9f, 0.6f, 0, 0.6f, 0.8f, 1.0f, 0.1f});
              p.push_back(placed(struck("Shine", 0.36f, hollow(0.92f), 3400, 130, 12), 0.4f));
              return p;
          }()},
         {"Electric grand", "stage chorus",
          [] {
              Patches p = piano({0.6f, 0.7f, 0, 0.35f, 0.6f, 0.8f, 0.24f});
              for (Patch& s : p) s = doubled(s, 0.4f, 14, 0.12f, 0.6f);
              return p;
          }()},
         {"Honky-tonk", "bar saloon out of tune",
          [] {
              Patches p = piano({0.86f, 0.56f, 0.46f, 0.7f, 0.5f, 0.7f});
              p.push_back(placed(struck("Tacks", 0.8f, edge(0.95f), 800, 90, 19), 0.5f));
              return p;
          }()},
         {"Electric piano",
          "tine stage soft",
          {doubled(struck("Bar", 0.85f, fm(0.48f), 3800, 180), 0.34f, 14, 0.1f, 0.7f),
           struck("Tine", 0.5f, fm(0.36f, 45.69f), 700, 150)}},
         {"Digital piano",
          "fm bell bright",
          {doubled(struck("Body", 0.8f, spread(fm(0.66f), 0.12f), 3400, 220), 0.4f, 16, 0.15f,
                   0.5f),
           placed(struck("Bell", 0.6f, fm(0.5f, 36), 1500, 200, 12), 0.3f)}},
         {"Harpsichord",
          "baroque plucked",
          {placed(struck("String", 0.7f, edge(0.96f), 2200, 90), -0.25f),
           placed(struck("Four foot", 0.6f, hollow(0.95f), 1900, 90, 12), 0.3f),
           breath("Quill", 0.5f, 0.8f, 0.1f, 25)}},
         {"Clavi",
          "funk electric plucked",
          {placed(struck("String", 0.8f, edge(0.86f), 1500, 50), -0.15f),
           through(struck("Pickup", 0.7f, spread(pulsePair(0, 0.2f, 0.9f, 0.4f), 0, 0.3f), 900, 50),
                   filterBand, 0.55f, 0.5f)}}}};
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
              p.push_back(struck("Ring", 0.5f, fm(0.4f, 29.2f), 1500, 500, 29.2f));
              return p;
          }()},
         {"Music box",
          "toy small",
          {placed(struck("Comb", 0.8f, fm(0.36f, 36), 1700, 500), -0.16f),
           placed(struck("Pin", 0.4f, fm(0.5f, 21.4f), 160, 100, 24), 0.3f)}},
         {"Vibraphone", "jazz mallet swaying",
          [] {
              Patches p = bar(3600, 24, 0.16f, 300, 500);
              p[0].osc = fm(0.05f, 24);
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
          {placed(struck("Tube", 0.8f, fm(0.62f, 21.35f), 5000, 1800), -0.25f),
           placed(struck("Hum", 0.5f, fm(0.2f), 4200, 1600, -12), 0.25f),
           struck("Strike", 0.4f, fm(0.6f, 29.6f), 500, 400, 12)}},
         {"Dulcimer",
          "hammered strings",
          {through(
               struck("String", 0.8f, spread(pulsePair(0.1f, 0.3f, 0.9f, 0.4f), 0.2f), 1300, 400),
               filterHigh, 0.2f, 0),
           struck("Shine", 0.5f, spread(hollow(0.9f), 0.24f, 1.0f), 1800, 400, 24),
           struck("Ground", 0.4f, fm(0.2f), 1200, 300), breath("Hammer", 0.6f, 0.56f, 0.6f, 30)}}}};
}

Family organs() {
    return {
        "Organ",
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
          {driven(doubled(held("Wheels", 0.8f, hollow(0.5f), 5, 60), 0.5f, 5, 0.4f, 6.4f)),
           placed(held("Low", 0.6f, fm(0.4f, 12), 5, 60, -12), -0.6f),
           placed(held("High", 0.5f, fm(0.5f, 12), 5, 60, 19), 0.8f)}},
         {"Church organ", "pipes cathedral full",
          [] {
              Patches p = pipes(0.6f, 0.75f, 0.6f, 60, 0.4f);
              p.push_back(held("Mixture", 0.42f, spread(edge(0.6f), 0.1f), 70, 300, 24));
              p.push_back(placed(held("Twelfth", 0.4f, fm(0.5f, 12), 90, 300, 31), -0.6f));
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
              p.push_back(placed(held("Piccolo reed", 0.6f, edge(0.8f), 60, 70, 12), -0.4f));
              return p;
          }()},
         {"Harmonica",
          "blues mouth",
          {trembling(placed(through(held("Reed", 1.0f, edge(0.9f), 40, 90), filterBand, 0.5f, 0.5f),
                            -0.18f),
                     0.4f, 5.2f),
           placed(held("Ground", 0.7f, hollow(0.2f), 60, 90), 0.18f),
           breath("Breath", 0.35f, 0.7f, 0.4f, 120, 0.4f, 15)}},
         {"Tango accordion", "bandoneon", [] {
              Patches p = reeds(0.86f, 0.3f, 30, 12);
              p[0].osc = edgePair(0.86f);
              p[0] = muffled(p[0], 0.53f, 0.5f);
              return p;
          }()}}};
}

} // namespace

std::vector<Family> keys() {
    return {pianos(), bells(), organs()};
}

} // namespace gm
