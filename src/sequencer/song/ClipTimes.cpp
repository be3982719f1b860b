#include "sequencer/song/ClipTimes.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double semitonesPerOctave = 12.0;

int sourceRate(const CAudioEvent* e) {
    return tunedRate(e->sample, e->semitones + double(e->fine));
}

double range(const CAudioEvent* e) {
    return double(e->end) - e->start + 1;
}

int frameAt(const CAudioEvent* e, double framesIn) {
    return saturate(asInt64(double(e->start) + framesIn));
}

const CAudioEvent* clipAtOwnSpeed(const CPart* part, const CPart* content) {
    if (part->type != partAudio || static_cast<const CAudioPart*>(part)->multiclip) return nullptr;
    const auto* event = asClip(content->events.load());
    return event && event->mode == playRepitch && event->sample ? event : nullptr;
}

} // namespace

int tunedRate(const CSample* sample, double semitones) {
    return asMax(asInt(double(sample->rate) * std::exp2(semitones / semitonesPerOctave)), 1);
}

const CAudioEvent* lengthEvent(CPart* part) {
    return lengthEvent(part, part->content());
}

const CAudioEvent* lengthEvent(const CPart* part, const CPart* content) {
    const CAudioEvent* event = clipAtOwnSpeed(part, content);
    return event && event->sample->valid ? event : nullptr;
}

int64_t longestTicks(CPart* part) {
    const int64_t told = part->length > 0 ? int(part->length) : quarterTicks;
    const CAudioEvent* e = clipAtOwnSpeed(part, part->content());
    if (!e) return told;
    const double seconds = range(e) / sourceRate(e);
    return std::max(told, asInt64(seconds * double(maxTempo) * ticksPerSecondPerBpm) + 1);
}

int sampleAsTicks(CQV* host, const CAudioEvent* e) {
    if (!e->sample) return 0;
    if (e->mode != playRepitch) return e->ticks;
    const double seconds = range(e) / sourceRate(e);
    return asRound(seconds * double(host->tempo) * ticksPerSecondPerBpm);
}

int sampleAsTicks2(CSeq* seq, const CAudioEvent* e, int tick) {
    if (!e->sample) return 0;
    if (e->mode != playRepitch) return e->ticks;
    return asRound(seq->framesToTicks(tick, range(e), sourceRate(e)));
}

int posAsFrames2(const CAudioEvent* e, int ticks, int total) {
    if (total < 1) return frameAt(e, 0.0);
    return frameAt(e, isPinned(e) ? framesAtShare(e, double(ticks) / total)
                                  : range(e) * ticks / total);
}

int posAsFrames3(const CAudioEvent* e, int ticks, int total, float tempo) {
    if (e->mode != playRepitch) return posAsFrames2(e, ticks, total);
    if (!e->sample || !(tempo > 0.0f)) return e->start;
    return frameAt(e, double(ticks) * sourceRate(e) / (double(tempo) * ticksPerSecondPerBpm));
}

bool getAudioSelection(CSeq* seq, CPart* part, int fromTick, int toTick, int& from, int& to) {
    const auto* e = firstClip(part);
    if (!e || !e->sample) return false;
    const auto frames = [&](int tick) {
        return frameAt(e, seq->ticksToFrames(part->pos, tick, asInt(double(e->sample->rate))));
    };
    from = asMinMax(frames(std::min(fromTick, toTick)), e->start, e->end);
    to = asMinMax(frames(std::max(fromTick, toTick)), e->start, e->end);
    if (!e->reverse) return true;
    const int mirrored = saturate(int64_t(e->start) + e->end - to);
    to = saturate(int64_t(e->start) + e->end - from);
    from = mirrored;
    return true;
}
