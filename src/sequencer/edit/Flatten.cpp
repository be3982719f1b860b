#include "sequencer/edit/Flatten.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/AudioProcess.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/render/ClipRender.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int fileRate = 44100, fileBits = 16;
constexpr int maxFrames = 1 << 28;
constexpr int windowFrames = 8192;

class Flatten {
public:
    Flatten(CSeq* song, CPart* of) : seq(song), part(of) {
        frames = asInt(seq->ticksToFrames(part->pos, seq->getTicks(part), fileRate));
        eachEvent(part->getEvents(), [this](const CBaseEvent* e, int eventTick) {
            const auto* clip = asClip(e);
            const int tick = saturate(int64_t(part->offset) + eventTick);
            if (tick < 0 || tick >= seq->getTicks(part) || !clip->sample) return;
            const int begin = asInt(seq->ticksToFrames(part->pos, tick, fileRate));
            renders.emplace_back(seq, clip, saturate(int64_t(part->pos) + tick), begin, fileRate);
            if (clip->sample->chs > 1) chs = 2;
            if (like.empty()) like = clip->sample->filename;
        });
        if (like.empty()) like = part->content()->id + ".wav";
    }

    bool tooLong() const { return frames > maxFrames; }

    /// The new part; null if the file can't be written.
    std::unique_ptr<CPart> run() {
        sample.reset(processorFor(seq->host).createSample(like, fileRate, fileBits, chs));
        if (!sample || !write()) return nullptr;
        std::unique_ptr<CPart> made = newPartLike(part);
        auto* audio = asAudio(made.get());
        audio->multiclip = 0;
        audio->chs = chs;
        made->offset = 0;
        made->setSelected(true);
        CAudioEvent* clip = createAudioEvent();
        clip->sample = sample.get();
        clip->end = asMax(frames - 1, 0);
        clip->ticks = seq->getTicks(part);
        made->addEvent(0, clip);
        copyPoints(made.get());
        return made;
    }

    std::unique_ptr<CSample> sample;

private:
    CSeq* seq;
    CPart* part;
    int frames = 0, chs = 1;
    CStr like;
    std::vector<ClipRender> renders;

    bool write() {
        std::vector<float> left(windowFrames), right(windowFrames);
        for (int at = 0; at < frames; at += windowFrames) {
            const int n = std::min(windowFrames, frames - at);
            std::ranges::fill(left, 0.0f);
            std::ranges::fill(right, 0.0f);
            for (ClipRender& render : renders) render.add(left.data(), right.data(), at, n);
            sample->writeFrames(n, left.data(), right.data());
            if (sample->frames != at + n) return false;
        }
        sample->writeHeader();
        sample->finalize();
        return true;
    }

    /// They stand where they did, though the part's tick 0 has moved.
    void copyPoints(CPart* made) const {
        const int slots = part->content()->reservedSlots();
        for (int slot = 0; slot < slots; slot++) {
            EventCollector points;
            eachEvent(part->getParam(slot), [&](const CEnvEvent* e, int tick) {
                points.add(saturate(int64_t(part->offset) + tick), createEnvEvent(e));
            });
            putPoints(made, slot, points);
        }
    }
};

} // namespace

CStr flattenParts(CSeq* seq) {
    PartChange change;
    std::vector<std::unique_ptr<CSample>> samples;
    for (const PlacedPart& p : selectedParts(seq)) {
        if (!isMulticlip(p.part)) continue;
        Flatten flatten(seq, p.part);
        if (flatten.tooLong()) return "The part is too long";
        std::unique_ptr<CPart> made = flatten.run();
        if (!made) return "Could not write file";
        samples.push_back(std::move(flatten.sample));
        change.remove(p.songTrack, p.part);
        change.add(p.songTrack, std::move(made));
    }
    CUndo* undo = seq->host->undoStart(
        "Flatten", seq, {.song = true, .host = HostNotice::pool, .seq = SeqNotice::parts});
    for (std::unique_ptr<CSample>& sample : samples)
        undo->asAdd(sample.release(), &seq->host->samples);
    change.record(undo);
    seq->host->undoEnd(undo, false);
    return "";
}
