#include "arrange/WaveColumns.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostFrames = 1 << 20; ///< that are read for a picture
constexpr double leastForPower = 8; ///< frames of a column

} // namespace

WaveColumns::WaveColumns(const CSample* of, double from, double to, double perColumn)
    : sample(of), width(perColumn) {
    if (perColumn >= PeakImage::framesPerEntry || to - from > mostFrames || sample->chs < 1) return;
    first = asInt(std::floor(from));
    const int count = asInt(std::ceil(to)) + 2 - first;
    frames.resize(size_t(count) * size_t(sample->chs));
    sample->readFrames(first, count, frames.data());
}

WaveColumn WaveColumns::at(double frame) const {
    return frames.empty() ? fromPeaks(frame) : fromFrames(frame);
}

WaveColumn WaveColumns::fromPeaks(double from) const {
    WaveColumn column;
    const PeakImage& peaks = sample->peaks;
    const int begin = asMax(0, asInt(from / PeakImage::framesPerEntry));
    const int end = asMin(peaks.count(), asInt((from + width) / PeakImage::framesPerEntry) + 1);
    float power = 0.0f;
    for (int i = begin; i < end; i++) {
        const unsigned char* values = peaks.entry(i);
        for (int c = 0; c < sample->chs; c++, values += 2) {
            column.low = std::min(column.low, PeakImage::decode(values[0]));
            column.high = std::max(column.high, PeakImage::decode(values[1]));
        }
        for (int c = 0; c < sample->chs; c++) {
            const float rms = PeakImage::decodeRms(*values++);
            power += rms * rms;
        }
    }
    if (end > begin) column.rms = std::sqrt(power / float((end - begin) * sample->chs));
    return column;
}

float WaveColumns::valueAt(double frame, int channel) const {
    const int count = int(frames.size()) / sample->chs;
    const double at = fLimit(frame - first, 0.0, count - 1.0);
    const int before = asMin(int(at), count - 2);
    const float* values = &frames[size_t(before) * size_t(sample->chs) + size_t(channel)];
    return values[0] + (values[sample->chs] - values[0]) * float(at - before);
}

/// With both ends of the line in it, so that columns meet.
WaveColumn WaveColumns::fromFrames(double from) const {
    WaveColumn column;
    const double to = from + width;
    float power = 0.0f;
    int count = 0;
    for (int c = 0; c < sample->chs; c++) {
        const auto show = [&](float value, bool any) {
            column.low = any ? std::min(column.low, value) : value;
            column.high = any ? std::max(column.high, value) : value;
        };
        show(valueAt(from, c), c > 0);
        show(valueAt(to, c), true);
        for (double frame = std::ceil(from); frame < to; frame++, count++) {
            const float value = valueAt(frame, c);
            show(value, true);
            power += value * value;
        }
    }
    if (width >= leastForPower && count > 0) column.rms = std::sqrt(power / float(count));
    return column;
}
