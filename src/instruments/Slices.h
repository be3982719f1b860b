#pragma once

#include "instruments/CSound.h"

/// What a sound is set to, read once for a call of `processVoices`: its values by target before
/// modulation, the connections of its modulators that have an effect, and the timing of slices.
///
/// A voice is rendered in slices of at most a millisecond. All modulation is worked out once per
/// slice, and gain, filter and operator levels run in straight lines through it.
class SlicePlan {
public:
    /// Longest slice in frames, at the highest rate there is.
    static constexpr int longest = 192;

    int sliceMax;   ///< frames
    float limit;    ///< most that a ramped value may change in a frame
    float cutScale; ///< 44100 over the rate
    float base[targetCount] = {};

    /// `wholeWraps`: the rest of an LFO's cycle is truncated to frames, else rounded.
    SlicePlan(CSound* s, const CVoice* any, float gain, bool wholeWraps);

    /// The filter's coefficient for a cutoff of 0 to 1: its square at 44100 Hz, and at other rates
    /// so much of it that the cutoff is the same frequency. One that is fully open passes all at
    /// any rate, and the way there is smooth.
    float coefficient(float cutoff) const;

    /// First step of a slice: loads `s->cur`, and cuts `n` frames so that no modulation event falls
    /// inside. 0 is possible.
    int begin(CVoice* v, int n) const;
    /// Second step: brings the modulators to the end of a slice of `n` frames and applies them.
    void modulate(CVoice* v, int n) const;
    /// Before the last step: a note that dies away, and has fallen below -100 dB, has done so.
    void fade(CVoice* v) const;
    /// Last step: moves glide, stages and LFOs on.
    static void advance(CVoice* v, int n);

private:
    static constexpr int sources = velocityIndex + 1;

    struct Route {
        unsigned char source, target;
        float amount;
    };

    CSound* sound;
    bool truncateWraps;
    bool dies; ///< with its amp envelope, which alone moves the volume in the course of a note
    int routeCount = 0;
    Route routes[sources * modSlots];
    double lfoIncr[lfoCount];
    bool randomWave[lfoCount];
    bool lfoUsed[lfoCount] = {};

    void addRoutes(const CMod& mod);
    int cutToLfo(CLFOStage& stage, int n) const;
    void modulateLfo(CVoice* v, int i, int n) const;
};

/// Where gains and filter of a voice are to be, by `cur` of its sound.
struct StripTargets {
    float gainL, gainR, cut, damp;
};
StripTargets stripTargets(const CVoice& v, const SlicePlan& plan);

/// The ramps of a slice of `n` frames, 1 or more, by `cur` of the voice's sound. The voice's own
/// values are at the end of the slice then.
StripRamps stripRamps(CVoice* v, const SlicePlan& plan, int n);

/// Takes values to their targets within a slice of `n` frames, not faster than the plan allows, or
/// at once with `jump`. `values` are those at its end then; the ramps begin with those before.
template <int count>
void rampsTo(float (&values)[count], const float (&targets)[count], Ramp (&ramps)[count],
             const SlicePlan& plan, bool jump, int n) {
    const float frames = float(n);
    float steps[count];
    for (int i = 0; i < count; i++) {
        const float from = jump ? targets[i] : values[i];
        const float step = (targets[i] - from) / frames;
        const float most = step < plan.limit ? step : plan.limit;
        values[i] = from;
        steps[i] = most > -plan.limit ? most : -plan.limit;
    }
    for (int i = 0; i < count; i++) {
        ramps[i] = {values[i], steps[i]};
        values[i] += steps[i] * frames;
    }
}

/// `exp(semitones / 12 * ln 2)`, for sums within +-240 semitones; what lies outside is clamped.
double pitchRatio(double semitones);

/// The amp envelope of a voice has ended: its silent tail begins.
void startTail(CVoice* v);
/// Spends `frames` of a voice that sounds, but of which nothing is heard: of what its release has
/// left, and then of its tail, at the end of which it is free.
void passRest(CVoice* v, int frames);

/// For a voice that still sounds, at the end of a stride: what has died away becomes 0, and a
/// filter that has left the numbers starts anew.
void guardVoice(CVoice* v);

/// Ends a held slice at the frame that it has come to, and gives back the seat: before an event,
/// and where a stride begins.
void cutVoice(CVoice* v);
/// Free at once.
void endVoice(CVoice* v);
