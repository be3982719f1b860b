#pragma once

#include "instruments/CArpProg.h"

/// A running pattern: plain data of whoever holds the graph.
struct CArpVoice {
    static constexpr int maxPattern = 128;

    int note = 0, channel = 0; ///< the key that started it; MIDI channel of what it plays
    bool active = false;
    double nextTick = 0.0; ///< from the start of the block to the next step
    double swing = 0.0;    ///< in force for this pair of steps
    int count = 0;         ///< length of the pattern
    int step = 0;          ///< next index of the pattern
    int swingPhase = 0;    ///< 0 or 1
    int octave = 0;        ///< semitones
    int octaveDir = 1;     ///< 1 or -1
    int played = 0;        ///< steps in this octave
    int taken = 0;         ///< steps since it began
    CArpProg* prog = nullptr;
    CArpKey pattern[maxPattern];

    void add(const CArpKey& key) {
        if (count < maxPattern) pattern[count++] = key;
    }
    /// Goes on to the next step, where the notes from `first` to `last` of the pattern sound, by
    /// `octave` higher; false without any.
    bool takeStep(Random& chance, int& first, int& last);
    /// Ticks from a step to its note-off, with a number of chance from 0 to 1. The product is
    /// rounded as a float, so that a gate of 0.7 is 0.7 and no trifle less.
    int gateTicks(double chance) const;
    void advance(); ///< to the tick of the next step

private:
    void turnOctave();
    double swungShare() const; ///< of its step that the next one takes, by the swing of the pair
};
