#include "SampleFixture.h"
#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/SampleRender.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>

extern bool onAudioThread;

namespace {

constexpr double rate = 44100.0;

/// A stretcher and the sample that it plays, a sine of 1 kHz in memory.
class CElastiqueIfTest : public SampleFiles {
protected:
    CElastiqueIfTest() : scratch(new float[sampleScratchBytes / 4]) {}

    void makeSine(int frames) {
        std::vector<float> sine;
        for (int i = 0; i < frames; i++)
            sine.push_back(0.5f * float(std::sin(2 * std::numbers::pi * 1000 * i / rate)));
        write(path("sine.wav"), int(rate), 32, 2, sine, sine);
        sample.open(path("sine.wav").c_str());
    }

    /// As the audio thread renders a voice, in blocks.
    std::vector<float> play(CElastiqueRender& stretcher, StretchSpan span, int frames, int block) {
        std::vector<float> left(std::size_t(frames + block)), right = left;
        int sourcePos = 0;
        onAudioThread = true;
        EXPECT_TRUE(stretcher.start());
        for (int at = 0; at < frames; at += block)
            renderStretched(sample, span, sourcePos, &stretcher, block, &left[std::size_t(at)],
                            &right[std::size_t(at)],
                            reinterpret_cast<unsigned char*>(scratch.get()));
        stretcher.end();
        onAudioThread = false;
        EXPECT_EQ(left, right);
        left.resize(std::size_t(frames));
        return left;
    }

    CSample sample;
    std::unique_ptr<float[]> scratch;
};

/// Frequency of a sine near `hz`: how its phase against that goes on between two windows.
double frequencyOf(const std::vector<float>& x, int from, double hz) {
    constexpr int window = 4096, apart = 4096;
    const auto phase = [&](int start) {
        std::complex<double> sum;
        for (int i = 0; i < window; i++) {
            const double hann = 1 - std::cos(2 * std::numbers::pi * i / window);
            sum += std::polar(hann * double(x[std::size_t(start + i)]),
                              -2 * std::numbers::pi * hz * (start + i) / rate);
        }
        return std::arg(sum);
    };
    const double turn = std::remainder(phase(from + apart) - phase(from), 2 * std::numbers::pi);
    return hz + turn / (2 * std::numbers::pi) * rate / apart;
}

} // namespace

/// Every factor within the limits, up to the largest voice of a block: the pitch is right, and the
/// audio thread asks the system for nothing.
TEST_F(CElastiqueIfTest, PitchIsExactAtAnyStretch) {
    struct Case {
        float stretch, pitch;
        int block;
    };
    makeSine(250000);
    for (const Case& c : {Case{1.0f, 1.0f, 128},
                          {0.8f, 1.2f, 64},
                          {1.25f, 0.5f, 1024},
                          {0.1f, 4.0f, 128},
                          {0.3f, 0.0625f, 1024},
                          {10.0f, 0.9f, 256},
                          {10.0f, 16.0f, 1024},
                          {0.1f, 0.0625f, 4096}}) {
        CElastiqueRender stretcher(c.block, float(rate));
        rtReset();
        const auto out = play(stretcher, {c.stretch, c.pitch, 0, 0, 250000}, 24000, c.block);
        const double hz = 1000.0 * double(c.pitch);
        const double cents = 1200 * std::log2(frequencyOf(out, 15000, hz) / hz);
        EXPECT_LT(std::fabs(cents), 3.0) << c.stretch << " " << c.pitch;
        EXPECT_EQ(rtViolations(), 0) << c.stretch << " " << c.pitch;
    }
}

/// A tone burst comes out at its place on the new time line, forward and backward.
TEST_F(CElastiqueIfTest, SoundKeepsItsPlace) {
    constexpr int frames = 90000, centre = 30000, width = 2000;
    std::vector<float> burst(frames);
    for (int i = centre - width; i < centre + width; i++) {
        const double at = std::numbers::pi * (i - centre) / width;
        burst[std::size_t(i)] = float((1 + std::cos(at)) / 2 * std::sin(0.2 * i));
    }
    write(path("burst.wav"), int(rate), 24, 1, burst, burst);
    sample.streamed = 1;
    ASSERT_TRUE(sample.open(path("burst.wav").c_str()));
    CElastiqueRender stretcher(256, float(rate));
    for (float stretch : {0.5f, 0.8f, 1.0f, 1.7f})
        for (float pitch : {0.7f, 1.0f, 2.0f})
            for (int reverse : {0, 1}) {
                const auto out = play(stretcher, {stretch, pitch, reverse, 0, frames}, 160000, 256);
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

/// Tempo and pitch that change with every block leave no hole.
TEST_F(CElastiqueIfTest, ChangesLeaveNoHole) {
    makeSine(300000);
    CElastiqueRender stretcher(128, float(rate));
    ASSERT_TRUE(stretcher.start());
    std::mt19937 random(1);
    const auto factor = [&] { return float(std::exp2((int(random() % 2001) - 1000) / 1000.0)); };
    int sourcePos = 0;
    rtReset();
    onAudioThread = true;
    for (int block = 0; block < 900; block++) {
        float left[128], right[128];
        renderStretched(sample, {factor(), factor(), 0, 0, 300000}, sourcePos, &stretcher, 128,
                        left, right, reinterpret_cast<unsigned char*>(scratch.get()));
        const float peak = *std::max_element(left, left + 128);
        ASSERT_GT(peak, block < 10 ? 0.0f : 0.1f) << block;
        ASSERT_LT(peak, 1.0f) << block;
    }
    onAudioThread = false;
    EXPECT_EQ(rtViolations(), 0);
}

/// One voice at a time; who has none is silent.
TEST_F(CElastiqueIfTest, VoicesTakeTurns) {
    makeSine(5000);
    CElastiqueRender stretcher(64, float(rate));
    EXPECT_TRUE(stretcher.start());
    EXPECT_FALSE(stretcher.start());
    stretcher.end();
    EXPECT_TRUE(stretcher.start());
    int sourcePos = 7;
    float left[64], right[64];
    std::fill_n(left, 64, 1.0f);
    EXPECT_TRUE(renderStretched(sample, {}, sourcePos, nullptr, 64, left, right, nullptr));
    EXPECT_EQ(*std::max_element(left, left + 64), 0.0f);
    CElastiqueIf* none = nullptr;
    EXPECT_NE(CElastiqueIf::CreateInstance(none, 64, 1, 44100.0f, 0.0f), 0);
    EXPECT_EQ(none, nullptr);
}
