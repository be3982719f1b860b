#include "mixer/StripSpectrum.h"

#include "engine/COutputChannel.h"
#include "engine/StripMeters.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double fallDb = 1.2; ///< a tick

} // namespace

void StripSpectrum::setStrip(COutputChannel* strip) {
    if (channel) channel->meters().samples = 0;
    channel = strip;
    shown.clear();
    std::ranges::fill(past, 0.0f);
    if (!channel) return;
    channel->meters().equalised.clear();
    channel->meters().samples = 1;
}

bool StripSpectrum::takeFrames() {
    bool any = false;
    float sample = 0.0f;
    while (channel->meters().equalised.pop(sample)) {
        past[at] = sample;
        at = (at + 1) % past.size();
        any = true;
    }
    return any;
}

/// The highest of the bins in a stretch of them, or what a line between two neighbours has there.
double StripSpectrum::levelBetween(double from, double to) const {
    const double last = double(bins.size() - 1);
    if (from >= last) return lowest;
    const auto lineAt = [&](double place) {
        const auto below = size_t(std::min(place, last - 1));
        return bins[below] + (bins[below + 1] - bins[below]) * (place - double(below));
    };
    double highest = lineAt(from);
    for (double k = std::floor(from) + 1; k < std::min(to, last); k++)
        highest = std::max(highest, bins[size_t(k)]);
    return highest;
}

bool StripSpectrum::follow(const std::vector<double>& freqs, double rate) {
    if (!channel) return false;
    const bool fresh = takeFrames();
    if (fresh) {
        std::vector<float> stretch(past.begin() + std::ptrdiff_t(at), past.end());
        stretch.insert(stretch.end(), past.begin(), past.begin() + std::ptrdiff_t(at));
        bins.clear();
        for (const float a : fourier.amplitudes(stretch.data()))
            bins.push_back(a > 0.0f ? std::max(20 * std::log10(double(a)), lowest) : lowest);
    }
    const std::vector<double> before = shown;
    shown.resize(freqs.size(), lowest);
    const double perBin = rate / frames;
    for (size_t i = 0; i < freqs.size(); i++) {
        const double next = i + 1 < freqs.size() ? freqs[i + 1] : freqs[i];
        const double now = fresh ? levelBetween(freqs[i] / perBin, next / perBin) : lowest;
        shown[i] = std::max({now, shown[i] - fallDb, lowest});
    }
    return shown != before;
}
