#pragma once

#include "instruments/FactoryShapes.h"

#include <string_view>
#include <vector>

// What the programs of the General MIDI set are put together from. Each program has one to four
// sounds; levels among them count, the loudness of the whole is made even when the set is built.

namespace gm {

using factory::brightSaw;
using factory::clean;
using factory::edge;
using factory::Env;
using factory::hold;
using factory::hollow;
using factory::noise;
using factory::Osc;
using factory::Patch;
using factory::plainSaw;
using factory::pulsePair;
using factory::vibrato;
using Patches = std::vector<Patch>;

struct Program {
    const char* name;
    const char* words; ///< to look for it by
    Patches patches;
};

/// Eight programs of one kind.
struct Family {
    const char* name;
    std::vector<Program> programs;
};

std::vector<Family> keys();       ///< piano, chromatic percussion, organ
std::vector<Family> strings();    ///< guitar, bass, strings, ensemble
std::vector<Family> winds();      ///< brass, reed, pipe
std::vector<Family> synths();     ///< lead, pad, effects
std::vector<Family> percussion(); ///< ethnic, percussive, sound effects

/// Modulator depth `pm`, semitones above the carrier, its own feedback.
Osc fm(float pm, float modCoarse = 0.0f, float modFeed = 0.0f);
Osc spread(Osc osc, float detune, float width = 0.8f);
/// Two of `edge` against each other, `apart` half cycles: no offset, so that a low-pass may follow.
/// The nearer they are, the weaker the ground.
Osc edgePair(float depth, float apart = 0.3f);
/// With feedback of the carrier: `feed` of one radian and below.
Osc rich(float feed, float pm = 0.0f);

/// A sound that a stroke starts and that dies away; its colour dies away sooner.
Patch struck(const char* name, float volume, const Osc& osc, float decay, float release,
             float coarse = 0.0f);
/// One that lasts as long as the key.
Patch held(const char* name, float volume, const Osc& osc, float attack, float release,
           float coarse = 0.0f);
/// Noise in a band around `cutoff`, a stroke without `sustain`.
Patch breath(const char* name, float volume, float cutoff, float q, float decay,
             float sustain = 0.0f, float attack = 1.0f);

// Each gives the sound back with something changed.
Patch zone(Patch p, int lowKey, int hiKey);
/// From -1, left, to 1. Two sounds on either side of the middle are as wide as one of two detuned
/// halves, at half its cost.
Patch placed(Patch p, float pan);
Patch swaying(Patch p, float semitones, float hz, int delayMs); ///< vibrato
Patch trembling(Patch p, float amount, float hz);
Patch swelling(Patch p, float ms); ///< its colour rises from half in so long
Patch through(Patch p, int filter, float cutoff, float q);
/// A low-pass that a soft stroke leaves further closed.
Patch muffled(Patch p, float cutoff, float q = 0.1f);
/// The sounds of a program with what sets it apart from all others.
Patches setApart(std::string_view program, Patches patches);
/// The sounds with filters that follow the keyboard, by parts of it: a cutoff is meant for the
/// octaves around C4, and moves by half an octave with each octave below and above.
Patches followed(const Patches& patches);
/// The sounds of a program, by parts of the keyboard, so that no octave of it jumps out.
Patches evened(std::string_view program, const Patches& patches);
Patch driven(Patch p);                                                 ///< distorted
Patch doubled(Patch p, float wet, float delay, float depth, float hz); ///< chorus
Patch longer(Patch p, float sustain);              ///< level that a stroke keeps
Patch single(Patch p, int glide);                  ///< mono, with a glide of so many ms
Patch falling(Patch p, float semitones, float ms); ///< pitch comes from above in so long

} // namespace gm
