#pragma once

#include "common/Fourier.h"

#include <vector>

class COutputChannel;

/// The spectrum of what the equaliser of a strip lets through at present, which rises at once and
/// falls slowly. Interface thread.
class StripSpectrum {
public:
    static constexpr double lowest = -90.0; ///< dB
    static constexpr int frames = 4096;     ///< that it is made of

    /// Takes the sound of a strip from now on, or of none; the former one is still there.
    void setStrip(COutputChannel* strip);
    /// Takes what has come since, for these frequencies in Hz, which rise; whether that shows.
    /// Interface tick.
    bool follow(const std::vector<double>& freqs, double rate);
    /// dB of full scale of each of the frequencies, `lowest` or more; empty before there is any.
    const std::vector<double>& levels() const { return shown; }

private:
    bool takeFrames();
    double levelBetween(double from, double to) const;

    COutputChannel* channel = nullptr;
    Fourier fourier{frames};
    std::vector<float> past = std::vector<float>(frames); ///< the latest frames, a ring
    size_t at = 0;                                        ///< of the oldest
    std::vector<double> bins, shown;                      ///< dB
};
