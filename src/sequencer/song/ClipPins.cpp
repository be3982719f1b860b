#include "sequencer/song/ClipPins.h"

#include "base/Numbers.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/Events.h"

#include <algorithm>

namespace {

/// A piece in the order of the sample: frames of it, and shares while it plays forward.
struct Stretch {
    double from, to, shareFrom, shareTo;
    float pitch;
};

double endOf(const CAudioEvent* clip) {
    return clip->end + 1.0;
}

bool counts(const CAudioEvent* clip, const Stretch& open, const ClipPin& pin) {
    return pin.frame > open.from && pin.frame <= clip->end && pin.share > open.shareFrom &&
           pin.share < 1.0;
}

/// Calls `visit(piece)` in their order until it answers true; returns that one, else the last.
template <class F>
Stretch eachStretch(const CAudioEvent* clip, F&& visit) {
    Stretch open{double(clip->start), endOf(clip), 0.0, 1.0, 0.0f};
    for (const ClipPin& pin : clip->pins) {
        if (pin.frame <= clip->start) open.pitch = pin.pitch;
        if (!counts(clip, open, pin)) continue;
        const Stretch piece{open.from, double(pin.frame), open.shareFrom, pin.share, open.pitch};
        if (visit(piece)) return piece;
        open = {double(pin.frame), endOf(clip), pin.share, 1.0, pin.pitch};
    }
    visit(open);
    return open;
}

Stretch atFrame(const CAudioEvent* clip, double frame) {
    return eachStretch(clip, [&](const Stretch& s) { return frame < s.to; });
}

Stretch atShare(const CAudioEvent* clip, double share) {
    return eachStretch(clip, [&](const Stretch& s) { return share < s.shareTo; });
}

double shareIn(const Stretch& s, double frame) {
    return s.shareFrom +
           (frame - s.from) / std::max(s.to - s.from, 1.0) * (s.shareTo - s.shareFrom);
}

double frameIn(const Stretch& s, double share) {
    return s.from + (share - s.shareFrom) / (s.shareTo - s.shareFrom) * (s.to - s.from);
}

/// The frame of the sample that stands so many frames into what plays.
double frameOf(const CAudioEvent* clip, double framesIn) {
    return clip->reverse ? endOf(clip) - framesIn : clip->start + framesIn;
}

/// While the sample plays forward.
double plainShare(const CAudioEvent* clip, double frame) {
    return shareIn(atFrame(clip, frame), frame);
}

} // namespace

bool ClipPins::operator==(const ClipPins& other) const {
    return std::equal(begin(), end(), other.begin(), other.end());
}

bool isPinned(const CAudioEvent* clip) {
    return clip->pins.count > 0 && clip->mode == playStretch && clip->end > clip->start;
}

ClipPiece pieceAt(const CAudioEvent* clip, double framesIn) {
    const double frame = frameOf(clip, framesIn);
    if (!clip->reverse) {
        const Stretch s = atFrame(clip, frame);
        return {s.from - clip->start, s.to - clip->start, s.shareFrom, s.shareTo, s.pitch};
    }
    // Backward a piece has its last frame, and not the one behind it.
    const Stretch s = eachStretch(clip, [&](const Stretch& one) { return frame <= one.to; });
    return {endOf(clip) - s.to, endOf(clip) - s.from, 1.0 - s.shareTo, 1.0 - s.shareFrom, s.pitch};
}

double shareAt(const CAudioEvent* clip, double framesIn) {
    const double share = plainShare(clip, frameOf(clip, framesIn));
    return clip->reverse ? 1.0 - share : share;
}

double framesAtShare(const CAudioEvent* clip, double share) {
    const double plain = clip->reverse ? 1.0 - share : share;
    const double frame = frameIn(atShare(clip, plain), plain);
    return clip->reverse ? endOf(clip) - frame : frame - clip->start;
}

double shareOfFrames(const CAudioEvent* clip, int from, int to) {
    return plainShare(clip, to) - plainShare(clip, from);
}

void recutPins(CAudioEvent* clip, const CAudioEvent* before) {
    if (before->pins.count == 0) return;
    const double from = plainShare(before, clip->start), to = plainShare(before, endOf(clip));
    const float pitch = atFrame(before, clip->start).pitch;
    ClipPins kept;
    if (pitch != 0.0f) kept.list[kept.count++] = {clip->start, pitch, 0.0};
    for (const ClipPin& pin : before->pins)
        if (pin.frame > clip->start && pin.frame <= clip->end && kept.count < ClipPins::most)
            kept.list[kept.count++] = {pin.frame, pin.pitch, (pin.share - from) / (to - from)};
    clip->pins = kept;
}

double movePins(CAudioEvent* clip, const CAudioEvent* before,
                const std::function<std::int64_t(int)>& shift) {
    double lasts = 0.0;
    ClipPins moved;
    eachStretch(before, [&](const Stretch& s) {
        const int from = saturate(shift(asInt(s.from))), to = saturate(shift(asInt(s.to)));
        if (to <= from) return false;
        if (lasts > 0.0 || s.pitch != 0.0f) moved.list[moved.count++] = {from, s.pitch, lasts};
        lasts += (s.shareTo - s.shareFrom) * (to - from) / (s.to - s.from);
        return false;
    });
    for (int i = 0; i < moved.count; i++) moved.list[i].share /= lasts;
    clip->pins = moved;
    return lasts;
}
