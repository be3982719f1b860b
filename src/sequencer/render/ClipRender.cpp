#include "sequencer/render/ClipRender.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int blockFrames = 1024;
constexpr float runOutFactor = 0.999f;
constexpr double fastest = 1024.0; ///< source frames per output frame, and the other way round
constexpr double mostStretch = 10.0;

/// A stretch at one tempo from a tick on, of so many frames at most.
TempoMap::Stride strideFrom(CSeq* seq, double tick, int frames, int rate) {
    CSeqProg* prog = seq->getProg();
    const float before = prog->tempos.empty() ? seq->host->tempo : seq->host->songTempo;
    return prog->tempoMap().stride(before, tick, frames, rate);
}

double fadeFrames(float ms) {
    return ms > 0.0f ? double(asRound(double(ms) * fadeFramesPerMs)) : 0.0;
}

/// Source frames per output frame of a clip, or of its pitch alone in the stretched mode.
double speedOf(const CAudioEvent* clip, double morePitch, double ticksPerFrame, int rate) {
    double speed = clip->sample->fixedPitch && clip->mode == playStretch
                       ? 1.0
                       : std::exp2((clip->semitones + double(clip->fine) + morePitch) / 12) *
                             double(clip->sample->rate) / rate;
    if (clip->mode == playResample)
        speed = (double(clip->end) - clip->start) * ticksPerFrame / clip->ticks;
    return fLimit(speed, 1.0 / fastest, fastest);
}

/// Output frames per source frame in the stretched mode.
double stretchOf(const CAudioEvent* clip, const ClipPiece& piece, double ticksPerFrame) {
    const double ticks = clip->ticks * (piece.shareTo - piece.shareFrom);
    return fLimit(ticks / std::max((piece.to - piece.from) * ticksPerFrame, 1e-9), 1 / mostStretch,
                  mostStretch);
}

} // namespace

ClipRender::ClipRender(CSeq* song, const CAudioEvent* event, int songTick, int64_t first, int hz)
    : seq(song), clip(event), begin(first), rate(hz), pos(event->start), tick(songTick),
      stretchPos(event->start) {
    const bool inTime = clip->mode == playRepitch || (clip->ticks > 0 && clip->end > clip->start);
    running = clip->sample && clip->sample->valid && inTime;
}

ClipRender::~ClipRender() = default;
ClipRender::ClipRender(ClipRender&&) noexcept = default;

void ClipRender::add(float* left, float* right, int64_t from, int frames) {
    int done = int(std::clamp(begin - from, int64_t(0), int64_t(frames)));
    while (done < frames && (running || tail > 0))
        done += running ? play(left + done, right + done, frames - done)
                        : runOut(left + done, right + done, frames - done);
}

/// All of the clip without markers.
ClipPiece ClipRender::pieceNow() const {
    if (isPinned(clip)) return pieceAt(clip, pos - clip->start);
    return {0.0, double(clip->end) - clip->start};
}

/// Plays up to a block at one tempo; returns how many frames it were, 0 at the end.
int ClipRender::play(float* left, float* right, int frames) {
    if (bufL.empty()) {
        scratch.resize(sampleScratchBytes / sizeof(float) + 1);
        bufL.resize(blockFrames);
        bufR.resize(blockFrames);
        if (clip->mode == playStretch) {
            stretcher = std::make_unique<CElastiqueRender>(blockFrames, float(rate));
            stretcher->start();
        }
    }
    const auto [bpm, most] = strideFrom(seq, tick, std::min(frames, blockFrames), rate);
    const double ticksPerFrame = bpm * ticksPerSecondPerBpm / rate;
    const ClipPiece piece = pieceNow();
    const double speed = speedOf(clip, double(piece.pitch), ticksPerFrame, rate);
    const double stretch = stretchOf(clip, piece, ticksPerFrame);
    const double perFrame = clip->mode == playStretch ? 1 / stretch : speed;
    const double share = isPinned(clip) ? 1.0 - shareAt(clip, pos - clip->start) : 0.0;
    const double ahead = share > 0.0 ? share * clip->ticks / ticksPerFrame
                                     : (clip->end - pos) / perFrame; // output frames
    const double inPiece = std::ceil((clip->start + piece.to - pos) / perFrame);
    int count = std::min(most, asInt(std::min(ahead, double(blockFrames))));
    if (isPinned(clip)) count = std::min(count, std::max(1, asInt(inPiece)));
    if (count < 1) {
        finish();
        return 0;
    }
    auto* bytes = reinterpret_cast<unsigned char*>(scratch.data());
    const bool made =
        clip->mode == playStretch
            ? renderStretched(*clip->sample,
                              {float(stretch), float(speed), clip->reverse, clip->start, clip->end},
                              stretchPos, stretcher.get(), count, bufL.data(), bufR.data(), bytes)
            : render(*clip->sample, {pos, speed, clip->reverse, clip->start, clip->end}, count,
                     bufL.data(), bufR.data(), bytes);
    for (int i = 0; made && i < count; i++) {
        const float g = gain(i, ahead - i);
        left[i] += lastLeft = bufL[size_t(i)] * g;
        right[i] += lastRight = bufR[size_t(i)] * g;
    }
    pos += count * perFrame;
    tick += count * ticksPerFrame;
    played += count;
    return count;
}

/// Of frame `frame` of the block, with so many frames to come.
float ClipRender::gain(int frame, double left) const {
    const double in = fadeFrames(clip->fadeInMs), out = fadeFrames(clip->fadeOutMs);
    double g = 1.0;
    if (in > 0.0) g *= std::min((double(played) + frame) / in, 1.0);
    if (out > 0.0) g *= std::min(left / out, 1.0);
    return float(g * g);
}

int ClipRender::runOut(float* left, float* right, int frames) {
    const int count = std::min(frames, tail);
    for (int i = 0; i < count; i++) {
        left[i] += lastLeft;
        right[i] += lastRight;
        lastLeft *= runOutFactor;
        lastRight *= runOutFactor;
    }
    tail -= count;
    return count;
}

void ClipRender::finish() {
    running = false;
    tail = AudioVoices::tailFrames;
    stretcher.reset();
    for (std::vector<float>* buffer : {&scratch, &bufL, &bufR}) std::vector<float>().swap(*buffer);
}
