#pragma once

#include "engine/StoredValue.h"
#include "instruments/CVoice.h"

#include <memory>

class CChorus;
class CFX;
class CLayer;
class CPhaser;
class CQV;

constexpr int categorySampler = 32; ///< `CObject::category` of sounds, layers and programs
constexpr int typeWavSound = 1;
constexpr int typeOscSound = 2;
constexpr int typeLayer = 3;
constexpr int typeSynthProg = 6;

enum SoundMode : unsigned char { soundPoly = 0, soundMono = 1 };
enum SoundFilter : int { filterLow = 0, filterBand = 1, filterHigh = 2 };

/// One source inside a layer: pitch, level, filter, zone, modulators and two insert effects. Shared
/// words are the user's and may be written by any thread; they act from the next block on, and the
/// ramps of the voices smooth them.
class CSound : public CObject {
public:
    CLayer* layer; ///< not owned
    Stored<unsigned char> mode{soundPoly};
    Stored<unsigned char> mute{0};
    Stored<unsigned char> solo{0};       ///< counts on drum tracks only
    unsigned char reserved = 0;          ///< a byte of the file that is kept as read
    float cur[targetCount] = {};         ///< modulated values of the present slice; audio thread
    Shared<float> curShown[targetCount]; ///< those of the voice that sounded last, for views
    int voicesRendered = 0;              ///< of this pass of `CSampler::render`; audio thread
    int ahead = 0; ///< frames of the stride behind the call that comes; set by who makes it
    Stored<int> colour{-1};
    Shared<float> peakL{0.0f}, peakR{0.0f}; ///< meters, falling in `afteridle`
    Shared<float> holdL{0.0f}, holdR{0.0f}; ///< highest peaks so far, of sample sounds only
    Stored<float> volume{1.0f};             ///< 0 to 1, squared when applied
    Stored<float> pan{0.0f};                ///< -1 to 1
    Stored<int> filter{filterLow};          ///< counts at note on
    Stored<float> cutoff{1.0f};             ///< 0 to 1, squared: the coefficient at 44100 Hz
    Stored<float> q{0.0f};                  ///< 0 to 1
    Stored<unsigned char> dist{0};          ///< distortion, on synthesizer sounds
    Stored<float> coarse{0.0f};             ///< semitones, -48 to 48
    Stored<float> fine{0.0f};               ///< semitones, -1 to 1
    Stored<int> lowKey{0}, hiKey{127}, lowVel{0}, hiVel{127}; ///< zone, inclusive
    Stored<unsigned char> group{0};                           ///< exclusive group, 0 none
    Stored<int> glide{0};                                     ///< milliseconds, 0 to 500
    float lastNote = -1.0f;                                   ///< of the last note on; audio thread
    Stored<int> bendRange{12};                                ///< semitones at full bend, 0 to 48
    std::unique_ptr<CEnv> envelope[envelopeCount];            ///< [0] amp, [1] filter
    std::unique_ptr<CLFO> lfo[lfoCount];
    std::unique_ptr<CPitchEnv> pitchEnv;
    std::unique_ptr<CVel> vel;
    std::unique_ptr<CCP> cp;
    Stored<int> ccMap[128];     ///< ModTarget that each MIDI controller drives
    Stored<float> sends[8];     ///< levels to the program's effects; only the first two are used
    std::unique_ptr<CFX> fx[2]; ///< inserts: a CPhaser, a CChorus

    /// `owner` outlives the sound. The inserts keep the rate that the host has now; they run in
    /// place, so they have no input buffers.
    CSound(CLayer* owner, CQV* host);
    ~CSound() override;
    CSound(const CSound&) = delete;
    CSound& operator=(const CSound&) = delete;

    /// Adds `frames` samples of a voice of this sound; one whose end comes gets free. Frames up to
    /// the host's block. Audio thread, as the four that follow.
    virtual void process(float* left, float* right, CVoice* voice, int frames);
    /// Makes a voice ready that `CSampler::addVoice` has chosen.
    virtual void initVoice(CVoice* voice);
    virtual void initMods(CVoice* voice);
    /// Sets the generator of a voice that a note has taken to its start; `initVoice` follows.
    virtual void startVoice(CVoice*) {}
    /// `process` of several voices in step, which costs less than one after the other.
    virtual void processVoices(CVoice** voices, int count, float* left, float* right, int frames);

    /// The word that a modulation target or a controller moves, null where there is none.
    virtual Stored<float>* target(int number);

    CPhaser* phaser() const;
    CChorus* chorus() const;
    float bend() const; ///< pitch bend of the program, -1 to 1

    void setVolume(ToStore<float> v); ///< clamped to 0 to 1, as the two that follow
    void setCutoff(ToStore<float> v);
    void setQ(ToStore<float> v);
    /// Values between -11 and -1 are kept as they are and act as -1.
    void setPan(ToStore<float> v);
    void setFilter(ToStore<int> v);
    /// 0 Hz, 0 semitones and so on: what the panel sends for the pitch envelope.
    void pitchInitialChanged(ToStore<int> semitones);
    void pitchAttackChanged(ToStore<int> percent);
    void pitchFinalChanged(ToStore<int> semitones);
    void pitchReleaseChanged(ToStore<int> percent);

    /// Takes over level, filter, tuning and zone; nothing of modulators, sends and generator.
    void copyData(const CSound* other);
};

/// Writes a parameter of a sound from a value of 0 to 1 by its target number; a number without a
/// parameter on this sound does nothing.
void setValue(CSound* sound, int target, ToStore<float> value);

/// The same as a value of the user, in the unit of the field. The sound has the target.
StoredValue targetOf(CSound* sound, int target);
