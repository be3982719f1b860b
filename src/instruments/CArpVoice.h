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
    CArpProg* prog = nullptr;
    CArpKey pattern[maxPattern];

    void add(const CArpKey& key) {
        if (count < maxPattern) pattern[count++] = key;
    }
};
