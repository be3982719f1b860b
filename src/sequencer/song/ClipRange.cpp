#include "sequencer/song/ClipRange.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"

#include <algorithm>
#include <cmath>

namespace {

int framesBehind(const CAudioEvent* clip) {
    return clip->reverse ? clip->start : clip->sample->frames - 1 - clip->end;
}

int framesBefore(const CAudioEvent* clip) {
    return clip->reverse ? clip->sample->frames - 1 - clip->end : clip->start;
}

} // namespace

int frameCount(const CAudioEvent* clip) {
    return saturate(int64_t(clip->end) - clip->start + 1);
}

int clipRate(const CAudioEvent* clip) {
    return tunedRate(clip->sample, clip->semitones + double(clip->fine));
}

int framesBetween(CSeq* seq, const CAudioEvent* clip, int from, int to) {
    const int first = std::min(from, to), ticks = saturate(int64_t(std::max(from, to)) - first);
    const int frames = saturate(asRound64(seq->ticksToFrames(first, ticks, clipRate(clip))));
    return to < from ? -frames : frames;
}

void setClipTicks(CSeq* seq, CAudioEvent* clip, int songTick, int ticks) {
    if (clip->mode != playRepitch) {
        clip->ticks = asMax(limitTicks(ticks), 1);
        return;
    }
    // Rounded up, so that the whole ticks of these frames are the length that was asked for.
    const double frames = std::ceil(seq->ticksToFrames(songTick, ticks, clipRate(clip)));
    const int more = asMinMax(saturate(asInt64(frames) - frameCount(clip)), 1 - frameCount(clip),
                              asMax(framesBehind(clip), 0));
    (clip->reverse ? clip->start : clip->end) += clip->reverse ? -more : more;
}

void trimClip(CSeq* seq, CAudioEvent* clip, int songTick, int delta) {
    if (clip->mode != playRepitch) {
        clip->ticks = asMax(limitTicks(int64_t(clip->ticks) - delta), 1);
        return;
    }
    const int passed = framesBetween(seq, clip, songTick, saturate(int64_t(songTick) + delta));
    const int less = asMinMax(passed, -asMax(framesBefore(clip), 0), frameCount(clip) - 1);
    (clip->reverse ? clip->end : clip->start) += clip->reverse ? -less : less;
}

int longestClip(CSeq* seq, const CAudioEvent* clip, int songTick) {
    if (clip->mode != playRepitch) return maxTicks;
    const double frames = double(frameCount(clip)) + framesBehind(clip);
    return asRound(seq->framesToTicks(songTick, frames, clipRate(clip)));
}

int ticksBefore(CSeq* seq, const CAudioEvent* clip, int songTick, int limit) {
    if (clip->mode != playRepitch) return limit;
    int fits = 0, tooMany = limit + 1;
    while (tooMany - fits > 1) {
        const int ticks = fits + (tooMany - fits) / 2;
        const bool fit = framesBetween(seq, clip, songTick - ticks, songTick) <= framesBefore(clip);
        (fit ? fits : tooMany) = ticks;
    }
    return fits;
}

int frameInClip(CSeq* seq, const CAudioEvent* clip, int songTick, int into) {
    if (clip->mode != playRepitch) return posAsFrames2(clip, into, clip->ticks);
    return saturate(asInt64(clip->start + seq->ticksToFrames(songTick, into, clipRate(clip))));
}
