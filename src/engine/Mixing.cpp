#include "engine/Mixing.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "engine/StripEvents.h"
#include "engine/StripMeters.h"
#include "engine/plan/GraphPlan.h"
#include "engine/plan/GraphWorkers.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstring>
#include <span>

namespace {

using Lanes = float __attribute__((vector_size(16)));
constexpr int laneCount = 4;

/// The highest and lowest samples so far, in lanes that do not wait for each other. A comparison
/// with what is not a number is false, so such a sample leaves them as they are.
struct Extremes {
    explicit Extremes(float peak) : high{peak, peak, peak, peak}, low(-high) {}

    void take(Lanes x) {
        high = x > high ? x : high;
        low = x < low ? x : low;
    }
    void joinTo(float& peak) const {
        for (int k = 0; k < laneCount; ++k) {
            meter(high[k], peak);
            meter(low[k], peak);
        }
    }

    Lanes high, low;
};

Lanes load(const float* from) {
    Lanes x;
    std::memcpy(&x, from, sizeof x);
    return x;
}

/// Calls `pair` for every two lanes of frames and `single` for each frame left over.
template <class Pair, class Single>
void inLanes(int frames, Pair&& pair, Single&& single) {
    int i = 0;
    for (; i + 2 * laneCount <= frames; i += 2 * laneCount) pair(i);
    for (; i < frames; ++i) single(i);
}

/// Puts `value(read, i)`, made of what `read` finds at a place, into each frame, and returns what
/// `highest` gives for the result.
template <class Value>
float putAndMeter(float* buf, int frames, float peak, Value&& value) {
    Extremes even(peak), odd(peak);
    const auto put = [&](int i, Extremes& seen) {
        const Lanes x = value(load, i);
        std::memcpy(buf + i, &x, sizeof x);
        seen.take(x);
    };
    const auto pair = [&](int i) {
        put(i, even);
        put(i + laneCount, odd);
    };
    const auto rest = [&](int i) {
        buf[i] = value([](const float* at) { return *at; }, i);
        meter(buf[i], peak);
    };
    inLanes(frames, pair, rest);
    even.joinTo(peak);
    odd.joinTo(peak);
    return peak;
}

constexpr int midiChannels = 16;

void apply(const StripTarget& target, const CMIDIBytes* event) {
    if (target.channel)
        target.channel->setParam(event->param, event->value);
    else if (event->param == 0)
        target.send->setParam(0, event->value);
}

/// Starts the ramps towards where the user has put fader, mute, solo and pan.
void followControls(CComp* c, COutputChannel* ch) {
    const float level = stripOpen(c, ch) ? fLimit(ch->vol, 0.0f, 1.0f) : 0.0f;
    if (level != ch->gainTarget) ch->setVol(level, true);
    const float pan = fLimit(ch->pan, -1.0f, 1.0f);
    if (pan != ch->panTarget) ch->setPan(pan, true);
}

/// Frames until the next end of a ramp, at most `frames`.
int segmentLength(const COutputChannel* ch, int frames) {
    if (ch->gainRamp > 0) frames = std::min(frames, ch->gainRamp);
    if (ch->panRamp > 0) frames = std::min(frames, ch->panRamp);
    return frames;
}

/// A straight line that has so many frames to go; counted from its end, so that it goes the same
/// way in any pieces.
struct Line {
    float end, step;
    int left;
    float at(int i) const { return end - step * float(left - i); }
};

void scaleByRamp(float* buf, int frames, const Line& side, const Line& gain) {
    for (int i = 0; i < frames; ++i) {
        const float g = gain.at(i);
        buf[i] = buf[i] * side.at(i) * g * g;
    }
}

struct Peaks {
    float left, right;
};

/// The strip of a component is silent in this block.
bool stripSilent(const CComp* c, int end) {
    return c->planned && c->planned->silence >= end;
}

void mixSegment(COutputChannel* ch, int frames, int offset, bool unscaled, Peaks& peaks) {
    float* left = ch->bufL + offset;
    float* right = ch->bufR + offset;
    float factorL = 1.0f, factorR = 1.0f;
    if (!unscaled && (ch->gainRamp > 0 || ch->panRamp > 0)) {
        const Sides to = panLaw(ch->panTarget);
        const Line gain{ch->gainTarget, ch->gainStep, ch->gainRamp};
        scaleByRamp(left, frames, {to.left, ch->panLStep, ch->panRamp}, gain);
        scaleByRamp(right, frames, {to.right, ch->panRStep, ch->panRamp}, gain);
    } else if (!unscaled) {
        factorL = ch->panL * ch->gain * ch->gain;
        factorR = ch->panR * ch->gain * ch->gain;
    }
    peaks.left = scaleAndMeter(left, frames, factorL, peaks.left);
    peaks.right = scaleAndMeter(right, frames, factorR, peaks.right);
}

/// Lets both means come nearer to those of these frames.
void followPower(COutputChannel* ch, int frames, int offset) {
    constexpr float seconds = 0.3f;
    const float share = 1.0f - std::exp(-float(frames) / (seconds * float(ch->comp->host->rate)));
    const auto follow = [&](const float* buf, Shared<float>& power) {
        const float mean = sumOfSquares(buf + offset, frames) / float(frames);
        const float now = power + (mean - power) * share;
        power = now > 1e-12f ? now : 0.0f;
    };
    follow(ch->bufL, ch->powerL);
    follow(ch->bufR, ch->powerR);
}

void mixStrip(CComp* c, COutputChannel* ch, int frames, int offset) {
    followControls(c, ch);
    const bool unscaled = c->host->renderMode == 1 && c->host->renderFreeze;
    const bool silent = stripSilent(c, offset + frames);
    Peaks peaks{ch->peakL, ch->peakR};
    for (int done = 0; done < frames;) {
        const int n = segmentLength(ch, frames - done);
        if (!silent) mixSegment(ch, n, offset + done, unscaled, peaks);
        ch->advanceRamps(n);
        done += n;
    }
    storePeak(peaks.left, ch->peakL, ch->holdL);
    storePeak(peaks.right, ch->peakR, ch->holdR);
    if (ch->powerWanted && frames > 0) followPower(ch, frames, offset);
    if (StripMeters* meters = ch->measured())
        meters->loudness.process(ch->bufL + offset, ch->bufR + offset, frames);
}

void meterSum(CInputChannel* to, int frames) {
    storePeak(highest(to->bufL, frames, to->peakL), to->peakL, to->holdL);
    storePeak(highest(to->bufR, frames, to->peakR), to->peakR, to->holdR);
}

} // namespace

void meterPart(COutputChannel* ch, int frames) {
    if (ch->powerWanted && frames > 0) {
        storePeak(highest(ch->bufL, frames, ch->peakL), ch->peakL, ch->holdL);
        storePeak(highest(ch->bufR, frames, ch->peakR), ch->peakR, ch->holdR);
        followPower(ch, frames, 0);
    }
    if (StripMeters* meters = ch->measured()) meters->loudness.process(ch->bufL, ch->bufR, frames);
}

void addStereo(CInputChannel* to, const float* left, const float* right, int frames, PlanFade& fade,
               bool metered) {
    if (fade.over()) return;
    if (fade.running()) {
        for (int i = 0; i < frames; ++i) {
            to->bufL[i] += left[i] * fade.at(i);
            to->bufR[i] += right[i] * fade.at(i);
        }
        fade.advance(frames);
        if (metered) meterSum(to, frames);
    } else if (metered) {
        storePeak(addAndMeter(to->bufL, left, frames, to->peakL), to->peakL, to->holdL);
        storePeak(addAndMeter(to->bufR, right, frames, to->peakR), to->peakR, to->holdR);
    } else {
        addScaled(to->bufL, left, frames, 1.0f);
        addScaled(to->bufR, right, frames, 1.0f);
    }
}

Sides panLaw(float p) {
    if (p >= 0.0f) return {1.0f - p, 1.0f + p * 0.5f};
    return {1.0f - p * 0.5f, 1.0f + p};
}

StripTarget stripTarget(const CComp* c, const void* owner) {
    const int buses = std::min(c->host->sends.getCount(), maxSends);
    for (auto* ch : c->outputs) {
        if (ch == owner) return {ch, nullptr};
        for (int k = 0; k < buses; ++k)
            if (ch->sendLevels[k] == owner) return {nullptr, ch->sendLevels[k]};
    }
    return {};
}

bool heardInSolo(const COutputChannel* ch) {
    return ch->solo || !ch->anySolo;
}

bool stripOpen(const CComp* c, const COutputChannel* ch) {
    const bool exempt = c->type == compAudioOut || c->type == compGroupCh;
    return !ch->mute && (exempt || heardInSolo(ch));
}

float highest(const float* buf, int frames, float peak) {
    Extremes even(peak), odd(peak);
    const auto pair = [&](int i) {
        even.take(load(buf + i));
        odd.take(load(buf + i + laneCount));
    };
    inLanes(frames, pair, [&](int i) { meter(buf[i], peak); });
    even.joinTo(peak);
    odd.joinTo(peak);
    return peak;
}

float scaleAndMeter(float* buf, int frames, float factor, float peak) {
    return putAndMeter(buf, frames, peak, [&](auto read, int i) { return read(buf + i) * factor; });
}

void clearChannels(CComp& c, int frames) {
    const auto clear = [frames](float* left, float* right) {
        for (float* side : {left, right})
            if (left && right) std::fill_n(side, frames, 0.0f);
    };
    for (auto* in : c.inputs) clear(in->bufL, in->bufR);
    for (auto* ch : c.outputs) clear(ch->bufL, ch->bufR);
}

float addAndMeter(float* __restrict to, const float* __restrict from, int frames, float peak) {
    return putAndMeter(to, frames, peak,
                       [&](auto read, int i) { return read(to + i) + read(from + i); });
}

float sumOfSquares(const float* buf, int frames) {
    Lanes even{}, odd{};
    float rest = 0.0f;
    const auto pair = [&](int i) {
        const Lanes x = load(buf + i), y = load(buf + i + laneCount);
        even += x * x;
        odd += y * y;
    };
    inLanes(frames, pair, [&](int i) { rest += buf[i] * buf[i]; });
    for (int k = 0; k < laneCount; ++k) rest += even[k] + odd[k];
    return std::isfinite(rest) ? rest : 0.0f;
}

void storePeak(float peak, Shared<float>& live, Shared<float>& hold) {
    if (peak > hold) hold = peak;
    live = std::min(peak, 1.0f);
}

void addScaled(float* __restrict to, const float* __restrict from, int frames, float amount) {
    for (int i = 0; i < frames; ++i) to[i] += from[i] * amount;
}

void CComp::mix(int frames) {
    assert(heldByThread());
    if (mixed) return;
    SendTap* tap = planned ? planned->tap.get() : nullptr;
    if (tap) tap->begin();
    if (planned && planned->events && planned->events->strips)
        planned->events->serveStrips(*planned, host->plans->current().latency(), frames);
    CMIDIQ* port = inPort();
    const CMIDIBytes* first = planned ? planned->stripEvents() : port ? port->first() : nullptr;
    const auto piece = [&](int n, int offset) { subMix(n, offset); };
    eachStripEvent(this, first, frames, piece, [&](const StripTarget& target, const CMIDIBytes* e) {
        if (tap) tap->beforeEvents(this);
        apply(target, e);
    });
    mixed = true;
}

void CComp::subMix(int frames, int offset) {
    assert(heldByThread());
    SendTap* tap = planned ? planned->tap.get() : nullptr;
    int index = 0;
    for (auto* ch : outputs) {
        mixStrip(this, ch, frames, offset);
        if (tap) tap->take(ch, index++);
    }
    if (tap) tap->endPiece();
}

void CComp::fx(int frames) {
    assert(heldByThread());
    if (fxDone) return;
    CMIDIQ* port = inPort();
    CMIDIBytes* events = port ? port->first() : nullptr;
    for (auto* ch : outputs) ch->processFX(events, frames);
    fxDone = true;
}

void CComp::mergeAudio(int frames) {
    assert(heldByThread());
    if (!planned) return;
    for (PlanArrival& arrival : std::span(planned->arrivals).subspan(size_t(planned->gathered)))
        if (!arrival.outside) arrival.addTo(input(), frames, host->scratch());
}

namespace {

void silenceChannels(CMIDIQ* port) {
    for (int ch = 0; ch < midiChannels; ++ch)
        port->addMidiEvent(ch, asData(midiController | ch, ccAllNotesOff, 0));
}

} // namespace

void CComp::mergeMIDI(int frames) {
    assert(heldByThread());
    if (planned && !planned->takesMidi) return;
    PlanEvents* const late = planned ? planned->events.get() : nullptr;
    const auto hold = [&](const PlanNode* from) {
        if (late) late->hold(planned->latency - (from ? from->midiLatency : 0));
    };
    hold(nullptr); // what the song, or a controller, has put there
    if (planned) {
        for (const auto& [cable, cut, from] : planned->midi) {
            if (!cut && cable->fromPort && !cable->muted)
                passEvents(cable->fromPort, cable->toPort);
            if (allNotesOff) silenceChannels(cable->toPort);
            allNotesOff = 0;
            hold(from);
        }
    }
    // What lost its last cable would else go on for good.
    if (allNotesOff && inPort() && !(planned && planned->leaving)) {
        silenceChannels(inPort());
        allNotesOff = 0;
        hold(nullptr);
    }
    if (late) late->serve(frames);
}

void CComp::passEvents(CMIDIQ* from, CMIDIQ* to) {
    for (CMIDIBytes* e = from->first(); e; e = e->next) {
        const bool controller = e->kind == eventMidi && statusByte(e->data) == midiController;
        if (controller && host->midiMapped(this, to, e)) continue;
        to->insert(e->time, e->data, e->kind, e->value, e->param, e->owner, e->extra);
    }
}
