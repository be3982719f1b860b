#include "sequencer/edit/SamplePaste.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/ClipTimes.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <memory>
#include <unistd.h>

namespace {

constexpr int blockFrames = 1024;
constexpr int maxChannels = 2;
constexpr int maxFrameBytes = 8;

bool usable(const CAudioEvent* clip) {
    const CSample* sample = clip ? clip->sample : nullptr;
    return sample && sample->valid && sample->chs <= maxChannels && !clip->reverse &&
           clip->start >= 0 && clip->start <= clip->end && clip->end < sample->frames;
}

/// Of the target, before and after the paste, and in between the range of the source.
bool write(CSample* file, const CAudioEvent* target, int frame, const CAudioEvent* source) {
    const bool whole = appendFrames(file, target->sample, 0, frame) &&
                       appendFrames(file, source->sample, source->start, source->end + 1) &&
                       appendFrames(file, target->sample, frame, target->sample->frames);
    file->writeHeader();
    file->finalize();
    return whole;
}

} // namespace

bool appendFrames(CSample* file, const CSample* source, int from, int to) {
    const bool same = source->bits == file->bits && source->chs == file->chs &&
                      source->bigEndian == file->bigEndian;
    unsigned char bytes[blockFrames * maxFrameBytes];
    float mixed[blockFrames * maxChannels], left[blockFrames], right[blockFrames];
    for (int at = from; at < to; at += blockFrames) {
        const int n = std::min(blockFrames, to - at), before = file->frames;
        if (same) {
            file->writeBytes(source->readBytes(at, n, bytes), bytes);
        } else {
            source->readFrames(at, n, mixed);
            for (int i = 0; i < n; i++) {
                left[i] = mixed[i * source->chs];
                right[i] = mixed[i * source->chs + source->chs - 1];
            }
            file->writeFrames(n, left, right);
        }
        if (file->frames != before + n) return false;
    }
    return true;
}

CSample* CSeq::cloneSampleType(CSample* like) {
    return processorFor(host).cloneSampleType(like);
}

bool pasteFrames(CSeq* seq, CUndo* undo, CPart* source, CPart* target, int tick) {
    CPart* content = target->content();
    const auto* clip = firstClip(content);
    const auto* added = firstClip(source);
    if (!usable(clip) || !usable(added) || clip->sample->rate != added->sample->rate) return false;
    const int frame = asMinMax(posAsFrames2(clip, tick - clip->delta, seq->getTicks(target)),
                               clip->start, clip->end + 1);
    std::unique_ptr<CSample> file(seq->cloneSampleType(clip->sample));
    if (!file) return true;
    if (!write(file.get(), clip, frame, added)) {
        file->close();
        unlink(file->filename.asChar());
        return true;
    }

    CPart* edited = content->copy(0);
    auto* grown = firstClip(edited);
    const int count = added->end - added->start + 1;
    double share = double(count) / (clip->end - clip->start + 1);
    if (isPinned(clip))
        share =
            movePins(grown, clip, [&](int at) { return at < frame ? at : int64_t(at) + count; }) -
            1;
    grown->end = std::min(saturate(int64_t(clip->end) + count), file->frames - 1);
    grown->ticks = limitTicks(asRound64(clip->ticks * (1.0 + share)));
    grown->sample = file.get();
    if (clip->mode != playRepitch) {
        undo->asInt(target->length.address());
        target->length = limitTicks(asRound64(target->length * (1.0 + share)));
    }
    undo->asAdd(file.release(), &seq->host->samples);
    swapUndoPart(undo, content, edited);
    undo->effects.host = undo->effects.host | HostNotice::pool;
    return true;
}
