#pragma once

#include "base/Stored.h"
#include "engine/CProgram.h"

class Random;
struct CArpVoice;

/// What a pattern makes of the held keys.
enum ArpMode : int {
    arpAsPlayed = 0,
    arpUp = 1,
    arpDown = 2,
    arpUpDown = 3,    ///< both ends once
    arpUpAndDown = 4, ///< both ends twice
    arpDownUp = 5,
    arpDownAndUp = 6,
    arpChord = 7, ///< all keys at each step
    arpRandom = 8,
};
constexpr int arpModes = 9;

/// A held key, or a note of a pattern.
struct CArpKey {
    static constexpr int middle = 60;
    signed char key = 0; ///< MIDI note less `middle`
    unsigned char velocity = 0;
    bool down = true; ///< false: let go, but kept by the latch
};

/// A pattern's settings, and the keys that are held for it. The settings are single words that any
/// thread writes, best by the setters, which clamp; not-a-number gives the lower bound. The keys
/// belong to whoever holds the graph.
class CArpProg : public CProgram {
public:
    static constexpr int maxKeys = 32;
    static constexpr float minShare = 0.01f; ///< of `gate` and `prob`
    static constexpr float minStep = 1.0f, maxStep = 3840.0f;
    static constexpr int maxOctaves = 5;

    CArpKey keys[maxKeys];
    Stored<int> sorted{1};           ///< keys are kept in ascending order, else as they come
    Stored<int> mode{0};             ///< ArpMode
    Stored<float> swing{0.0f};       ///< 0 to 1
    Stored<float> stepTicks{240.0f}; ///< 1 to 3840
    Stored<int> triplets{0};         ///< 1: a step takes two thirds
    int keyCount = 0;
    Stored<float> rndGate{0.0f};     ///< 0 to 1: how far chance shortens notes
    Stored<float> rndVelocity{0.0f}; ///< 0 to 1: how far chance lowers velocities
    int latchHeld = 0;               ///< keys held down while the latch is on
    Stored<int> octaves{1};          ///< 1 to 5
    Stored<int> transposeMode{0};    ///< 0 starts again at the bottom, 1 goes up and down
    Stored<float> gate{1.0f};        ///< 0.01 to 1: length of a note, of its step
    Stored<float> prob{1.0f};        ///< 0.01 to 1: chance that a step sounds

    CArpProg() { id = "program"; }

    // Settings. Any thread.
    void setMode(ToStore<int> v); ///< outside the modes: 0
    void setSwing(ToStore<float> v);
    void setStepTicks(ToStore<float> v);
    void setTriplets(ToStore<int> v);
    void setRndGate(ToStore<float> v);
    void setRndVelocity(ToStore<float> v);
    void setOctaves(ToStore<int> v);
    void setTransposeMode(ToStore<int> v);
    void setGate(ToStore<float> v);
    void setProb(ToStore<float> v);
    /// Takes over name and settings, but no keys. Interface thread.
    void copySettings(const CArpProg& src);

    /// Above 0, whatever the fields hold.
    double getStepInTicks() const;
    /// 0 to 1, whatever the field holds.
    double getSwing() const;

    // Keys, as MIDI notes 0 to 127. Graph holder.
    /// A key for which there is no room is ignored.
    void addKey(int key, int velocity);
    void removeKey(int key);
    /// The record of a held key, null when it is not held.
    CArpKey* getkeyPressed(int key);
    /// Removes the keys that only the latch keeps.
    void removeLatched();
    void removeAllKeys();
    /// Lays out the voice's pattern anew; nothing without a voice.
    void buildPattern(CArpVoice* voice, Random& chance) const;

private:
    void removeAt(int i);
};
