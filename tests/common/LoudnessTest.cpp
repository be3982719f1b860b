#include "common/Loudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace {

struct Tone {
    double dbLeft, dbRight, seconds;
    double hz = 1000.0, degrees = 0.0;
};
constexpr double none = -1000.0;

/// Feeds tones one after the other, in blocks of changing size.
void feed(Loudness& meter, double rate, const std::vector<Tone>& tones, bool fades = false) {
    std::vector<float> left, right;
    for (const Tone& t : tones)
        for (int i = 0; i < int(t.seconds * rate); i++) {
            const double phase =
                2 * std::numbers::pi * t.hz * i / rate + t.degrees * std::numbers::pi / 180;
            const double ends = std::min(double(i), t.seconds * rate - i) / (0.01 * rate);
            const double wave = std::sin(phase) * (fades ? std::min(1.0, ends) : 1.0);
            left.push_back(float(wave * std::pow(10.0, t.dbLeft / 20)));
            right.push_back(float(wave * std::pow(10.0, t.dbRight / 20)));
        }
    const int blocks[] = {1, 333, 1024, 64};
    int block = 0;
    for (size_t at = 0; at < left.size();) {
        const int n = int(std::min(left.size() - at, size_t(blocks[block++ % 4])));
        meter.process(&left[at], &right[at], n);
        at += size_t(n);
        meter.follow();
    }
}

Loudness& fresh(Loudness& meter, double rate) {
    meter.setRate(rate);
    meter.reset();
    meter.measure(true);
    return meter;
}

} // namespace

/// The signals and answers of EBU Tech 3341, table 1, that are of two channels: 1 to 5 within 0.1
/// LU.
TEST(Loudness, MeasuresTheSignalsOfTheStandard) {
    const struct {
        const char* name;
        std::vector<Tone> tones;
        double integrated;
    } cases[] = {
        {"1", {{-23, -23, 20}}, -23},
        {"2", {{-33, -33, 20}}, -33},
        {"3", {{-36, -36, 10}, {-23, -23, 60}, {-36, -36, 10}}, -23},
        {"4",
         {{-72, -72, 10}, {-36, -36, 10}, {-23, -23, 60}, {-36, -36, 10}, {-72, -72, 10}},
         -23},
        {"5", {{-26, -26, 20}, {-20, -20, 20.1}, {-26, -26, 20}}, -23},
    };
    for (const double rate : {44100.0, 48000.0, 96000.0})
        for (const auto& c : cases) {
            Loudness meter;
            feed(fresh(meter, rate), rate, c.tones);
            EXPECT_NEAR(meter.levels().integrated, c.integrated, 0.1) << c.name << " at " << rate;
        }
}

/// A side alone has half the power of both.
TEST(Loudness, FollowsItsWindowsAndSides) {
    Loudness meter;
    feed(fresh(meter, 48000), 48000, {{-20, none, 4}});
    EXPECT_NEAR(meter.levels().momentary, -20 - 3.01, 0.1);
    feed(meter, 48000, {{-30, -30, 0.4}});
    EXPECT_NEAR(meter.levels().momentary, -30, 0.1);
    const double parts = (26 * std::pow(10.0, -2.0) / 2 + 4 * std::pow(10.0, -3.0)) / 30;
    EXPECT_NEAR(meter.levels().shortTerm, 10 * std::log10(parts), 0.1);
    meter.reset();
    EXPECT_EQ(meter.levels().integrated, Loudness::silent);
    EXPECT_EQ(meter.levels().truePeak, Loudness::silent);
    feed(meter, 48000, {{none, none, 5}});
    EXPECT_EQ(meter.levels().integrated, Loudness::silent) << "silence does not count";
}

/// The first four signals of EBU Tech 3342, table 1, within 1 LU.
TEST(Loudness, MeasuresTheRangeOfTheStandard) {
    const struct {
        std::vector<Tone> tones;
        double range;
    } cases[] = {
        {{{-20, -20, 20}, {-30, -30, 20}}, 10},
        {{{-20, -20, 20}, {-15, -15, 20}}, 5},
        {{{-40, -40, 20}, {-20, -20, 20}}, 20},
        {{{-50, -50, 20}, {-35, -35, 20}, {-20, -20, 20}, {-35, -35, 20}, {-50, -50, 20}}, 15}};
    for (const auto& c : cases) {
        Loudness meter;
        feed(fresh(meter, 48000), 48000, c.tones);
        EXPECT_NEAR(meter.levels().range, c.range, 1.0) << c.range;
    }
}

/// Signals 15 to 18 of EBU Tech 3341, a quarter to a sixth of the rate, whose samples lie beside
/// their peak: within +0.2 and -0.4 dB.
TEST(Loudness, FindsPeaksBetweenSamples) {
    constexpr double rate = 48000, half = -6.0206;
    for (const auto& [part, degrees] : {std::pair{4, 0.0}, {4, 45.0}, {6, 60.0}, {8, 67.5}}) {
        Loudness meter;
        feed(fresh(meter, rate), rate, {{half, half, 1, rate / part, degrees}}, true);
        EXPECT_LE(meter.levels().truePeak, half + 0.2) << part << ", " << degrees;
        EXPECT_GE(meter.levels().truePeak, half - 0.4) << part << ", " << degrees;
    }
}

TEST(Loudness, MeasuresNothingUnasked) {
    Loudness meter;
    std::vector<float> noise(48000, 0.5f);
    meter.process(noise.data(), noise.data(), 48000);
    EXPECT_FALSE(meter.follow());
    noise[7] = std::numeric_limits<float>::quiet_NaN();
    meter.measure(true);
    meter.process(noise.data(), noise.data(), 48000);
    EXPECT_TRUE(meter.follow());
    EXPECT_TRUE(std::isfinite(meter.levels().truePeak));
}
