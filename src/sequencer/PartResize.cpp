#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/AudioVoices.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipTimes.h"
#include "sequencer/MoveEdits.h"
#include "sequencer/PartEdits.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <unordered_set>

namespace {

constexpr StepEffects resizeEffects{.song = true, .seq = SeqNotice::parts};

/// The only clip of a part that lasts as long as it does; null for other parts.
const CAudioEvent* rulingClip(CPart* part) {
    if (part->type != partAudio || static_cast<CAudioPart*>(part)->multiclip) return nullptr;
    const auto* clip = static_cast<const CAudioEvent*>(part->getEvents());
    return clip && (clip->mode != playRepitch || lengthEvent(part)) ? clip : nullptr;
}

int rateOf(const CAudioEvent* clip) {
    return tunedRate(clip->sample, clip->semitones + double(clip->fine));
}

int framesBehind(const CAudioEvent* clip) {
    return clip->reverse ? clip->start : clip->sample->frames - 1 - clip->end;
}

int framesBefore(const CAudioEvent* clip) {
    return clip->reverse ? clip->sample->frames - 1 - clip->end : clip->start;
}

void moveEnd(CAudioEvent* clip, int frames) {
    if (clip->reverse)
        clip->start = asMinMax(saturate(int64_t(clip->start) - frames), 0, clip->end);
    else
        clip->end =
            asMinMax(saturate(int64_t(clip->end) + frames), clip->start, clip->sample->frames - 1);
}

void moveStart(CAudioEvent* clip, int frames) {
    if (clip->reverse)
        clip->end =
            asMinMax(saturate(int64_t(clip->end) - frames), clip->start, clip->sample->frames - 1);
    else
        clip->start = asMinMax(saturate(int64_t(clip->start) + frames), 0, clip->end);
}

/// Frames of a clip at its own speed that pass between two ticks of the song; below 0 where `to`
/// lies before `from`.
int framesBetween(CSeq* seq, const CAudioEvent* clip, int from, int to) {
    const int ticks = saturate(int64_t(std::max(from, to)) - std::min(from, to));
    const int frames =
        saturate(asRound64(seq->ticksToFrames(std::min(from, to), ticks, rateOf(clip))));
    return to < from ? -frames : frames;
}

/// One resize of parts. Content that several parts show is edited once.
class Resize {
public:
    explicit Resize(CSeq* song)
        : seq(song), undo(song->host->undoStart("Resize", song, resizeEffects)) {}
    ~Resize() { seq->host->undoEnd(undo, false); }
    Resize(const Resize&) = delete;
    Resize& operator=(const Resize&) = delete;

    void moveEndOf(CPart* part, int length) {
        const CAudioEvent* clip = rulingClip(part);
        if (!clip) return grow(part, length - part->length);
        if (!done.insert(part->content()).second) return;
        if (clip->mode != playRepitch) return stretch(part, length - seq->getTicks(part));
        // Rounded up, so that the whole ticks of these frames are the length that was asked for.
        const double frames = std::ceil(seq->ticksToFrames(part->pos, length, rateOf(clip)));
        edit(part, [&](CAudioEvent* e) {
            moveEnd(e, saturate(asInt64(frames) - (int64_t(e->end) - e->start + 1)));
        });
    }

    void moveStartOf(CPart* part, int delta) {
        const CAudioEvent* clip = rulingClip(part);
        if (!clip) {
            recordMove(undo, part, delta);
            grow(part, seq->getTicks(part) - delta - part->length);
            undo->asGrow(part, part->offset, -delta);
            return;
        }
        if (!done.insert(part->content()).second) return;
        for (CPart* user : partsShowing(seq, part)) recordMove(undo, user, delta);
        if (clip->mode != playRepitch) return stretch(part, -delta);
        const int frames = framesBetween(seq, clip, part->pos, part->pos + delta);
        edit(part, [frames](CAudioEvent* e) { moveStart(e, frames); });
    }

private:
    CSeq* seq;
    CUndo* undo;
    std::unordered_set<const CPart*> done;

    void grow(CPart* part, int ticks) {
        if (ticks) recordGrow(undo, part, ticks);
    }

    void stretch(CPart* part, int delta) {
        for (CPart* user : partsShowing(seq, part)) grow(user, delta);
        edit(part, [delta](CAudioEvent* e) {
            e->ticks = asMax(limitTicks(int64_t(e->ticks) + delta), 1);
        });
    }

    template <class F>
    void edit(CPart* part, F&& change) {
        std::unique_ptr<CPart> edited(part->content()->copy(0));
        auto* clip = static_cast<CAudioEvent*>(edited->events.load());
        const auto range = [clip] { return std::tuple(clip->start, clip->end, clip->ticks); };
        const auto before = range();
        change(clip);
        if (range() != before) swapUndoPart(undo, part->content(), edited.release());
    }
};

/// Ticks that a part has to spare until only one remains.
int spareTicks(CSeq* seq, CPart* part) {
    const CAudioEvent* clip = rulingClip(part);
    const int ticks = seq->getTicks(part);
    return (clip && clip->mode != playRepitch ? std::min(ticks, clip->ticks) : ticks) - 1;
}

/// The most ticks, up to `limit`, whose frames the clip still has before its start.
int ticksBefore(CSeq* seq, const CAudioEvent* clip, int pos, int limit) {
    int fits = 0, tooMany = limit + 1;
    while (tooMany - fits > 1) {
        const int ticks = fits + (tooMany - fits) / 2;
        const bool fit = framesBetween(seq, clip, pos - ticks, pos) <= framesBefore(clip);
        (fit ? fits : tooMany) = ticks;
    }
    return fits;
}

ResizeRange startRange(CSeq* seq, CPart* part) {
    const CAudioEvent* clip = rulingClip(part);
    int earlier = part->pos;
    if (clip)
        for (const CPart* user : partsShowing(seq, part))
            earlier = std::min(earlier, int(user->pos));
    earlier = asMax(earlier, 0);
    if (lengthEvent(part)) earlier = ticksBefore(seq, clip, part->pos, earlier);
    return {-earlier, asMax(spareTicks(seq, part), 0)};
}

ResizeRange endRange(CSeq* seq, CPart* part) {
    const int ticks = seq->getTicks(part), least = asMin(-spareTicks(seq, part), 0);
    const CAudioEvent* clip = lengthEvent(part);
    if (!clip) return {least, maxTicks - ticks};
    const double frames = double(clip->end) - clip->start + 1 + framesBehind(clip);
    const int longest = asRound(seq->framesToTicks(part->pos, frames, rateOf(clip)));
    return {least, asMax(longest - ticks, 0)};
}

} // namespace

ResizeRange resizeRange(CSeq* seq, bool atStart) {
    const std::vector<PlacedPart> parts = selectedParts(seq);
    if (parts.empty()) return {};
    ResizeRange range{-maxTicks, maxTicks};
    for (const PlacedPart& p : parts) {
        const ResizeRange own = atStart ? startRange(seq, p.part) : endRange(seq, p.part);
        range.least = std::max(range.least, own.least);
        range.greatest = std::min(range.greatest, own.greatest);
    }
    return range;
}

void resizeParts(CSeq* seq, int delta, bool relative) {
    if (relative && delta == 0) return;
    Resize resize(seq);
    for (const PlacedPart& p : selectedParts(seq)) {
        const int64_t length = relative ? int64_t(seq->getTicks(p.part)) + delta : delta;
        if (length >= 1) resize.moveEndOf(p.part, limitTicks(length));
    }
}

void resizePartsStart(CSeq* seq, int delta) {
    const ResizeRange range = resizeRange(seq, true);
    delta = asMinMax(delta, range.least, range.greatest);
    if (delta == 0) return;
    Resize resize(seq);
    for (const PlacedPart& p : selectedParts(seq)) resize.moveStartOf(p.part, delta);
}
