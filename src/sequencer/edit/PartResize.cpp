#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <tuple>
#include <unordered_set>

namespace {

constexpr StepEffects resizeEffects{.song = true, .seq = SeqNotice::parts};

/// The only clip of a part that lasts as long as it does; null for other parts.
const CAudioEvent* rulingClip(CPart* part) {
    if (part->type != partAudio || asAudio(part)->multiclip) return nullptr;
    const auto* clip = firstClip(part);
    return clip && (clip->mode != playRepitch || lengthEvent(part)) ? clip : nullptr;
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
        if (clip->mode == playRepitch)
            return edit(part, [&](CAudioEvent* e) { setClipTicks(seq, e, part->pos, length); });
        const int delta = length - seq->getTicks(part);
        growAll(part, delta);
        edit(part, [&](CAudioEvent* e) { setClipTicks(seq, e, part->pos, e->ticks + delta); });
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
        if (clip->mode != playRepitch) growAll(part, -delta);
        edit(part, [&](CAudioEvent* e) { trimClip(seq, e, part->pos, delta); });
    }

private:
    CSeq* seq;
    CUndo* undo;
    std::unordered_set<const CPart*> done;

    void grow(CPart* part, int ticks) {
        if (ticks) recordGrow(undo, part, ticks);
    }

    void growAll(CPart* part, int delta) {
        for (CPart* user : partsShowing(seq, part)) grow(user, delta);
    }

    template <class F>
    void edit(CPart* part, F&& change) {
        std::unique_ptr<CPart> edited(part->content()->copy(0));
        auto* clip = firstClip(edited.get());
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
    const CAudioEvent* clip = lengthEvent(part);
    const int longest = clip ? longestClip(seq, clip, part->pos) : maxTicks;
    return {asMin(-spareTicks(seq, part), 0), asMax(longest - seq->getTicks(part), 0)};
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
