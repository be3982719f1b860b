#include "audiofiles/SampleMeasures.h"

#include "audiofiles/CSample.h"
#include "base/TempFolder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <string>

namespace {

constexpr int rate = 44100;

/// Stereo in memory, both sides alike, of so many values.
template <class F>
void fill(CSample& sample, int frames, F&& value) {
    sample.setFormat(rate, 16, 2);
    auto* values = static_cast<int16_t*>(malloc(size_t(frames) * 4));
    for (int i = 0; i < frames; i++)
        values[2 * i] = values[2 * i + 1] = int16_t(std::lround(value(i) * 32767));
    sample.takeData(reinterpret_cast<unsigned char*>(values), frames);
}

double sine(int frame, double hz) {
    return std::sin(2 * std::numbers::pi * hz * frame / rate);
}

} // namespace

/// A sine of half the height has a peak of -6.02 dB, and a root mean square 3.01 dB below.
TEST(SampleMeasures, LevelsAreThoseOfASine) {
    for (const int frames : {44100, 1 << 22}) {
        CSample sample;
        fill(sample, frames, [](int i) { return 0.5 * sine(i, 441); });
        sample.peakfile();
        const SampleLevel level = levelOf(sample, 0, sample.frames);
        const double slack = level.exact ? 0.01 : 0.1; // the image has 8 bits
        EXPECT_EQ(level.exact, frames == 44100);
        EXPECT_NEAR(decibels(level.peak), -6.02, slack);
        EXPECT_NEAR(decibels(level.rms), -9.03, slack);
    }
    EXPECT_LT(decibels(0.0f), -200);
}

/// A tone in the middle of a band fills it, its neighbours half as high as the window has them, and
/// what is far off nothing.
TEST(SampleMeasures, ASpectrumShowsTones) {
    constexpr int bands = 1024, at = 100;
    CSample sample;
    const double hz = double(at) * rate / (2 * bands);
    fill(sample, rate, [hz](int i) { return 0.5 * sine(i, hz); });
    const std::vector<float> levels = spectrumOf(sample, 1000, rate - 1000, bands);
    ASSERT_EQ(int(levels.size()), bands);
    EXPECT_NEAR(levels[at], -6.02, 0.1);
    EXPECT_NEAR(levels[at - 1], -12.04, 0.1);
    EXPECT_NEAR(levels[at + 1], -12.04, 0.1);
    for (const int far : {0, at / 2, at * 2, bands - 1}) EXPECT_LT(levels[size_t(far)], -80) << far;
    EXPECT_TRUE(spectrumOf(sample, 0, 2 * bands - 1, bands).empty());
}

TEST(SampleMeasures, ZeroCrossingsAreTheNearest) {
    CSample sample;
    fill(sample, 1000, [](int i) { return i < 900 ? ((i + 20) / 50 % 2 ? 0.5 : -0.5) : 0.25; });
    const struct {
        int frame, reach, found;
    } cases[] = {{50, 100, 30}, {60, 100, 80}, {80, 100, 80}, {55, 25, 30},
                 {55, 20, 55},  {0, 20, 0},    {999, 50, 999}};
    for (const auto& c : cases)
        EXPECT_EQ(zeroCrossing(sample, c.frame, c.reach), c.found) << c.frame;
}

/// Cue points and their names are told in order; what lies outside of the file, or is cut off, is
/// none.
TEST(SampleMeasures, FilesNameTheirCues) {
    const auto number = [](uint64_t value, int bytes, bool big = false) {
        std::string text;
        for (int i = 0; i < bytes; i++) text += char(value >> 8 * (big ? bytes - 1 - i : i) & 255);
        return text;
    };
    const auto chunk = [&](const std::string& name, const std::string& content, bool big = false) {
        return name + number(unsigned(content.size()), 4, big) + content;
    };
    const auto cue = [&](unsigned id, unsigned frame) {
        return number(id, 4) + number(0, 4) + "data" + number(0, 8) + number(frame, 4);
    };
    const std::string wav =
        "WAVE" +
        chunk("fmt ",
              number(0x10001, 4) + number(rate, 4) + number(88200, 4) + number(0x100002, 4)) +
        chunk("cue ", number(900, 4) + cue(7, 50) + cue(8, 1000) + cue(9, 20)) +
        chunk("LIST", "adtl" + chunk("labl", number(9, 4) + std::string("Verse\0", 6)) + "labl" +
                          number(9000, 4) + number(7, 4) + "End") +
        chunk("data", std::string(200, 0));
    const std::string aiff =
        "AIFF" +
        chunk("COMM",
              number(1, 2, true) + number(100, 4, true) + number(16, 2, true) +
                  std::string("\x40\x0e\xac\x44\0\0\0\0\0\0", 10),
              true) +
        chunk("MARK",
              number(2, 2, true) + number(1, 2, true) + number(50, 4, true) + "\3End" +
                  number(2, 2, true) + number(20, 4, true) + "\5Verse",
              true) +
        chunk("SSND", std::string(208, 0), true);
    const TempFolder folder;
    for (const auto& [name, bytes] :
         {std::pair{"a.wav", chunk("RIFF", wav)}, std::pair{"a.aif", chunk("FORM", aiff, true)}}) {
        CSample sample;
        sample.streamed = 1;
        ASSERT_TRUE(sample.open(folder.write(name, bytes))) << name;
        ASSERT_EQ(sample.cues.size(), 2u) << name;
        EXPECT_EQ(sample.cues[0].frame, 20) << name;
        EXPECT_EQ(sample.cues[0].name, "Verse") << name;
        EXPECT_EQ(sample.cues[1].frame, 50) << name;
        EXPECT_EQ(sample.cues[1].name, "End") << name;
    }
}
