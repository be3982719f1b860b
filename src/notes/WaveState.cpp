#include "notes/WaveState.h"

#include "audiofiles/CSample.h"
#include "audiofiles/SampleMeasures.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSamplePreview.h"
#include "engine/CSnap.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int magnet = 6; ///< pixels from which a place is drawn to another one
constexpr int barRoom = 48, beatRoom = 24;
constexpr int zeroReach = 2048;   ///< frames in which a crossing is looked for
constexpr int mostStep = 1 << 20; ///< bars from one line to the next

} // namespace

const CSample* WaveState::sample() const {
    const CAudioEvent* shown = clip();
    const CSample* found = shown ? shown->sample : nullptr;
    const bool readable = found && found->valid && found->chs > 0 &&
                          found->chs <= PeakImage::maxChannels && found->frames > 0;
    return readable ? found : nullptr;
}

int WaveState::frames() const {
    const CSample* found = sample();
    return found ? int(found->frames) : 0;
}

int WaveState::clipTick() const {
    int tick = part->pos + part->offset, i = 0;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        tick += e->delta;
        if (i++ == index) break;
    }
    return tick;
}

double WaveState::tickOf(double frame) const {
    const CAudioEvent* shown = clip();
    const double into = shown->reverse ? shown->end + 1.0 - frame : frame - shown->start;
    const int from = clipTick();
    if (isPinned(shown)) return from + shareAt(shown, into) * shown->ticks;
    if (shown->mode != playRepitch) return from + into * shown->ticks / asMax(1, frameCount(shown));
    const int rate = clipRate(shown);
    if (into < 0) return from + into * seq()->framesToTicks(from, rate, rate) / rate;
    return from + seq()->framesToTicks(from, into, rate);
}

double WaveState::frameOf(double tick) const {
    const CAudioEvent* shown = clip();
    const int from = clipTick();
    const double ticks = tick - from;
    double into = ticks * frameCount(shown) / asMax(1, shown->ticks);
    if (isPinned(shown)) into = framesAtShare(shown, ticks / asMax(1, shown->ticks));
    if (shown->mode == playRepitch) {
        const int whole = asInt(std::floor(ticks)), rate = clipRate(shown);
        const auto framesIn = [&](int count) {
            return count >= 0 ? seq()->ticksToFrames(from, count, rate)
                              : -seq()->ticksToFrames(from, -count, rate);
        };
        const double low = framesIn(whole), high = framesIn(whole + 1);
        into = low + (high - low) * (ticks - whole);
    }
    return shown->reverse ? shown->end + 1.0 - into : shown->start + into;
}

int WaveState::pinHere() const {
    const CAudioEvent* shown = clip();
    for (int i = 0; shown && i < shown->pins.count; i++)
        if (shown->pins.list[i].frame == range.from) return i;
    return -1;
}

double WaveState::pinShare(double tick) const {
    const double share = (tick - clipTick()) / asMax(1, clip()->ticks);
    return clip()->reverse ? 1.0 - share : share;
}

FrameRange WaveState::heard() const {
    if (!sample() || !seq()) return {};
    const CAudioEvent* shown = clip();
    const int first = asMinMax(shown->start, 0, frames());
    FrameRange cut{first, asMinMax(saturate(int64_t(shown->end) + 1), first, frames())};
    const auto frameAt = [&](int tick) { return asRound(frameOf(tick)); };
    int a = frameAt(part->pos), b = frameAt(part->pos + seq()->getTicks(part));
    if (a > b) std::swap(a, b);
    constexpr int slack = 64; // of whole ticks: the last one need not be full
    if (a > cut.from + slack) cut.from = asMin(a, cut.to);
    if (b < cut.to - slack) cut.to = asMax(b, cut.from);
    return cut;
}

FrameRange WaveState::chosen() const {
    return range.count() > 0 ? range : heard();
}

double WaveState::heardMs() const {
    constexpr int perSecond = 1000;
    return std::max(1.0, seq()->ticksToFrames(part->pos, seq()->getTicks(part), perSecond));
}

double WaveState::fadeMs(bool in) const {
    const float draft = in ? fadeIn : fadeOut;
    if (draft >= 0.0f) return double(draft);
    return double(in ? clip()->fadeInMs : clip()->fadeOutMs);
}

int WaveState::fadeFoot(bool in) const {
    const FrameRange all = heard();
    return in != (clip()->reverse != 0) ? all.from : all.to;
}

double WaveState::fadeHead(bool in) const {
    const double way = std::min(1.0, fadeMs(in) / heardMs()) * heard().count();
    return in != (clip()->reverse != 0) ? fadeFoot(in) + way : fadeFoot(in) - way;
}

CSamplePreview* WaveState::preview() const {
    return CSamplePreview::of(qv);
}

double WaveState::playFrame() const {
    if (!sample() || !seq()) return -1;
    if (CSamplePreview* player = preview(); player && player->isOn()) return player->frame();
    const double tick = seq()->getPos();
    if (tick < part->pos || tick > double(part->pos) + seq()->getTicks(part)) return -1;
    const double frame = frameOf(tick);
    return frame >= 0 && frame <= frames() ? frame : -1;
}

int WaveState::frameMeant(double x, bool free) const {
    const int frame = asMinMax(asRound(axis.frameAt(x)), 0, frames());
    if (free || !sample() || !seq()) return frame;
    int best = frame;
    double distance = magnet + 0.5;
    const auto offer = [&](double at) {
        const double away = std::fabs((at - axis.frameAt(x)) / axis.perPixel());
        if (away >= distance || at < 0 || at > frames()) return;
        distance = away;
        best = asRound(at);
    };
    for (const int mark : marks) offer(mark);
    const FrameRange all = heard();
    offer(all.from);
    offer(all.to);
    offer(0);
    offer(frames());
    if (seq()->snap->active)
        offer(frameOf(snapped(seq()->snap->getTicks(), asRound(tickOf(frame)), true)));
    if (best != frame || !zeroSnap) return best;
    return zeroCrossing(*sample(), frame, zeroReach);
}

void WaveState::eachBeat(int fromX, int toX,
                         const std::function<void(int x, int bar, int beat)>& visit) const {
    if (!sample() || !seq()) return;
    const FrameRange all = heard();
    const auto xAt = [&](int tick) { return axis.xOf(frameOf(tick)); };
    const auto tickAtBar = [&](int bar) { return ::tickOf(seq(), {bar, 1, 0}); };
    double a = tickOf(std::max<double>(all.from, axis.frameAt(fromX)));
    double b = tickOf(std::min<double>(all.to, axis.frameAt(toX)));
    if (a > b) std::swap(a, b);
    const int first = barPlace(seq(), asMax(0, asInt(a))).bar;
    const int start = tickAtBar(first);
    const int barWide = std::abs(xAt(tickAtBar(first + 1)) - xAt(start));
    int step = 1;
    while (int64_t(barWide) * step < barRoom && step < mostStep) step *= 2;
    const int beatTicks = asMax(1, 4 * quarterTicks / seq()->options.den());
    const bool beats = std::abs(xAt(start + beatTicks) - xAt(start)) >= beatRoom;
    for (int bar = (first - 1) / step * step + 1;; bar += step) {
        const int tick = tickAtBar(bar), next = tickAtBar(bar + 1);
        if (tick > b || next <= tick) return;
        if (tick >= a) visit(xAt(tick), bar, 1);
        for (int beat = 2, at = tick + beatTicks; beats && at < next; beat++, at += beatTicks)
            if (at >= a && at <= b) visit(xAt(at), bar, beat);
    }
}

void WaveState::keepMarks() {
    setMarks(seq(), place(), marks);
    shownChanged();
}

void WaveState::setRange(int from, int to) {
    from = asMinMax(from, 0, frames());
    to = asMinMax(to, 0, frames());
    forward = to >= from;
    range = {std::min(from, to), std::max(from, to)};
    rangeChanged();
}

CStr timeText(double frames, double rate) {
    const int64_t ms = asRound64(std::max(0.0, frames) * 1000 / std::max(1.0, rate));
    constexpr int minute = 60'000, second = 1000;
    return asStr(asInt(double(ms / minute))) + ":" +
           asStrFormat(int(ms % minute / second), "%02d") + "." +
           asStrFormat(int(ms % second), "%03d");
}
