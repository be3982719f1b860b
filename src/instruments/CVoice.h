#pragma once

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

    bool live() const { return state == sounding && tail < 1; }
};
