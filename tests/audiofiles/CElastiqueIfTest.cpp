#include "SampleFixture.h"
#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/SampleRender.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

extern bool onAudioThread;

namespace {

constexpr double rate = 44100.0;

class CElastiqueIfTest : public SampleFiles {
protected:
    /// A sine of 1 kHz, in memory.
    void openSine(int frames) {
        std::vector<float> sine;
        for (int i = 0; i < frames; i++)
            sine.push_back(0.5f * float(std::sin(2 * std::numbers::pi * 1000 * i / rate)));
        write(path("sine.wav"), int(rate), 32, 2, sine, sine);
        ASSERT_TRUE(sample.open(path("sine.wav").c_str()));
    }

    /// As the audio thread renders a voice; `span` is asked for before each block.
    template <class Span>
    std::vector<float> play(Span span, int frames, int block) {
        CElastiqueRender stretcher(block, float(rate));
        std::vector<float> left(std::size_t(frames + block)), right = left;
        int sourcePos = 0;
        rtReset();
        onAudioThread = true;
        EXPECT_TRUE(stretcher.start());
        EXPECT_FALSE(stretcher.start()) << "one voice at a time";
        for (int at = 0; at < frames; at += block)
            renderStretched(sample, span(), sourcePos, &stretcher, block, &left[std::size_t(at)],
                            &right[std::size_t(at)],
                            reinterpret_cast<unsigned char*>(scratch.data()));
        stretcher.end();
        onAudioThread = false;
        EXPECT_EQ(left, right);
        left.resize(std::size_t(frames));
        return left;
    }

    CSample sample;
    std::vector<float> scratch = std::vector<float>(sampleScratchBytes / 4);
};

/// By the upward crossings of zero from frame `from` on.
double frequencyOf(const std::vector<float>& x, std::size_t from) {
    double first = 0, last = 0, count = -1;
    for (std::size_t i = from; i + 1 < x.size(); i++) {
        if (!(x[i] < 0 && x[i + 1] >= 0)) continue;
        last = double(i) + double(x[i] / (x[i] - x[i + 1]));
        if (++count == 0) first = last;
    }
    return count * rate / (last - first);
}

} // namespace

/// Every factor within the limits: the pitch is right, and nothing is asked of the system.
TEST_F(CElastiqueIfTest, PitchIsExactAtAnyStretch) {
    struct Case {
        float stretch, pitch;
        int block;
    };
    openSine(250000);
    for (const Case& c : {Case{1.0f, 1.0f, 128},
                          {0.8f, 1.2f, 64},
                          {1.25f, 0.5f, 1024},
                          {0.1f, 4.0f, 128},
                          {10.0f, 0.9f, 256},
                          {10.0f, 16.0f, 1024},
                          {0.1f, 0.25f, 4096}}) {
        const StretchSpan span{c.stretch, c.pitch, 0, 0, 250000};
        const auto out = play([&] { return span; }, 25000, c.block);
        EXPECT_EQ(rtViolations(), 0) << c.stretch << " " << c.pitch;
        const double cents = 1200 * std::log2(frequencyOf(out, 12000) / 1000 / double(c.pitch));
        EXPECT_LT(std::fabs(cents), 3.0) << c.stretch << " " << c.pitch;
    }
}

/// Tempo and pitch that change with every block leave no hole.
TEST_F(CElastiqueIfTest, ChangesLeaveNoHole) {
    openSine(300000);
    std::mt19937 random(1);
    const auto factor = [&] { return float(std::exp2((int(random() % 2001) - 1000) / 1000.0)); };
    const auto out = play(
        [&] {
            return StretchSpan{factor(), factor(), 0, 0, 300000};
        },
        110000, 128);
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_EQ(std::search_n(out.begin() + 300, out.end(), 4, 0.0f), out.end());
    EXPECT_LT(*std::max_element(out.begin(), out.end()), 1.0f);
}

/// A tone burst comes out at its place on the new time line, forward and backward.
TEST_F(CElastiqueIfTest, SoundKeepsItsPlace) {
    constexpr int frames = 90000, centre = 30000, width = 2000;
    std::vector<float> burst(frames);
    for (int i = -width; i < width; i++)
        burst[std::size_t(centre + i)] =
            float((1 + std::cos(std::numbers::pi * i / width)) / 2 * std::sin(0.2 * i));
    write(path("burst.wav"), int(rate), 24, 1, burst, burst);
    ASSERT_TRUE(sample.open(path("burst.wav").c_str()));
    for (float stretch : {0.5f, 0.8f, 1.7f})
        for (float pitch : {0.7f, 1.0f, 2.0f})
            for (int reverse : {0, 1}) {
                const StretchSpan span{stretch, pitch, reverse, 0, frames};
                const auto out = play([&] { return span; }, 110000, 256);
                double energy = 0, moment = 0;
                for (std::size_t i = 0; i < out.size(); i++) {
                    energy += double(out[i] * out[i]);
                    moment += double(out[i] * out[i]) * double(i);
                }
                const int from = reverse ? frames - 1 - centre : centre;
                EXPECT_NEAR(moment / energy, double(stretch) * from, 0.01 * rate)
                    << stretch << " " << pitch << " reverse " << reverse;
            }
}
