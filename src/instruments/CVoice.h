#pragma once

#include "base/Random.h"
#include "instruments/Modulators.h"

#include <limits>

class CQV;
class CSampleClip;
class CSound;

/// One of the two operators of a synthesizer voice, on one channel.
struct COscState {
    double phase = 0.0; ///< cycles, but for whole turns of the table
    double incr = 0.0;  ///< cycles per frame
    double last = 0.0;  ///< last output, which feeds back
    double pitch = std::numeric_limits<double>::quiet_NaN(); ///< that `incr` was worked out for

    void start(double firstPhase) { *this = COscState{firstPhase}; }
};

/// Straight lines of a slice: the value at its first frame and what each frame adds.
struct Ramp {
    float value = 0.0f, step = 0.0f;
};

/// What every slice ramps, on top of the generator's own.
struct StripRamps {
    Ramp gainL, gainR, cut;
    float damp = 1.0f; ///< 1 - q
};

/// What a voice has in the lanes that its sound's voices share, until these are given out anew: a
/// voice that ends keeps its own till then, so that the sum of all is made in one order.
enum class Seat : unsigned char {
    none,
    mono,    ///< one lane for both channels
    stereo,  ///< two lanes
    resting, ///< none, as nothing is heard of it
    ended    ///< as resting; its tail begins when lanes are given out anew
};

/// A slice that the end of a block has cut off, to be gone on with in the next one.
struct HeldSlice {
    int frames = 0;                   ///< of the slice
    int left = 0;                     ///< of these, to come; 0 while no slice is held
    bool ends = false, jumps = false; ///< what a clip does behind it
    StripRamps strip;
    Ramp feed1, feed2, phaseMod;                         ///< of an operator voice
    double feed1Now = 0.0, feed2Now = 0.0, modNow = 0.0; ///< of its lanes, at the frame to come
};

/// One playing note of one sound, of whichever kind: a plain record, embedded in its owner, so that
/// a note needs no memory. Audio thread.
struct CVoice {
    static constexpr int free = 0, sounding = 1;                    ///< values of `state`
    static constexpr int low = 0, band = 1, high = 2, rightSvf = 3; ///< places in `svf`

    CQV* host = nullptr; ///< set by the owner before `initVoice`
    bool first = true;   ///< until the first frame: ramps jump to their target
    int state = free;
    int tail = 0; ///< frames left of the silent end; above 0 nothing is rendered
    int glideLeft = 0;
    float glideStep = 0.0f; ///< semitones per frame
    float velocity = 0.0f;  ///< 0 to 1
    unsigned char group = 0;

    double pos = 0.0;   ///< frames of the clip
    double speed = 1.0; ///< frames of the clip per frame
    CSampleClip* clip = nullptr;
    int start = 0, end = 0; ///< frames of the clip
    int reverse = 0;
    int stretchFrame = 0;
    float sourceRatio = 1.0f; ///< rate of the clip over that of the engine

    float pitch = 0.0f; ///< semitones: the note, while no glide runs
    float gainMul = 1.0f, panAdd = 0.0f, cutoffMul = 1.0f;
    float gainL = 0.0f, gainR = 0.0f;
    const float* outL = nullptr; ///< into `svf`: the output of the filter that is heard
    const float* outR = nullptr;
    float cut2 = 0.0f;
    float svf[6] = {}; ///< low, band, high of the left filter, then of the right
    float feed1Sq = 0.0f, feed2Sq = 0.0f, phaseModSq = 0.0f;
    int note = 0;
    CSound* sound = nullptr;
    unsigned char channel = 0;
    float rate = 44100.0f;

    int modCount = 0;
    CMod* mods[stageCount] = {};
    CEnvStage stages[stageCount];
    CLFO* lfos[lfoCount] = {};
    CLFOStage lfoStages[lfoCount];
    CVoice* previous = nullptr; ///< last voice of the same sound when this one started, or none

    COscState carL, carR, modL, modR;
    Random chance; ///< of its own, so that it does not matter in which order voices are worked out
    Seat seat = Seat::none;
    HeldSlice held;

    bool live() const { return state == sounding && tail < 1; }
};
