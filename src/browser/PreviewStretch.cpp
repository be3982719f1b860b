#include "browser/PreviewStretch.h"

#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"

#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

constexpr int blockFrames = 1024;

} // namespace

PreviewStretch::PreviewStretch(std::unique_ptr<CSample> from, float times, int semitones)
    : source(std::move(from)),
      stretcher(std::make_unique<CElastiqueRender>(blockFrames, source->rate)), factor(times),
      pitch(std::exp2(float(semitones) / 12.0f)) {
    start();
}

PreviewStretch::~PreviewStretch() {
    finish();
}

void PreviewStretch::execute() {
    if (!stretch()) made.reset();
    ready.storeRelease(true);
}

std::unique_ptr<CSample> PreviewStretch::result() {
    return made ? std::move(made) : std::move(source);
}

bool PreviewStretch::stretch() {
    if (!stretcher->start()) return false;
    const int frames = asMin(source->getFrames(), asInt(mostSeconds * double(source->rate)));
    const int count = asInt(double(frames) * double(factor));
    std::unique_ptr<float, decltype(&std::free)> room(
        static_cast<float*>(std::calloc(size_t(asMax(count, 1)), 2 * sizeof(float))), &std::free);
    float* const data = room.get();
    if (!data) return false;
    std::vector<float> left(blockFrames), right(blockFrames);
    std::vector<float> scratch(sampleScratchBytes / sizeof(float) + 1);
    const StretchSpan span{factor, pitch, 0, 0, frames};
    for (int at = 0, sourcePos = 0; at < count && !terminated; at += blockFrames) {
        const int n = asMin(blockFrames, count - at);
        if (!renderStretched(*source, span, sourcePos, stretcher.get(), n, left.data(),
                             right.data(), reinterpret_cast<unsigned char*>(scratch.data()),
                             ReadMode::direct))
            return false;
        for (int i = 0; i < n; i++) {
            data[2 * (at + i)] = left[size_t(i)];
            data[2 * (at + i) + 1] = right[size_t(i)];
        }
    }
    if (terminated) return false;
    made = std::make_unique<CSample>();
    made->setFormat(asRound(double(source->rate)), 32, 2);
    made->takeData(reinterpret_cast<unsigned char*>(room.release()), count);
    return true;
}
