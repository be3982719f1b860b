#pragma once

#include "base/Atomic.h"

class CComp;
class CInputChannel;
class COutputChannel;
struct PlanFade;

/// Sums and meters of the mix: plain loops over one channel's buffer, any thread. A frame that is
/// not a number raises no meter.

/// The highest of `peak` and the magnitudes of `frames` samples.
float highest(const float* buf, int frames, float peak);
/// Scales in place and returns what `highest` gives for the result.
float scaleAndMeter(float* buf, int frames, float factor, float peak);
/// The sum of the squares of `frames` samples; what is not a number counts as 0.
float sumOfSquares(const float* buf, int frames);
/// Adds `from` to `to` and returns what `highest` gives for the sum; the two do not overlap.
float addAndMeter(float* __restrict to, const float* __restrict from, int frames, float peak);
/// Ends a block's metering: the hold keeps the overshoot, the live meter ends at full scale.
void storePeak(float peak, Shared<float>& live, Shared<float>& hold);
/// Adds `from` times `amount` to `to`; the two do not overlap.
void addScaled(float* to, const float* from, int frames, float amount);

/// What a pan of -1 to 1 makes of both sides: at the centre nothing, a side that is turned to gains
/// up to a half.
struct Sides {
    float left, right;
};
Sides panLaw(float pan);

/// Adds a block to that of a channel, whose meters see the sum if it is `metered`, and moves the
/// fade on.
void addStereo(CInputChannel* to, const float* left, const float* right, int frames, PlanFade& fade,
               bool metered);

/// Meters a part's channel, which no fader of its own follows, for those who want it. Graph holder.
void meterPart(COutputChannel* ch, int frames);

/// Leaves silence in all inputs and outputs. Graph holder.
void clearChannels(CComp& c, int frames);

/// Whether no solo elsewhere silences the channel.
bool heardInSolo(const COutputChannel* ch);
/// Whether a strip of the component is heard: neither muted nor silenced by a solo elsewhere, as
/// `spreadSolo` found. The audio outs and groups are never silenced by a solo. Any thread.
bool stripOpen(const CComp* c, const COutputChannel* ch);
