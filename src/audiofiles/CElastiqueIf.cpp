#include "audiofiles/CElastiqueIf.h"

#include "audiofiles/SincReader.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <rubberband/RubberBandStretcher.h>
#include <vector>

using RubberBand::RubberBandStretcher;

namespace {

constexpr int maxFeed = 1024;    // source frames that the library gets at once
constexpr int feedResult = 8192; // stretched frames that one piece of source should come to
constexpr int spareFrames = 4 * feedResult;
/// Source frames that are wanted at a time. Always as many, so that what comes out does not depend
/// on how much of it is asked for at once.
constexpr int feedFrames = 256;

/// The library's pitch shift allocates while it runs, so its result is stretched further by the
/// factor of the pitch and then read at that speed.
constexpr int options =
    RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionThreadingNever |
    RubberBandStretcher::OptionChannelsTogether | RubberBandStretcher::OptionEngineFiner |
    RubberBandStretcher::OptionWindowShort | RubberBandStretcher::OptionPitchHighSpeed;

} // namespace

struct CElastiqueIf::Engine {
    Engine(int blockFrames, float rate)
        : library(std::size_t(rate), 2, options),
          capacity(2 * maxSincReach + blockFrames * int(maxPitch) + spareFrames) {
        library.setMaxProcessSize(maxFeed);
        for (std::vector<float>& side : sides) side.resize(std::size_t(capacity));
        prepareSinc();
    }

    RubberBandStretcher library;
    const int capacity;          ///< of each side
    std::vector<float> sides[2]; ///< stretched sound, not yet read but for `maxSincReach` frames
    int held = maxSincReach;     ///< frames of it
    double pos = maxSincReach;   ///< where the next output frame lies
    int toDrop = 0;              ///< stretched frames that come before the first
    bool begun = false;
    double stretch = 1.0, pitch = 1.0;

    double ratio() const { return stretch * pitch; }
    void begin();
    void drain();
    void feedPiece(const float* left, const float* right, int count);
    void forget();
};

/// The library centres its first window on the first frame, so it wants silence before that.
void CElastiqueIf::Engine::begin() {
    begun = true;
    toDrop = int(library.getStartDelay());
    static constexpr float silence[maxFeed] = {};
    int pad = int(library.getPreferredStartPad());
    while (pad > 0) {
        const int n = std::min(pad, maxFeed);
        feedPiece(silence, silence, n);
        pad -= n;
    }
}

void CElastiqueIf::Engine::feedPiece(const float* left, const float* right, int count) {
    const float* in[2] = {left, right};
    library.process(in, std::size_t(count), false);
    drain();
}

void CElastiqueIf::Engine::drain() {
    for (int ready = library.available(); ready > 0; ready = library.available()) {
        int n = std::min(ready, capacity - held);
        if (toDrop > 0) n = std::min(n, toDrop);
        if (n <= 0) return;
        float* out[2] = {&sides[0][std::size_t(held)], &sides[1][std::size_t(held)]};
        library.retrieve(out, std::size_t(n));
        (toDrop > 0 ? toDrop : held) += toDrop > 0 ? -n : n;
    }
}

/// Lets go of what was read.
void CElastiqueIf::Engine::forget() {
    const int gone = std::min(int(pos), held) - maxSincReach;
    if (gone <= 0) return;
    for (std::vector<float>& side : sides)
        std::memmove(side.data(), side.data() + gone, std::size_t(held - gone) * sizeof(float));
    held -= gone;
    pos -= gone;
}

CElastiqueIf::CElastiqueIf(std::unique_ptr<Engine> made) : engine(std::move(made)) {
}

CElastiqueIf::~CElastiqueIf() = default;

int CElastiqueIf::CreateInstance(CElastiqueIf*& instance, int blockFrames, int channels, float rate,
                                 float) {
    instance = nullptr;
    if (blockFrames < 1 || channels != 2 || !(rate >= 1.0f)) return 1;
    try {
        instance = new CElastiqueIf(std::make_unique<Engine>(blockFrames, rate));
    } catch (const std::exception&) {
        return 1;
    }
    instance->reset();
    return 0;
}

void CElastiqueIf::reset() {
    Engine& e = *engine;
    e.library.reset();
    for (std::vector<float>& side : e.sides) std::fill_n(side.begin(), maxSincReach, 0.0f);
    e.held = maxSincReach;
    e.pos = maxSincReach;
    e.begun = false;
    e.toDrop = 0;
}

void CElastiqueIf::setFactors(float stretch, float pitch) {
    Engine& e = *engine;
    e.stretch = double(fLimit(stretch, minStretch, maxStretch));
    e.pitch = double(fLimit(pitch, minPitch, maxPitch));
    e.library.setTimeRatio(e.ratio());
}

int CElastiqueIf::framesNeeded(int frames) {
    Engine& e = *engine;
    if (!e.begun) e.begin();
    e.forget();
    e.drain();
    const int last = int(std::ceil(e.pos + (frames - 1) * e.pitch)) + sincReach(e.pitch);
    return last < e.held - e.toDrop ? 0 : feedFrames;
}

void CElastiqueIf::feed(const float* left, const float* right, int count) {
    Engine& e = *engine;
    const int piece = std::clamp(int(feedResult / e.ratio()), 1, maxFeed);
    for (int done = 0; done < count; done += piece)
        e.feedPiece(left + done, right + done, std::min(piece, count - done));
}

void CElastiqueIf::process(float* left, float* right, int frames) {
    Engine& e = *engine;
    const double room = (e.held - sincReach(e.pitch) - 1 - e.pos) / e.pitch;
    const int n = std::clamp(int(std::floor(room)) + 1, 0, frames);
    if (e.pitch == 1.0 && e.pos == std::floor(e.pos)) {
        std::copy_n(e.sides[0].data() + int(e.pos), n, left);
        std::copy_n(e.sides[1].data() + int(e.pos), n, right);
    } else
        readSinc(e.sides[0].data(), e.sides[1].data(), e.pos, e.pitch, n, left, right);
    std::fill(left + n, left + frames, 0.0f);
    std::fill(right + n, right + frames, 0.0f);
    e.pos += frames * e.pitch;
}
