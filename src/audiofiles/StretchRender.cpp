#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/CSample.h"
#include "audiofiles/SampleRender.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cstddef>

namespace {

/// Feeds of one block at most; each brings it nearer, unless the sample is no use.
constexpr int maxFeeds = 256;

/// Interleaved frames to both inputs of the stretcher, the last first with `reverse`.
void deinterleave(const float* in, int chs, int count, bool reverse, float* left, float* right) {
    for (int i = 0; i < count; i++) {
        const float* frame = in + std::ptrdiff_t(reverse ? count - 1 - i : i) * chs;
        left[i] = frame[0];
        right[i] = frame[chs - 1];
    }
}

/// The next `count` source frames into the stretcher.
void feedSource(const CSample& sample, const StretchSpan& span, int sourcePos,
                CElastiqueRender& stretcher, int count, unsigned char* scratch, ReadMode mode) {
    std::int64_t first = sourcePos;
    if (span.reverse) first = std::int64_t(span.start) + span.end - sourcePos - count;
    float* values = reinterpret_cast<float*>(scratch);
    if (mode != ReadMode::direct && sample.reader)
        sample.reader->getData(first, count, values, span.reverse != 0, mode == ReadMode::live);
    else
        sample.readFrames(first, count, values);
    float* left = stretcher.inLeft.data();
    float* right = stretcher.inRight.data();
    deinterleave(values, sample.chs, count, span.reverse != 0, left, right);
    stretcher.instance->feed(left, right, count);
}

} // namespace

bool renderStretched(const CSample& sample, const StretchSpan& span, int& sourcePos,
                     CElastiqueRender* stretcher, int count, float* left, float* right,
                     unsigned char* scratch, ReadMode mode) {
    if (!sample.valid || sample.chs < 1 || sample.chs > 2 || count < 1) return false;
    if (!stretcher) {
        std::fill_n(left, count, 0.0f);
        std::fill_n(right, count, 0.0f);
        return true;
    }
    CElastiqueIf& engine = *stretcher->instance;
    engine.setFactors(span.stretch, span.pitch);
    const int most = std::min(int(stretcher->inLeft.size()), maxScratchRead / sample.frameBytes);
    for (int i = 0; i < maxFeeds; i++) {
        const int n = std::min(engine.framesNeeded(count), most);
        if (n == 0) break;
        feedSource(sample, span, sourcePos, *stretcher, n, scratch, mode);
        sourcePos = saturate(std::int64_t(sourcePos) + n);
    }
    engine.process(left, right, count);
    return true;
}
