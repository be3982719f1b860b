#include "sequencer/edit/PartRange.h"

#include "base/Numbers.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

namespace {

int share(int ticks, const FrameRange& frames, const CAudioEvent* of) {
    const double whole = double(of->end) - of->start + 1;
    const double part =
        isPinned(of) ? shareOfFrames(of, frames.from, frames.to) : frames.count() / whole;
    return asMax(limitTicks(asRound64(ticks * part)), 1);
}

} // namespace

FrameRange framesOf(CSeq* seq, CPart* part, const PartRange& range) {
    const auto* clip = firstClip(part);
    FrameRange frames{clip->start, saturate(int64_t(clip->end) + 1)};
    const bool selected = range.part == part && range.from != range.to;
    if (!selected || !getAudioSelection(seq, part, range.from, range.to, frames.from, frames.to))
        return frames;
    if (frames.to == clip->end) frames.to++; // a range up to the end has the last one too
    return frames;
}

std::unique_ptr<CPart> partOfFrames(CSeq* seq, CPart* part, const FrameRange& frames,
                                    const CAudioEvent* of) {
    const auto* whole = of ? of : firstClip(part);
    const int ticks =
        isMulticlip(part) ? sampleAsTicks2(seq, whole, part->pos) : seq->getTicks(part);
    std::unique_ptr<CPart> made = newPartLike(part);
    CAudioEvent* clip = createAudioEvent(whole);
    clip->start = frames.from;
    clip->end = asMax(frames.to - 1, frames.from);
    recutPins(clip, whole);
    clip->ticks = share(whole->ticks, frames, whole);
    made->length = share(ticks, frames, whole);
    made->offset = 0;
    made->colour = -1;
    made->addEvent(0, clip);
    return made;
}
