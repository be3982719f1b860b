#pragma once

#include "base/Clones.h"
#include "instruments/Slices.h"

#include <algorithm>

// Voices side by side. A voice waits for its own feedback most of the time, so several in step
// take little longer than one. A lane is one channel of a voice; a voice whose channels are equal
// takes one lane for both.

constexpr int maxLanes = 8;

#define SONDRAVA_INLINE [[gnu::always_inline]] inline

template <int N>
struct Vectors;
template <>
struct Vectors<4> {
    using Floats = float __attribute__((vector_size(16)));
    using Ints = int __attribute__((vector_size(16)));
};
template <>
struct Vectors<8> {
    using Floats = float __attribute__((vector_size(32)));
    using Ints = int __attribute__((vector_size(32)));
};

template <class V>
SONDRAVA_INLINE void loadLanes(V& v, const void* from) {
    __builtin_memcpy(&v, from, sizeof v);
}
template <class V>
SONDRAVA_INLINE void storeLanes(const V& v, void* to) {
    __builtin_memcpy(to, &v, sizeof v);
}

/// Filter, gains and meters of up to eight lanes. A lane that is off has gains of 0.
struct alignas(64) StripLanes {
    float low[maxLanes] = {}, band[maxLanes] = {}, high[maxLanes] = {};
    int tapLow[maxLanes] = {}, tapBand[maxLanes] = {}, tapHigh[maxLanes] = {}; ///< all bits or none
    float at[maxLanes] = {}; ///< frames since the slice began, which all ramps count from
    float cut[maxLanes] = {}, cutStep[maxLanes] = {}, damp[maxLanes] = {};
    float gainL[maxLanes] = {}, gainLStep[maxLanes] = {}; ///< to the left output
    float gainR[maxLanes] = {}, gainRStep[maxLanes] = {}; ///< to the right output
    float peakL[maxLanes] = {}, peakR[maxLanes] = {};     ///< highest magnitude so far

    /// Takes the filter of one channel of a voice, 0 left or 1 right.
    void load(int lane, const CVoice& v, int side);
    void store(int lane, CVoice& v, int side, float sign = 1.0f) const;
    /// A slice: the lane of a left or right channel, or of both with `toLeft` and `toRight`.
    void setSlice(int lane, const StripRamps& ramps, bool toLeft, bool toRight);
    /// Gives the ramps of the lanes of a voice back: `right` is that of its right channel.
    StripRamps slice(int lane, int right) const;
    void mute(int lane);
    /// A lane that nobody sounds in, but that counts in the sum.
    void leaveEmpty(int lane);
    /// Raises a sound's meters by what has passed since the last call.
    void meter(CSound* s);
};

/// The filters of N lanes in registers: a segment of frames.
template <int N>
struct FilterRegisters {
    using Floats = typename Vectors<N>::Floats;
    using Ints = typename Vectors<N>::Ints;

    Floats low, band, high, at, cut, cutStep, damp;
    Ints tapLow, tapBand, tapHigh;

    SONDRAVA_INLINE explicit FilterRegisters(const StripLanes& s) {
        loadLanes(at, s.at);
        loadLanes(low, s.low);
        loadLanes(band, s.band);
        loadLanes(high, s.high);
        loadLanes(cut, s.cut);
        loadLanes(cutStep, s.cutStep);
        loadLanes(damp, s.damp);
        loadLanes(tapLow, s.tapLow);
        loadLanes(tapBand, s.tapBand);
        loadLanes(tapHigh, s.tapHigh);
    }

    /// Writes back what has changed.
    SONDRAVA_INLINE void store(StripLanes& s) const {
        storeLanes(low, s.low);
        storeLanes(band, s.band);
        storeLanes(high, s.high);
    }

    /// The state-variable filter; leaves the tapped output in `x`. `at` is left to the caller.
    SONDRAVA_INLINE void filter(Floats& x) {
        const Floats f = cut + at * cutStep;
        low += f * band;
        high = x - low - damp * band;
        band += f * high;
        x = Floats((Ints(low) & tapLow) | (Ints(band) & tapBand) | (Ints(high) & tapHigh));
    }
};

/// The strip in registers: a segment of frames of N lanes.
template <int N>
struct StripRegisters : FilterRegisters<N> {
    using typename FilterRegisters<N>::Floats;
    using typename FilterRegisters<N>::Ints;
    using Floats4 = Vectors<4>::Floats;
    using FilterRegisters<N>::at;

    Floats peakL, peakR, gainL, gainLStep, gainR, gainRStep;

    SONDRAVA_INLINE explicit StripRegisters(const StripLanes& s) : FilterRegisters<N>(s) {
        loadLanes(peakL, s.peakL);
        loadLanes(peakR, s.peakR);
        loadLanes(gainL, s.gainL);
        loadLanes(gainLStep, s.gainLStep);
        loadLanes(gainR, s.gainR);
        loadLanes(gainRStep, s.gainRStep);
    }

    /// Writes back what has changed.
    SONDRAVA_INLINE void store(StripLanes& s) const {
        FilterRegisters<N>::store(s);
        storeLanes(at, s.at);
        storeLanes(peakL, s.peakL);
        storeLanes(peakR, s.peakR);
    }

    /// Applies the gains, raises the meters and adds the sums of all lanes to one output frame.
    SONDRAVA_INLINE void mix(const Floats& y, float* left, float* right) {
        const Floats l = y * (gainL + at * gainLStep);
        const Floats r = y * (gainR + at * gainRStep);
        raise(peakL, l);
        raise(peakR, r);
        Floats4 l4, r4;
        fold(l, l4);
        fold(r, r4);
        const Floats4 pairs = __builtin_shufflevector(l4, r4, 0, 1, 4, 5) +
                              __builtin_shufflevector(l4, r4, 2, 3, 6, 7);
        const Floats4 sums = pairs + __builtin_shufflevector(pairs, pairs, 1, 0, 3, 2);
        *left += sums[0];
        *right += sums[2];
        at += 1.0f;
    }

private:
    SONDRAVA_INLINE static void raise(Floats& peak, const Floats& v) {
        const Floats magnitude = Floats(Ints(v) & 0x7FFFFFFF);
        peak = magnitude > peak ? magnitude : peak;
    }
    SONDRAVA_INLINE static void fold(const Floats& v, Floats4& sum) {
        if constexpr (N == 8)
            sum = __builtin_shufflevector(v, v, 0, 1, 2, 3) +
                  __builtin_shufflevector(v, v, 4, 5, 6, 7);
        else
            sum = v;
    }
};

constexpr int maxBatchVoices = 64; ///< that are rendered at a time

/// Calls `render(voices, n)` for those of some voices that have lanes, or are to have some, up to
/// `maxBatchVoices` at a time; and lets the silent tails of others run out. `rests(voice)` tells
/// whether nothing is heard of one that sounds.
template <class Rests, class F>
void eachSeated(CVoice** voices, int count, int frames, Rests&& rests, F&& render) {
    CVoice* seated[maxBatchVoices];
    int n = 0;
    for (int i = 0; i < count; i++) {
        CVoice* v = voices[i];
        if (v->seat == Seat::none && (!v->live() || rests(*v))) v->seat = Seat::resting;
        if (v->seat == Seat::mono || v->seat == Seat::stereo || v->seat == Seat::none)
            seated[n++] = v;
        else if (v->seat == Seat::resting && v->state == CVoice::sounding)
            passRest(v, frames);
        if (n < maxBatchVoices && i + 1 < count) continue;
        if (n > 0) render(seated, n);
        n = 0;
    }
}

/// A voice in its lanes.
struct LaneVoice {
    CVoice* voice = nullptr;
    int lane = 0;        ///< the first one, the left channel
    bool stereo = false; ///< takes two lanes, else one for both channels
    int left = 0;        ///< frames left of its slice
    int slice = 0;       ///< frames of its slice
    bool alive = true;   ///< still sounds

    int rightLane() const { return stereo ? lane + 1 : lane; }
};

/// Takes the lanes of a voice that has ended out of the sum.
template <class Batch>
void silence(Batch& batch, const LaneVoice& v) {
    for (int lane = v.lane; lane <= v.rightLane(); lane++)
        batch.s.stripOf(lane).mute(lane % maxLanes);
}

/// Begins the slices that are due, of up to `reach` frames; the frames that all voices can then run
/// together, at most `most`, and 0 when none sounds any more.
template <class Batch>
int beginSlices(Batch& batch, int most, int reach) {
    int segment = 0;
    for (int i = 0; i < batch.count; i++) {
        LaneVoice& v = batch.voices[i];
        if (!v.alive) continue;
        if (v.left == 0) {
            v.alive = batch.beginSlice(v, reach);
            v.left = v.slice;
        }
        if (!v.alive)
            silence(batch, v);
        else if (segment == 0 || v.left < segment)
            segment = v.left;
    }
    return std::min(segment, most);
}

/// Takes `n` frames off all slices and ends those that are through.
template <class Batch>
void endSlices(Batch& batch, int n) {
    for (int i = 0; i < batch.count; i++) {
        LaneVoice& v = batch.voices[i];
        if (!v.alive) continue;
        v.left -= n;
        if (v.left > 0) continue;
        v.alive = batch.endSlice(v);
        if (!v.alive) silence(batch, v);
    }
}

/// Runs the voices of a batch through `frames` frames: each begins and ends its own slices, and all
/// run together from one such place to the next. Slices may go on `ahead` frames behind the call.
/// Batch has `voices`, `count`, `s.stripOf(lane)`, the eight lanes around one, `bool
/// beginSlice(LaneVoice&, int most)`, which sets `slice` to 1 to `most`, and `bool
/// endSlice(LaneVoice&)`: both false when the voice has ended; and `void run(int from, int n)`.
template <class Batch>
void runBatch(Batch& batch, int frames, int ahead) {
    for (int done = 0; done < frames;) {
        const int segment = beginSlices(batch, frames - done, frames - done + ahead);
        if (segment == 0) return;
        batch.run(done, segment);
        endSlices(batch, segment);
        done += segment;
    }
}
