#include "sequencer/edit/AudioProcess.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Process.h"
#include "engine/CQV.h"
#include "sequencer/edit/Flatten.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/SamplePaste.h"
#include "sequencer/edit/Slicing.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipRange.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/take/Takes.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace {

constexpr int maxChannels = 2;
const char* const notWritten = "Could not write file";
const char* const notRead = "Could not read file";

constexpr StepEffects processEffects{
    .song = true, .host = HostNotice::pool, .seq = SeqNotice::parts};

bool playable(const CAudioEvent* clip) {
    return clip && clip->sample && clip->sample->valid && clip->sample->chs <= maxChannels &&
           clip->start >= 0 && clip->start <= clip->end && clip->end < clip->sample->frames;
}

int scaled(int ticks, double by) {
    return asMax(limitTicks(asRound64(ticks * by)), 1);
}

/// Where frames of takes are once some have been cut out of their file.
void cutTakes(Takes& takes, const FrameRange& cut) {
    const auto place = [&cut](int frame) {
        return frame < cut.from ? frame : asMax(frame - cut.count(), cut.from);
    };
    for (Takes::Take& take : takes.takes) {
        take.start = place(take.start);
        take.end = asMax(place(take.end), take.start);
    }
}

/// One processing of parts: all files are written before anything is recorded.
class Processing {
public:
    Processing(CSeq* song, int how, const PartRange& chosen)
        : seq(song), mode(how), range(chosen), processor(processorFor(song->host)) {}

    CStr run() {
        std::unordered_set<const CPart*> done;
        for (const PlacedPart& p : selectedParts(seq)) {
            if (isMulticlip(p.part) || !playable(firstClip(p.part))) continue;
            if (!done.insert(p.part->content()).second) continue;
            const FrameRange frames = framesOf(seq, p.part, range);
            if (mode == processCut && frames.count() >= frameCount(firstClip(p.part)))
                return "Nothing would be left";
            if (!process(p, frames)) return notWritten;
        }
        if (results.empty()) return "";
        if (mode == processCut) fillClipboard();
        record();
        return "";
    }

private:
    struct Result {
        PlacedPart placed;
        FrameRange frames;
        std::unique_ptr<CSample> sample;
    };
    CSeq* seq;
    const int mode;
    const PartRange& range;
    CAudioProcessor processor;
    std::vector<Result> results;

    bool process(const PlacedPart& placed, const FrameRange& frames) {
        CSample* source = firstClip(placed.part)->sample;
        std::unique_ptr<CSample> made(processor.process(mode, source, frames.from, frames.to));
        if (!made) return false;
        results.push_back({placed, frames, std::move(made)});
        return true;
    }

    void record() {
        CUndo* undo = seq->host->undoStart(CAudioProcessor::getText(mode), seq, processEffects);
        for (Result& r : results) {
            CPart* content = r.placed.part->content();
            CPart* edited = content->copy(0);
            auto* clip = firstClip(edited);
            const int before = frameCount(clip);
            if (mode == processCut) clip->end -= r.frames.count();
            if (Takes* takes = asAudio(edited)->takes; takes && mode == processCut)
                cutTakes(*takes, r.frames);
            clip->end = asMinMax(clip->end, 0, asMax(r.sample->frames - 1, 0));
            clip->start = asMin(clip->start, clip->end);
            clip->sample = r.sample.get();
            if (mode == processCut && clip->mode != playRepitch)
                shorten(undo, r.placed.part, clip, timeLeft(clip, r.frames, before));
            undo->asAdd(r.sample.release(), &seq->host->samples);
            swapUndoPart(undo, content, edited);
        }
        seq->host->undoEnd(undo, false);
    }

    /// The share of its time that a clip keeps without those of its `before` frames.
    static double timeLeft(CAudioEvent* clip, const FrameRange& cut, int before) {
        const double left = double(before - cut.count()) / before;
        if (!isPinned(clip)) return left;
        CAudioEvent whole = *clip;
        whole.end = clip->start + before - 1;
        return movePins(clip, &whole, [&](int frame) {
            return int64_t(frame) - std::clamp(frame - cut.from, 0, cut.count());
        });
    }

    void shorten(CUndo* undo, CPart* part, CAudioEvent* clip, double left) const {
        clip->ticks = scaled(clip->ticks, left);
        for (CPart* user : partsShowing(seq, part)) {
            const int length = seq->getTicks(user);
            recordGrow(undo, user, scaled(length, left) - user->length);
        }
    }

    /// Parts that play what is cut out, of the files that have it still.
    void fillClipboard() {
        seq->clearCopies();
        for (const Result& r : results) {
            seq->clipboard.add(partOfFrames(seq, r.placed.part, r.frames).release(), r.placed.row);
        }
    }
};

/// The clip's range in a file of its own.
std::unique_ptr<CSample> rangeFile(CSeq* seq, const CAudioEvent* clip) {
    std::unique_ptr<CSample> file(seq->cloneSampleType(clip->sample));
    const int end = saturate(int64_t(clip->end) + 1);
    if (!file || !appendFrames(file.get(), clip->sample, clip->start, end)) return nullptr;
    file->writeHeader();
    file->finalize();
    return file;
}

/// The file as it is on the disk now; null, and it is gone, if it can't be played.
std::unique_ptr<CSample> reopened(std::unique_ptr<CSample> file) {
    auto again = std::make_unique<CSample>();
    again->streamed = 1;
    again->keep = false;
    again->cached = file->cached;
    file->ownsFile = false;
    const bool good = again->open(file->filename) && again->frames > 0 && again->chs <= maxChannels;
    return good ? std::move(again) : nullptr;
}

void takeFile(CSeq* seq, CPart* part, std::unique_ptr<CSample> file) {
    file->peakfile();
    CUndo* undo = seq->host->undoStart("Edit", seq, processEffects);
    CPart* edited = part->content()->copy(0);
    auto* clip = firstClip(edited);
    clip->sample = file.get();
    clip->start = 0;
    clip->end = file->frames - 1;
    if (Takes* takes = asAudio(edited)->takes) *takes = Takes(); // of another file
    undo->asAdd(file.release(), &seq->host->samples);
    swapUndoPart(undo, part->content(), edited);
    seq->host->undoEnd(undo, false);
}

} // namespace

CStr processAudio(CSeq* seq, int mode, const PartRange& range) {
    switch (mode) {
    case processBeatslice:
        return beatsliceParts(seq);
    case processAutoslice:
        return autosliceParts(seq);
    case processFlatten:
        return flattenParts(seq);
    default:
        return CAudioProcessor::getText(mode).empty() ? CStr() : Processing(seq, mode, range).run();
    }
}

CStr openExternal(CSeq* seq, CPart* part, const CStr& program,
                  const std::function<bool()>& edited) {
    const CAudioEvent* clip = firstClip(part);
    if (!playable(clip) || seq->isLocked(part)) return "";
    std::unique_ptr<CSample> file = rangeFile(seq, clip);
    if (!file) return notWritten;
    CStringList argv;
    argv.add(program);
    argv.add(file->filename);
    if (!startProcess(argv)) return "Could not start " + program;
    if (!edited()) return "";
    file = reopened(std::move(file));
    if (!file) return notRead;
    // The part may have gone meanwhile.
    if (seq->partToTrack(part) && playable(firstClip(part))) takeFile(seq, part, std::move(file));
    return "";
}

CAudioProcessor processorFor(CQV* host) {
    return CAudioProcessor([host](const CStr& name, bool& inTemp) {
        return host->requireSampleFilename(name, &inTemp);
    });
}
