#include "common/Loudness.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double recordSeconds = 0.1;
constexpr size_t momentaryRecords = 4, shortRecords = 30;
constexpr double offset = -0.691; // of BS.1770, so that 1 kHz counts as it is
constexpr double absoluteGate = -70.0, relativeGate = -10.0;
constexpr double rangeGate = -20.0, rangeLow = 0.10, rangeHigh = 0.95;

double loudnessOf(double power) {
    return power > 0.0 ? std::max(offset + 10.0 * std::log10(power), Loudness::silent)
                       : Loudness::silent;
}

double powerAt(double lufs) {
    return std::pow(10.0, (lufs - offset) / 10.0);
}

/// The mean of those above a level.
double meanAbove(const std::vector<double>& powers, double lufs) {
    const double gate = powerAt(lufs);
    double sum = 0.0;
    size_t count = 0;
    for (const double p : powers)
        if (p > gate) {
            sum += p;
            count++;
        }
    return count ? sum / double(count) : 0.0;
}

/// Means of so many records in a row, one for each that ends such a row.
std::vector<double> windows(const std::vector<double>& powers, size_t length) {
    std::vector<double> means;
    double sum = 0.0;
    for (size_t i = 0; i < powers.size(); i++) {
        sum += powers[i];
        if (i >= length) sum -= powers[i - length];
        if (i + 1 >= length) means.push_back(std::max(sum, 0.0) / double(length));
    }
    return means;
}

double sinc(double x) {
    return x == 0.0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

} // namespace

/// The filters of BS.1770, which tells them for 48 kHz: here from the analogue ones behind these,
/// by the bilinear transform, for any rate.
void Loudness::setRate(double hz) {
    const double rate = std::max(hz, 1000.0);
    {
        constexpr double f0 = 1681.974450955533, gainDb = 3.999843853973347;
        constexpr double q = 0.7071752369554196, bend = 0.4996667741545416;
        const double k = std::tan(std::numbers::pi * std::min(f0, 0.49 * rate) / rate);
        const double vh = std::pow(10.0, gainDb / 20.0), vb = std::pow(vh, bend);
        const double a0 = 1.0 + k / q + k * k;
        shelf = {(vh + vb * k / q + k * k) / a0, 2.0 * (k * k - vh) / a0,
                 (vh - vb * k / q + k * k) / a0, 2.0 * (k * k - 1.0) / a0,
                 (1.0 - k / q + k * k) / a0};
    }
    {
        constexpr double f0 = 38.13547087602444, q = 0.5003270373238773;
        const double k = std::tan(std::numbers::pi * f0 / rate), a0 = 1.0 + k / q + k * k;
        high = {1.0, -2.0, 1.0, 2.0 * (k * k - 1.0) / a0, (1.0 - k / q + k * k) / a0};
    }
    for (int p = 0; p < phases - 1; p++) {
        double sum = 0.0;
        for (int t = 0; t < taps; t++) {
            const double x = t - (taps / 2 - 1) - double(p + 1) / phases;
            const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * x / (taps / 2.0)); // Hann
            between[size_t(p)][size_t(t)] = float(sinc(x) * std::max(window, 0.0));
            sum += double(between[size_t(p)][size_t(t)]);
        }
        for (float& c : between[size_t(p)]) c = float(double(c) / sum);
    }
    recordFrames = std::max(1, int(std::lround(rate * recordSeconds)));
    for (Side& side : sides) side = Side();
    at = pastAt = 0;
    record = Record();
}

double Loudness::weigh(Side& s, double x) const {
    const double y =
        shelf.b0 * x + shelf.b1 * s.x1 + shelf.b2 * s.x2 - shelf.a1 * s.y1 - shelf.a2 * s.y2;
    const double z = y - 2.0 * s.y1 + s.y2 - high.a1 * s.z1 - high.a2 * s.z2; // 1, -2, 1 above
    s.x2 = s.x1;
    s.x1 = x;
    s.y2 = s.y1;
    s.y1 = y;
    s.z2 = s.z1;
    s.z1 = z;
    return z;
}

/// Of the sample and the three that lie between two earlier ones at four times the rate.
float Loudness::peakOf(Side& s, float x) const {
    s.past[size_t(pastAt)] = s.past[size_t(pastAt + taps)] = x;
    const float* row = &s.past[size_t(pastAt + 1)]; // the oldest first
    float peak = std::fabs(x);
    for (const auto& filter : between) {
        float sum = 0.0f;
        for (int t = 0; t < taps; t++) sum += filter[size_t(t)] * row[t];
        peak = std::max(peak, std::fabs(sum));
    }
    return peak;
}

void Loudness::endRecord() {
    record.power /= recordFrames;
    records.push(record);
    record = Record();
    record.run = resets;
    at = 0;
}

void Loudness::process(const float* left, const float* right, int frames) {
    if (!wanted) return;
    const float* in[] = {left, right};
    for (int i = 0; i < frames; i++) {
        for (int side = 0; side < 2; side++) {
            const float x = std::isfinite(in[side][i]) ? in[side][i] : 0.0f;
            const double z = weigh(sides[side], double(x));
            record.power += z * z;
            record.peak = std::max(record.peak, peakOf(sides[side], x));
        }
        pastAt = pastAt + 1 == taps ? 0 : pastAt + 1;
        if (++at == recordFrames) endRecord();
    }
    // What has died away would go on as numbers too small to be worked with quickly.
    constexpr double least = 1e-30;
    for (Side& s : sides)
        for (double* v : {&s.y1, &s.y2, &s.z1, &s.z2})
            if (std::fabs(*v) < least) *v = 0.0;
}

bool Loudness::follow() {
    bool any = false;
    for (Record r; records.pop(r);) {
        if (r.run != resets) continue;
        powers.push_back(r.power);
        highest = std::max(highest, double(r.peak));
        any = true;
    }
    return any;
}

double Loudness::powerOfLast(size_t count) const {
    if (powers.size() < count) return 0.0;
    double sum = 0.0;
    for (size_t i = powers.size() - count; i < powers.size(); i++) sum += powers[i];
    return sum / double(count);
}

Loudness::Levels Loudness::levels() const {
    Levels now;
    now.momentary = loudnessOf(powerOfLast(momentaryRecords));
    now.shortTerm = loudnessOf(powerOfLast(shortRecords));
    const std::vector<double> blocks = windows(powers, momentaryRecords);
    const double ungated = loudnessOf(meanAbove(blocks, absoluteGate));
    if (ungated > silent)
        now.integrated =
            loudnessOf(meanAbove(blocks, std::max(absoluteGate, ungated + relativeGate)));
    std::vector<double> parts = windows(powers, shortRecords);
    const double whole = loudnessOf(meanAbove(parts, absoluteGate));
    const double gate = powerAt(std::max(absoluteGate, whole + rangeGate));
    std::erase_if(parts, [gate](double p) { return p <= gate; });
    if (parts.size() > 1) {
        std::sort(parts.begin(), parts.end());
        const auto share = [&](double s) {
            return loudnessOf(parts[size_t(std::lround(s * double(parts.size() - 1)))]);
        };
        now.range = share(rangeHigh) - share(rangeLow);
    }
    if (highest > 0.0) now.truePeak = 20.0 * std::log10(highest);
    return now;
}

void Loudness::reset() {
    resets = resets + 1;
    powers.clear();
    highest = 0.0;
}
