#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "base/Stored.h"

class CStream;

/// What a modulator, or a controller, may move on a sound. The numbers stand in files.
enum ModTarget : int {
    targetNone = 0,
    targetPitch = 1,
    targetVolume = 2,
    targetPan = 3,
    targetCutoff = 4,
    targetQ = 5,
    targetFeed1 = 6, ///< from here on synthesizer sounds only
    targetFeed2 = 7,
    targetPhaseMod = 8,
    targetDetune = 9,
    targetCount = 10,
    sampleTargetCount = targetFeed1, ///< targets of a sample sound
};

/// Additive targets move both ways around the sound's value, the others scale it down.
constexpr bool isAdditive(int target) {
    return target == targetPitch || target == targetPan;
}

extern const char* const targetNames[targetCount]; ///< "None" first
/// The name of a target, empty outside the list and for none.
CStr paramAsStr(int target);

constexpr int modSlots = 4;      ///< destinations of each modulator
constexpr int envelopeCount = 6; ///< of a sound
constexpr int pitchEnvIndex = 6;
constexpr int stageCount = 7; ///< modulators with a stage: the envelopes and the pitch envelope
constexpr int lfoCount = 4;
constexpr int firstLfoIndex = stageCount;
constexpr int velocityIndex = firstLfoIndex + lfoCount;

enum EnvPhase : int {
    phaseAttack = 0,
    phaseDecay = 1,
    phaseSustain = 2,
    phaseRelease = 3,
    phaseEnded = 4,
};

/// An envelope that runs in a voice. Audio thread.
struct CEnvStage {
    float rate = 44100.0f; ///< frames a second, of its voice
    bool active = false;
    int stage = phaseAttack;
    float from = 0.0f, to = 0.0f;
    float value = 0.0f; ///< at the end of the last slice
    float curve = 0.0f;
    int remaining = 0, total = 0; ///< frames
    float bent = 1.0f;            ///< how `curvePoint` bends the way, worked out for `bentFor`
    float bentFor = 0.0f;         ///< a curve

    /// Starts a stretch of `frames` from `a` to `b`.
    void go(int newStage, float a, float b, int frames);
    float bend(); ///< of the present curve
    /// Stands still from now on.
    void hold(int newStage, float a, float b);
};

/// An LFO that runs in a voice. Audio thread.
struct CLFOStage {
    float value = 0.5f; ///< 0 to 1
    double phase = 0.0; ///< cycles
    double incr = 0.0;  ///< cycles per frame
    int delayLeft = 0;  ///< frames
    int toWrap = 0;     ///< frames to the end of the cycle, as far as a slice reaches
    bool waits = false; ///< through this slice: its delay is not over
    const double* table = nullptr;
};

/// A modulator of a sound: settings only, shared by all of its voices, whose running state lies in
/// the voice. The base and what has no stages ignore the three calls. Settings may be written by
/// any thread at any time.
class CMod : public CObject {
public:
    struct Param {
        Stored<unsigned char> enabled{1}; ///< stored, without effect
        Stored<int> index{targetNone};    ///< ModTarget; a number outside the list has no effect
        Stored<float> amount{0.0f};       ///< semitones on the pitch, else -1 to 1
    };

    explicit CMod(int number) : index(number) {}

    virtual void reset(CEnvStage*) {}
    virtual void next(CEnvStage*) {}
    virtual void noteOff(CEnvStage*) {}

    int index; ///< number of the modulator in its sound
    Param params[modSlots];

    void setSlot(int slot, int target, ToStore<float> amount);
};

/// Attack, decay, sustain, release. Times are the square of their setting times `maxTime`.
class CEnv : public CMod {
public:
    Stored<int> envType;       ///< stored; 1 on the amp and the filter envelope
    Stored<int> maxTime{5000}; ///< milliseconds, 1 to 60000
    Stored<float> initial{0.0f}, attack, decay, sustain, release; ///< 0 to 1
    Stored<float> ac{0.0f}, dc{0.0f}, rc{0.0f};                   ///< curves, -1 to 1

    CEnv(int number, float a, float d, float s, float r);

    void reset(CEnvStage* stage) override;
    /// The end of a stage has been reached.
    void next(CEnvStage* stage) override;
    /// The release keeps the curve of the stage that it cuts.
    void noteOff(CEnvStage* stage) override;
};

/// An envelope in semitones that goes from `initial` to 0, and after the note to `final`. Not
/// stored and bound to no panel.
class CPitchEnv : public CMod {
public:
    Stored<int> maxTime{5000};
    Stored<float> attack{0.0f}, initial{0.0f}, release{0.0f}, final{0.0f};
    Stored<float> ac{0.0f}, rc{0.0f};

    CPitchEnv();

    void reset(CEnvStage* stage) override;
    void next(CEnvStage* stage) override;
    void noteOff(CEnvStage* stage) override;
};

enum LfoWave : int { lfoSin = 0, lfoTri = 1, lfoSaw = 2, lfoPulse = 3, lfoRandom = 4 };
enum LfoRestart : int { restartFree = 0, restartPoly = 1, restartMono = 2 };

class CLFO : public CMod {
public:
    Stored<int> wave{lfoTri};
    Stored<float> rate{6.0f};   ///< Hz, 0.01 to 50
    Stored<int> sync{0};        ///< 1: a cycle lasts `mul` / `div` beats
    Stored<int> mul{1}, div{1}; ///< 1 to 64
    Stored<int> delay{0};       ///< milliseconds, 0 to 5000
    Stored<int> inv{1};         ///< stored, without effect
    Stored<int> restart{restartPoly};
    /// Where it stands in the voice that sounded last, for views: 0 to 1 of a cycle, and what it
    /// gives.
    Shared<float> shownPhase{0.0f}, shownValue{0.5f};

    explicit CLFO(int number);

    using CMod::reset;
    void reset(CLFOStage* stage);
    /// Hz at a tempo in beats per minute; what lies out of range is clamped.
    double frequency(float tempo) const;
};

/// The velocity of the note as a source.
class CVel : public CMod {
public:
    CVel();
};

/// Channel pressure: stored, without effect.
class CCP : public CMod {
public:
    CCP();
};
