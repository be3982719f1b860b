#include "ui/WaveColumns.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostFrames = 1 << 20; ///< that are read for a picture
constexpr double leastForPower = 8; ///< frames of a column

} // namespace

void paintColumn(CGraphic* g, int colour, const WaveColumn& column, int x, int middle, int high) {
    const int upper = middle - asRound(double(column.high) * high);
    const int lower = middle - asRound(double(column.low) * high);
    g->fillLine(colour, asRect(x, upper, x + 1, std::max(upper + 1, lower)));
}

WaveColumns::WaveColumns(const CSample* of, double from, double to, double perColumn)
    : sample(of), width(perColumn) {
    if (perColumn >= PeakImage::framesPerEntry || to - from > mostFrames || sample->chs < 1) return;
    first = asInt(std::floor(from));
    const int count = asInt(std::ceil(to)) + 2 - first;
    frames.resize(size_t(count) * size_t(sample->chs));
    sample->readFrames(first, count, frames.data());
}

WaveColumn WaveColumns::at(double frame) const {
    return column(frame, 0, sample->chs);
}

WaveColumn WaveColumns::at(double frame, int channel) const {
    return column(frame, channel, channel + 1);
}

WaveColumn WaveColumns::column(double frame, int firstChannel, int endChannel) const {
    return frames.empty() ? fromPeaks(frame, firstChannel, endChannel)
                          : fromFrames(frame, firstChannel, endChannel);
}

WaveColumn WaveColumns::fromPeaks(double from, int firstChannel, int endChannel) const {
    WaveColumn shown;
    const PeakImage& peaks = sample->peaks;
    const int begin = asMax(0, asInt(from / PeakImage::framesPerEntry));
    const int end = asMin(peaks.count(), asInt((from + width) / PeakImage::framesPerEntry) + 1);
    constexpr int run = PeakImage::entriesPerRun;
    float power = 0.0f;
    for (int i = begin, step; i < end; i += step) {
        step = i % run == 0 && i + run <= end ? run : 1;
        const unsigned char* values = step == run ? peaks.run(i / run) : peaks.entry(i);
        const unsigned char* powers = values + 2 * sample->chs;
        for (int c = firstChannel; c < endChannel; c++) {
            shown.low = std::min(shown.low, PeakImage::decode(values[2 * c]));
            shown.high = std::max(shown.high, PeakImage::decode(values[2 * c + 1]));
            const float rms = PeakImage::decodeRms(powers[c]);
            power += rms * rms * float(step);
        }
    }
    const int channels = endChannel - firstChannel;
    if (end > begin) shown.rms = std::sqrt(power / float((end - begin) * channels));
    return shown;
}

float WaveColumns::valueAt(double frame, int channel) const {
    const int count = int(frames.size()) / sample->chs;
    const double at = fLimit(frame - first, 0.0, count - 1.0);
    const int before = asMin(int(at), count - 2);
    const float* values = &frames[size_t(before) * size_t(sample->chs) + size_t(channel)];
    return values[0] + (values[sample->chs] - values[0]) * float(at - before);
}

/// With both ends of the line in it, so that columns meet.
WaveColumn WaveColumns::fromFrames(double from, int firstChannel, int endChannel) const {
    WaveColumn shown;
    const double to = from + width;
    float power = 0.0f;
    int count = 0;
    for (int c = firstChannel; c < endChannel; c++) {
        const auto show = [&](float value, bool any) {
            shown.low = any ? std::min(shown.low, value) : value;
            shown.high = any ? std::max(shown.high, value) : value;
        };
        show(valueAt(from, c), c > firstChannel);
        show(valueAt(to, c), true);
        for (double frame = std::ceil(from); frame < to; frame++, count++) {
            const float value = valueAt(frame, c);
            show(value, true);
            power += value * value;
        }
    }
    if (width >= leastForPower && count > 0) shown.rms = std::sqrt(power / float(count));
    return shown;
}
