#include "project/ClipPreview.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "engine/CQV.h"
#include "engine/CUndo.h"
#include "engine/DeviceComps.h"
#include "project/ClipContent.h"
#include "project/ClipDrop.h"
#include "project/SongSounds.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

constexpr double longestPreview = 60.0; ///< seconds
constexpr int blockFrames = 1024;

/// A song of one clip.
class ClipStage {
public:
    explicit ClipStage(const CQV* like) {
        host.settingsEnabled = false;
        host.setFrames(blockFrames);
        host.setRate(double(like->rate));
        host.init();
        host.setTempo(like->tempoNow.load());
        host.tempoNow = like->tempoNow.load();
        seq = addSequencer(&host);
    }

    /// Null, as `dropClip` gives it.
    CPart* put(ClipContent& clip) {
        CUndo* step = host.undoStart("", seq, {.song = true});
        CPart* part = dropClip(clip, seq, nullptr, 0, step);
        host.undoEnd(step, true);
        return part;
    }

    /// For the clips of a part that play at another speed, as many as there may be.
    void makeStretchers(CPart* part) {
        if (part->type != partAudio) return;
        for (const CBaseEvent* e = part->getEvents(); e; e = e->next)
            if (asClip(e)->mode == playStretch && !host.makeStretcher()) return;
    }

    int framesOf(CPart* part, double mostSeconds) {
        const double frames = host.ticksToFrames(double(seq->getTicks(part)));
        return int(std::lround(std::min(frames, mostSeconds * double(host.rate))));
    }

    /// Plays the song from its start on into interleaved frames.
    void play(float* out, int frames) {
        const GraphHold hold(&host);
        host.renderMode = 1;
        host.hostNotices.raise(HostNotice::delays);
        host.setPos(0.0);
        host.start();
        for (int at = 0; at < frames; at += blockFrames)
            playBlock(out + ptrdiff_t(at) * 2, std::min(blockFrames, frames - at));
        host.stop();
    }

    CQV host;
    CSeq* seq;

private:
    /// Plays a whole block, of which `frames` are wanted.
    void playBlock(float* out, int frames) {
        host.prepare(blockFrames);
        host.process(blockFrames);
        const COutputChannel* ch = host.getAudioOut()->output();
        for (int i = 0; i < frames; ++i) {
            out[2 * i] = std::isfinite(ch->bufL[i]) ? ch->bufL[i] : 0.0f;
            out[2 * i + 1] = std::isfinite(ch->bufR[i]) ? ch->bufR[i] : 0.0f;
        }
    }
};

/// Plug-ins are left out; false when nothing is left to play the notes.
bool canSound(ClipContent& clip) {
    std::erase_if(clip.devices, [](const ClipDevice& d) { return d.kind != deviceSampler; });
    return clip.part->type != partMIDI || !clip.devices.empty();
}

std::unique_ptr<CSample> record(ClipStage& stage, int frames) {
    auto* data = static_cast<float*>(std::calloc(size_t(frames), 2 * sizeof(float)));
    if (!data) return nullptr;
    stage.play(data, frames);
    auto sample = std::make_unique<CSample>();
    sample->setFormat(int(std::lround(stage.host.rate.load())), 32, 2);
    sample->takeData(reinterpret_cast<unsigned char*>(data), frames);
    return sample;
}

} // namespace

std::unique_ptr<CSample> renderClip(CQV* host, CStream* stream, double mostSeconds) {
    ClipStage stage(host);
    ClipContent clip(stage.seq);
    if (!clip.read(stream) || !canSound(clip)) return nullptr;
    CPart* part = stage.put(clip);
    if (part) stage.makeStretchers(part);
    const int frames = part ? stage.framesOf(part, mostSeconds) : 0;
    return frames > 0 ? record(stage, frames) : nullptr;
}

std::unique_ptr<CSample> createFromQVC(CQV* host, const CStr& path) {
    CFileStream stream(path, 0);
    std::unique_ptr<CSample> sample = renderClip(host, &stream, longestPreview);
    if (sample) sample->filename = path;
    return sample;
}
