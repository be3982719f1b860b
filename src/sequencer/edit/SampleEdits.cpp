#include "sequencer/edit/SampleEdits.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/SamplePaste.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/take/Takes.h"

#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int maxChannels = 2;
const char* const notWritten = "Could not write file";
const char* const nothingLeft = "Nothing would be left";

constexpr StepEffects sampleEffects{
    .song = true, .host = HostNotice::pool, .seq = SeqNotice::parts};

/// Whether an edit may reach the clip.
bool editable(CSeq* seq, const ClipPlace& place) {
    return hasFrames(place.clip()) && !seq->isLocked(place.part);
}

FrameRange within(const FrameRange& frames, const CSample* sample) {
    const int from = asMinMax(frames.from, 0, sample->frames);
    return {from, asMinMax(frames.to, from, sample->frames)};
}

/// Frames of a sample, of which a new file is put together.
struct Piece {
    const CSample* sample;
    FrameRange frames;
};

std::unique_ptr<CSample> joined(CSeq* seq, CSample* like, const std::vector<Piece>& pieces) {
    std::unique_ptr<CSample> file(seq->cloneSampleType(like));
    if (!file) return nullptr;
    for (const Piece& piece : pieces)
        if (!appendFrames(file.get(), piece.sample, piece.frames.from, piece.frames.to))
            return nullptr;
    file->writeHeader();
    file->finalize();
    return file;
}

/// Where frames before an edit are afterwards; those in it, and the first one behind it.
using Shift = std::function<int64_t(int frame)>;

void moveTakes(CPart* part, const Shift& shift, int frames) {
    Takes* takes = part->takes;
    if (!takes) return;
    for (Takes::Take& take : takes->takes) {
        take.start = asMinMax(saturate(shift(take.start)), 0, frames - 1);
        take.end =
            asMinMax(saturate(shift(saturate(int64_t(take.end) + 1)) - 1), take.start, frames - 1);
    }
}

int scaled(int ticks, double by) {
    return asMax(limitTicks(asRound64(ticks * by)), 1);
}

/// A clip that follows the tempo lasts for what it has, and so do the parts that it fills.
void resize(CSeq* seq, CUndo* undo, const ClipPlace& place, CAudioEvent* clip, double by) {
    if (clip->mode == playRepitch || by == 1.0) return;
    clip->ticks = scaled(clip->ticks, by);
    if (isMulticlip(place.part)) return;
    for (CPart* user : partsShowing(seq, place.part))
        recordGrow(undo, user, scaled(seq->getTicks(user), by) - user->length);
}

void record(CSeq* seq, const ClipPlace& place, const CStr& title, std::unique_ptr<CSample> file,
            const Shift& shift) {
    CUndo* undo = seq->host->undoStart(title, seq, sampleEffects);
    CPart* content = place.part->content();
    CPart* edited = content->copy(0);
    CAudioEvent* clip = clipAt(edited, place.index);
    const CAudioEvent* former = place.clip();
    const int last = asMax(0, file->frames - 1);
    const int64_t behind = shift(saturate(int64_t(clip->end) + 1));
    clip->start = asMinMax(saturate(shift(clip->start)), 0, last);
    clip->end = asMinMax(saturate(behind - 1), clip->start, last);
    clip->sample = file.get();
    if (!isMulticlip(content)) moveTakes(edited, shift, file->frames);
    const double longer = isPinned(former) ? movePins(clip, former, shift)
                                           : double(frameCount(clip)) / frameCount(former);
    resize(seq, undo, place, clip, longer);
    undo->asAdd(file.release(), &seq->host->samples);
    swapUndoPart(undo, content, edited);
    seq->host->undoEnd(undo, false);
}

/// The frames are replaced by the piece; none takes them out.
CStr replace(CSeq* seq, const ClipPlace& place, const char* title, const FrameRange& frames,
             const Piece& by) {
    CSample* sample = place.clip()->sample;
    std::vector<Piece> pieces{{sample, {0, frames.from}}};
    if (by.sample) pieces.push_back(by);
    pieces.push_back({sample, {frames.to, sample->frames}});
    const int more = by.frames.count() - frames.count();
    if (int64_t(sample->frames) + more < 1) return nothingLeft;
    std::unique_ptr<CSample> file = joined(seq, sample, pieces);
    if (!file) return notWritten;
    record(seq, place, title, std::move(file), [&](int frame) {
        if (frame >= frames.to) return int64_t(frame) + more;
        return int64_t(asMin(frame, frames.from));
    });
    return "";
}

CStr removeFrames(CSeq* seq, const ClipPlace& place, const char* title, const FrameRange& asked) {
    const FrameRange frames = within(asked, place.clip()->sample);
    const CAudioEvent* clip = place.clip();
    if (frames.count() == 0) return "";
    if (frames.from <= clip->start && frames.to > clip->end) return nothingLeft;
    return replace(seq, place, title, frames, {});
}

void takeCopy(CSeq* seq, CPart* like, std::unique_ptr<CPart> copied) {
    seq->clearCopies();
    copied->setSelected(false);
    seq->clipboard.add(copied.release(),
                       asMax(0, seq->getProg()->tracks.indexed(seq->partToSongTrack(like))));
}

const CAudioEvent* copiedClip(CSeq* seq) {
    auto* part = seq->clipboard.parts.getFirst();
    if (seq->clipboard.parts.getCount() != 1 || part->type != partAudio) return nullptr;
    const auto* clip = firstClip(part);
    return hasFrames(clip) ? clip : nullptr;
}

} // namespace

CAudioEvent* ClipPlace::clip() const {
    return part && part->type == partAudio ? clipAt(part->content(), index) : nullptr;
}

bool hasFrames(const CAudioEvent* clip) {
    const CSample* sample = clip ? clip->sample : nullptr;
    return sample && sample->valid && sample->chs <= maxChannels && clip->start >= 0 &&
           clip->start <= clip->end && clip->end < sample->frames;
}

CStr processFrames(CSeq* seq, const ClipPlace& place, int mode, const FrameRange& frames) {
    if (!editable(seq, place) || mode == processCut) return "";
    CSample* sample = place.clip()->sample;
    const FrameRange cut = within(frames, sample);
    std::unique_ptr<CSample> file(processorFor(seq->host).process(mode, sample, cut.from, cut.to));
    if (!file) return notWritten;
    const CStr title = mode == processDelete ? CStr("Silence") : CAudioProcessor::getText(mode);
    record(seq, place, title, std::move(file), [](int frame) { return int64_t(frame); });
    return "";
}

CStr cutFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames) {
    if (!editable(seq, place)) return "";
    const CSample* before = place.clip()->sample;
    const FrameRange cut = within(frames, before);
    std::unique_ptr<CPart> copied = partOfFrames(seq, place.part, cut, place.clip());
    const CStr failure = removeFrames(seq, place, "Cut", frames);
    if (failure.empty() && cut.count() > 0) takeCopy(seq, place.part, std::move(copied));
    return failure;
}

CStr deleteFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames) {
    return editable(seq, place) ? removeFrames(seq, place, "Delete", frames) : CStr();
}

CStr cropFrames(CSeq* seq, const ClipPlace& place, const FrameRange& asked) {
    if (!editable(seq, place)) return "";
    CSample* sample = place.clip()->sample;
    const FrameRange frames = within(asked, sample);
    const bool all = frames.count() == sample->frames;
    if (frames.count() == 0 || all) return all ? CStr() : CStr(nothingLeft);
    const CAudioEvent* clip = place.clip();
    if (frames.to <= clip->start || frames.from > clip->end) return nothingLeft;
    std::unique_ptr<CSample> file = joined(seq, sample, {{sample, frames}});
    if (!file) return notWritten;
    record(seq, place, "Crop", std::move(file), [&](int frame) {
        return int64_t(asMinMax(frame, frames.from, frames.to)) - frames.from;
    });
    return "";
}

void copyFrames(CSeq* seq, const ClipPlace& place, const FrameRange& frames) {
    if (!hasFrames(place.clip())) return;
    const FrameRange cut = within(frames, place.clip()->sample);
    if (cut.count() > 0)
        takeCopy(seq, place.part, partOfFrames(seq, place.part, cut, place.clip()));
}

int framesToPaste(CSeq* seq) {
    const CAudioEvent* source = copiedClip(seq);
    return source ? frameCount(source) : 0;
}

CStr pasteOverFrames(CSeq* seq, const ClipPlace& place, const FrameRange& asked) {
    const CAudioEvent* source = copiedClip(seq);
    if (!source) return "The clipboard has no sound";
    if (!editable(seq, place)) return "";
    CSample* sample = place.clip()->sample;
    if (source->reverse) return "What plays backward cannot be pasted into a file";
    if (source->sample->rate != sample->rate) return "The clipboard has another sample rate";
    const FrameRange frames = within(asked, sample);
    return replace(seq, place, "Paste", frames,
                   {source->sample, {source->start, saturate(int64_t(source->end) + 1)}});
}

void setMarks(CSeq* seq, const ClipPlace& place, std::vector<int> marks) {
    CSample* sample = place.clip() ? place.clip()->sample : nullptr;
    if (!sample || sample->marks == marks) return;
    CUndo* undo = seq->host->undoStart("Marks", seq, {.seq = SeqNotice::parts});
    undo->asNumbers(sample, &sample->marks);
    sample->marks = std::move(marks);
    seq->host->undoEnd(undo, false);
}
