#include "sequencer/edit/Slicing.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "sequencer/edit/MidiProcess.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/PartSplit.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace {

constexpr StepEffects sliceEffects{.song = true, .seq = SeqNotice::parts | SeqNotice::cuts};

constexpr int windowFrames = 1024;
constexpr int leastFrames = 4096; ///< between two cuts
constexpr float sensitivity = 0.33f;
constexpr float quiet = 0.01f, loud = 0.1f;

/// The loudest channel of a sample, frame by frame.
class CSliceBuffer {
public:
    explicit CSliceBuffer(const CSample* of)
        : sample(of), values(size_t(windowFrames) * size_t(of->chs)) {}

    float value(int frame) {
        if (frame < first || frame >= first + windowFrames) {
            first = frame - frame % windowFrames;
            sample->readFrames(first, windowFrames, values.data());
        }
        float peak = 0.0f;
        for (int side = 0; side < sample->chs; side++)
            peak = std::max(
                peak,
                std::fabs(values[size_t(frame - first) * size_t(sample->chs) + size_t(side)]));
        return peak;
    }

private:
    const CSample* sample;
    std::vector<float> values;
    int first = -windowFrames;
};

/// The frame of the last window before `frame` where the sound sets in.
int exactCut(CSliceBuffer& sound, int frame) {
    int cut = frame - windowFrames;
    bool wasQuiet = false;
    for (int at = cut; at < frame; at++) {
        const float value = sound.value(at);
        if (value < quiet) {
            cut = at;
            wasQuiet = true;
        } else if (value > loud && wasQuiet) {
            break;
        }
    }
    return cut;
}

/// A slice: ticks from the start of the part, and frames of the sample.
struct Slice {
    int from, to;
    int first, last;
};

class Slicer {
public:
    explicit Slicer(CSeq* song) : seq(song) {}

    /// Why not, empty if all went well.
    template <class F>
    CStr run(F&& slicesOf) {
        return run(selectedParts(seq), slicesOf);
    }
    template <class F>
    CStr run(const std::vector<PlacedPart>& parts, F&& slicesOf) {
        PartChange change;
        for (const PlacedPart& p : parts) {
            const CAudioEvent* clip = sliceable(p.part);
            if (!clip) continue;
            const std::optional<std::vector<Slice>> slices = slicesOf(p.part, clip);
            if (!slices) return tooManyPieces;
            if (slices->empty()) continue;
            change.remove(p.songTrack, p.part);
            for (const Slice& slice : *slices) change.add(p.songTrack, make(p.part, slice));
        }
        if (change.empty()) return "";
        CUndo* undo = seq->host->undoStart("Beatslice", seq, sliceEffects);
        change.record(undo);
        seq->host->undoEnd(undo, false);
        return "";
    }

private:
    CSeq* seq;

    static const CAudioEvent* sliceable(CPart* part) {
        const CAudioEvent* clip = onlyClip(part);
        return clip && clip->sample && clip->sample->valid && clip->end > clip->start ? clip
                                                                                      : nullptr;
    }

    std::unique_ptr<CPart> make(CPart* part, const Slice& slice) const {
        std::unique_ptr<CPart> made = uncheckedPiece(seq, part, slice.from, slice.to);
        const auto* whole = firstClip(part);
        CAudioEvent* clip = createAudioEvent(whole);
        clip->start = slice.first;
        clip->end = slice.last;
        recutPins(clip, whole);
        clip->ticks = slice.to - slice.from;
        clip->fadeInMs = clip->fadeOutMs = 0.0f;
        made->setEvents(nullptr);
        made->offset = 0;
        made->addEvent(0, clip);
        made->setSelected(true);
        return made;
    }
};

/// What is heard from one frame, counted forward in time from the front of the range, to before
/// another.
Slice sliceOf(const CAudioEvent* clip, int from, int to, int first, int end) {
    if (!clip->reverse) return {from, to, first, end - 1};
    const int sum = saturate(int64_t(clip->start) + clip->end);
    return {from, to, sum - (end - 1), sum - first};
}

/// Those that begin at frames of a clip, its first one before all; none if they are too many.
std::optional<std::vector<Slice>> slicesAt(CSeq* seq, CPart* part, const CAudioEvent* clip,
                                           std::vector<int> cuts) {
    if (cuts.size() > size_t(maxPieces)) return std::nullopt;
    const int length = seq->getTicks(part);
    const int64_t sum = int64_t(clip->start) + clip->end + 1;
    cuts.push_back(clip->end + 1);
    if (clip->reverse) { // heard from the last one on
        for (int& cut : cuts) cut = int(sum - cut);
        std::reverse(cuts.begin(), cuts.end());
    }
    const auto tickAt = [&](int frame) {
        const double frames = double(frame) - clip->start;
        const double range = double(clip->end) - clip->start + 1;
        if (clip->mode == playRepitch)
            return asMin(asRound(seq->framesToTicks(part->pos, frames, clipRate(clip))), length);
        return asRound(length * (isPinned(clip) ? shareAt(clip, frames) : frames / range));
    };
    std::vector<Slice> slices;
    for (size_t i = 0; i + 1 < cuts.size(); i++) {
        const int from = tickAt(cuts[i]), to = tickAt(cuts[i + 1]);
        slices.push_back(sliceOf(clip, from, asMax(to, from + 1), cuts[i], cuts[i + 1]));
    }
    return slices;
}

} // namespace

std::vector<int> onsets(const CSample* sample, const FrameRange& range) {
    constexpr float threshold = sensitivity * sensitivity * 0.95f + 0.05f;
    std::vector<int> cuts{range.from};
    CSliceBuffer sound(sample);
    float before = 0.0f;
    for (int frame = range.from; frame + windowFrames <= range.to;) {
        float peak = 0.0f;
        for (const int end = frame + windowFrames; frame < end; frame++)
            peak = std::max(peak, sound.value(frame));
        const bool sets = peak - before > threshold && frame - cuts.back() > leastFrames;
        const int cut = sets ? exactCut(sound, frame) : cuts.back();
        if (cut - cuts.back() > leastFrames) cuts.push_back(cut);
        before = peak;
    }
    return cuts;
}

CStr beatsliceParts(CSeq* seq) {
    const int step = seq->snap->getTicks();
    return Slicer(seq).run([&](CPart* part, const CAudioEvent* clip) {
        const int length = seq->getTicks(part);
        if ((length - 1) / step >= maxPieces) return std::optional<std::vector<Slice>>();
        std::vector<Slice> slices;
        const auto frameAt = [&](int tick) {
            if (tick >= length) return clip->end + 1;
            const int frame = clip->mode == playRepitch ? frameInClip(seq, clip, part->pos, tick)
                                                        : posAsFrames2(clip, tick, length);
            return asMinMax(frame, clip->start, clip->end);
        };
        for (int tick = 0; tick < length; tick += asMin(step, length - tick)) {
            const int to = asMin(length - tick, step) + tick;
            const int first = frameAt(tick), end = frameAt(to);
            if (end > first) slices.push_back(sliceOf(clip, tick, to, first, end));
        }
        return std::optional(slices);
    });
}

CStr autosliceParts(CSeq* seq) {
    return Slicer(seq).run([&](CPart* part, const CAudioEvent* clip) {
        return slicesAt(seq, part, clip, onsets(clip->sample, {clip->start, clip->end + 1}));
    });
}

CStr slicePart(CSeq* seq, CPart* part, const std::vector<int>& frames) {
    const PlacedPart placed{part, seq->partToSongTrack(part), 0};
    if (!placed.songTrack || seq->isLocked(part)) return "";
    return Slicer(seq).run({placed}, [&](CPart*, const CAudioEvent* clip) {
        std::vector<int> cuts{clip->start};
        for (const int frame : frames)
            if (frame > cuts.back() && frame <= clip->end) cuts.push_back(frame);
        return cuts.size() > 1 ? slicesAt(seq, part, clip, std::move(cuts))
                               : std::optional(std::vector<Slice>());
    });
}
