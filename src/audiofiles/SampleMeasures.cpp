#include "audiofiles/SampleMeasures.h"

#include "audiofiles/CSample.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

namespace {

constexpr int blockFrames = 4096;
constexpr int mostExact = 1 << 21; ///< frames that are read for a level
constexpr int mostWindows = 64;
constexpr double silence = -240.0; ///< dB

SampleLevel exactLevel(const CSample& sample, int from, int to) {
    std::vector<float> values(size_t(blockFrames) * size_t(sample.chs));
    SampleLevel level;
    double power = 0.0;
    for (int at = from; at < to; at += blockFrames) {
        const int n = std::min(blockFrames, to - at);
        sample.readFrames(at, n, values.data());
        for (int i = 0; i < n * sample.chs; i++) {
            const float value = values[size_t(i)];
            level.peak = std::max(level.peak, std::fabs(value));
            power += double(value) * double(value);
        }
    }
    const double count = (double(to) - from) * sample.chs;
    if (count > 0) level.rms = float(std::sqrt(power / count));
    return level;
}

SampleLevel imageLevel(const CSample& sample, int from, int to) {
    SampleLevel level;
    level.exact = false;
    const int first = from / PeakImage::framesPerEntry;
    const int end = std::min(sample.peaks.count(), to / PeakImage::framesPerEntry);
    double power = 0.0;
    for (int i = first; i < end; i++) {
        const unsigned char* entry = sample.peaks.entry(i);
        for (int c = 0; c < 2 * sample.chs; c++)
            level.peak = std::max(level.peak, std::fabs(PeakImage::decode(entry[c])));
        for (int c = 0; c < sample.chs; c++) {
            const float rms = PeakImage::decodeRms(entry[2 * sample.chs + c]);
            power += double(rms) * double(rms);
        }
    }
    if (end > first) level.rms = float(std::sqrt(power / (double(end - first) * sample.chs)));
    return level;
}

/// In place; the size is a power of two.
void transform(std::vector<std::complex<float>>& data) {
    const size_t size = data.size();
    for (size_t i = 1, j = 0; i < size; i++) {
        size_t bit = size / 2;
        for (; j & bit; bit /= 2) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(data[i], data[j]);
    }
    for (size_t half = 1; half < size; half *= 2) {
        for (size_t k = 0; k < half; k++) {
            const auto turn = std::polar(1.0f, -std::numbers::pi_v<float> * float(k) / float(half));
            for (size_t i = k; i < size; i += 2 * half) {
                const std::complex<float> odd = data[i + half] * turn;
                data[i + half] = data[i] - odd;
                data[i] += odd;
            }
        }
    }
}

} // namespace

SampleLevel levelOf(const CSample& sample, int from, int to) {
    if (!sample.valid || sample.chs < 1 || to <= from) return {};
    const bool imaged = sample.chs <= PeakImage::maxChannels && to - from > mostExact;
    return imaged ? imageLevel(sample, from, to) : exactLevel(sample, from, to);
}

double decibels(float level) {
    return level > 0.0f ? std::max(silence, 20.0 * std::log10(double(level))) : silence;
}

namespace {

/// Where the mean of all channels comes to zero or crosses it, around a frame.
class Crossings {
public:
    Crossings(const CSample& of, int frame, int reach)
        : sample(of), first(std::max(0, frame - reach - 1)),
          end(std::min(int(of.frames), frame + reach + 1)) {
        if (!sample.valid || sample.chs < 1 || end - first < 2) return;
        values.resize(size_t(end - first) * size_t(sample.chs));
        sample.readFrames(first, end - first, values.data());
    }
    bool at(int frame) const {
        if (values.empty() || frame < first || frame >= end) return false;
        const float now = mean(frame);
        return now == 0.0f || (frame > first && (mean(frame - 1) < 0.0f) != (now < 0.0f));
    }

private:
    float mean(int frame) const {
        float sum = 0.0f;
        for (int c = 0; c < sample.chs; c++)
            sum += values[size_t(frame - first) * size_t(sample.chs) + size_t(c)];
        return sum;
    }

    const CSample& sample;
    const int first, end;
    std::vector<float> values;
};

} // namespace

int zeroCrossing(const CSample& sample, int frame, int reach) {
    const Crossings crossings(sample, frame, reach);
    for (int away = 0; away <= reach; away++)
        for (const int at : {frame - away, frame + away})
            if (crossings.at(at)) return at;
    return frame;
}

int nextZeroCrossing(const CSample& sample, int frame, int way, int reach) {
    const Crossings crossings(sample, frame, reach);
    for (int away = 1; away <= reach; away++)
        if (crossings.at(frame + way * away)) return frame + way * away;
    return frame + way;
}

std::vector<float> spectrumOf(const CSample& sample, int from, int to, int bands) {
    const int window = 2 * bands;
    if (!sample.valid || sample.chs < 1 || to - from < window ||
        !std::has_single_bit(unsigned(bands)))
        return {};
    const int count = std::clamp((to - from) / window, 1, mostWindows);
    std::vector<float> values(size_t(window) * size_t(sample.chs));
    std::vector<std::complex<float>> data(static_cast<size_t>(window));
    std::vector<double> power(size_t(bands), 0.0);
    for (int w = 0; w < count; w++) {
        const int64_t room = int64_t(to) - from - window;
        sample.readFrames(from + (count > 1 ? room * w / (count - 1) : 0), window, values.data());
        for (int c = 0; c < sample.chs; c++) {
            for (int i = 0; i < window; i++) {
                const double phase = 2 * std::numbers::pi * i / window;
                const float weight = float(1.0 - std::cos(phase)); // of mean 1
                data[size_t(i)] = values[size_t(i) * size_t(sample.chs) + size_t(c)] * weight;
            }
            transform(data);
            for (int k = 0; k < bands; k++) power[size_t(k)] += double(std::norm(data[size_t(k)]));
        }
    }
    std::vector<float> levels;
    for (const double sum : power) { // a sine of height 1 comes to window / 2 in its bin
        const double level = std::sqrt(sum / (double(count) * sample.chs)) / bands;
        levels.push_back(float(decibels(float(level))));
    }
    return levels;
}
