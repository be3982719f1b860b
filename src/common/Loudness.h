#pragma once

#include "base/Atomic.h"
#include "base/Ring.h"

#include <array>
#include <vector>

/// Measures how loud a stereo signal is, after EBU R 128: loudness by ITU-R BS.1770, in three
/// windows and of all since the last reset, its range by EBU Tech 3342, and the true peak.
///
/// `process` runs in the block, on the audio thread, and hands on a record for each tenth of a
/// second; all other operations are the interface thread's, but where told.
class Loudness {
public:
    static constexpr double silent = -200.0; ///< LUFS and dB, where there is nothing to measure

    struct Levels {
        double momentary = silent;  ///< LUFS, of the last 0.4 s
        double shortTerm = silent;  ///< LUFS, of the last 3 s
        double integrated = silent; ///< LUFS, gated
        double range = 0.0;         ///< LU
        double truePeak = silent;   ///< dB of full scale, the highest
    };

    Loudness() { setRate(44100.0); }

    /// Frames a second, at least 1000; forgets the signal's past. Graph holder.
    void setRate(double hz);
    /// Whether it measures; it does not at first. Any thread.
    void measure(bool on) { wanted = on ? 1 : 0; }
    bool measures() const { return wanted != 0; }
    /// Any number of frames, however they are cut. No allocation, no waiting. Audio thread.
    void process(const float* left, const float* right, int frames);

    /// Takes what has been measured since; whether that was anything.
    bool follow();
    Levels levels() const;
    void reset(); ///< all that was measured so far does not count any more

private:
    struct Biquad {
        double b0, b1, b2, a1, a2;
    };
    /// The state of both filters of a side, and its last samples for the true peak.
    static constexpr int taps = 12, phases = 4;
    struct Side {
        double x1 = 0, x2 = 0, y1 = 0, y2 = 0, z1 = 0, z2 = 0;
        std::array<float, 2 * taps> past{}; ///< twice, so that the last ones lie in a row
    };
    /// A tenth of a second.
    struct Record {
        double power = 0.0; ///< mean square of both sides together, weighted
        float peak = 0.0f;
        unsigned run = 0; ///< resets before it
    };

    double weigh(Side& side, double x) const;
    float peakOf(Side& side, float x) const;
    void endRecord();
    double powerOfLast(size_t records) const;

    Biquad shelf{}, high{};
    std::array<std::array<float, taps>, phases - 1> between{}; ///< filters of the samples between
    int recordFrames = 4410;
    Side sides[2];
    int at = 0, pastAt = 0; ///< frames of the record; place in `past`
    Record record;
    Ring<Record, 256> records;
    Shared<int> wanted{0};
    Shared<unsigned> resets{0};

    std::vector<double> powers; ///< of the records since the reset
    double highest = 0.0;
};
