#include "SampleFixture.h"
#include "audiofiles/CElastiqueRender.h"
#include "audiofiles/SampleRender.h"
#include "support/Rows.h"
#include "support/RtTrap.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

extern bool onAudioThread;

namespace {

constexpr double rate = 44100.0, hertz = 1000.0, pi = std::numbers::pi;

/// Played by the stretcher: a tone that swells and fades around a frame.
class CElastiqueIfTest : public SampleFiles {
protected:
    static constexpr int centre = 30000, width = 15000, length = 2 * centre;

    CElastiqueIfTest() {
        const Values tone = made(length, [](int i) {
            const double x = std::clamp(double(i - centre) / width, -1.0, 1.0);
            return (1 + std::cos(pi * x)) / 2 * std::sin(2 * pi * hertz / rate * i);
        });
        write(path("tone.wav"), int(rate), 32, 1, tone, tone);
        sample = opened(path("tone.wav"));
    }

    /// As the audio thread renders a voice, which asks nothing of the system; `span` is asked for
    /// before each block.
    template <class Span>
    Values play(Span span, int frames, int block) {
        CElastiqueRender stretcher(block, float(rate));
        Values left(std::size_t(frames + block)), right = left, scratch(sampleScratchBytes / 4);
        int sourcePos = 0;
        rtReset();
        onAudioThread = true;
        EXPECT_TRUE(stretcher.start());
        EXPECT_FALSE(stretcher.start()) << "one voice at a time";
        for (int at = 0; at < frames; at += block)
            renderStretched(*sample, span(), sourcePos, &stretcher, block, &left[std::size_t(at)],
                            &right[std::size_t(at)],
                            reinterpret_cast<unsigned char*>(scratch.data()));
        stretcher.end();
        onAudioThread = false;
        EXPECT_EQ(rtViolations(), 0);
        EXPECT_EQ(left, right);
        return left;
    }

    std::unique_ptr<CSample> sample;
};

/// Of what is loud, by the upward crossings of zero.
double frequencyOf(const std::vector<float>& x) {
    const float loud = *std::max_element(x.begin(), x.end()) / 4;
    double first = 0, last = 0, count = -1;
    bool risen = false;
    for (std::size_t i = 0; i + 1 < x.size(); i++) {
        risen = risen || x[i] < -loud;
        if (!risen || x[i] >= 0 || x[i + 1] < 0) continue;
        risen = false;
        last = double(i) + double(x[i] / (x[i] - x[i + 1]));
        if (++count == 0) first = last;
    }
    return count * rate / (last - first);
}

} // namespace

/// The tone comes out at its place on the new time line, at the pitch that was asked for, forward
/// and backward.
TEST_F(CElastiqueIfTest, SoundKeepsItsPlaceAndPitch) {
    for (const auto& [stretch, pitch, block, reverse] :
         Rows<float, float, int, int>{{1.0f, 1.0f, 128, 0},
                                      {0.8f, 1.2f, 64, 1},
                                      {0.5f, 2.0f, 256, 0},
                                      {1.7f, 0.7f, 1024, 1},
                                      {1.25f, 0.5f, 4096, 0}}) {
        const StretchSpan span{stretch, pitch, reverse, 0, length};
        const Values out = play([&] { return span; }, int(stretch * length) + 5000, block);
        double energy = 0, moment = 0;
        for (std::size_t i = 0; i < out.size(); i++) {
            energy += double(out[i] * out[i]);
            moment += double(out[i] * out[i]) * double(i);
        }
        const int from = reverse ? length - 1 - centre : centre;
        EXPECT_NEAR(moment / energy, double(stretch) * from, 0.01 * rate)
            << stretch << " " << pitch;
        const double cents = 1200 * std::log2(frequencyOf(out) / hertz / double(pitch));
        EXPECT_NEAR(cents, 0.0, 3.0) << stretch << " " << pitch;
    }
}

/// Tempo and pitch that change with every block leave no hole, and the limits hold up.
TEST_F(CElastiqueIfTest, ChangesLeaveNoHole) {
    for (const StretchSpan& span : {StretchSpan{10.0f, 16.0f, 0, 0, length},
                                    {10.0f, 0.25f, 0, 0, length},
                                    {0.1f, 16.0f, 1, 0, length},
                                    {0.1f, 0.25f, 0, 0, length}})
        play([&] { return span; }, 4096, 1024);
    std::mt19937 random(1);
    const auto factor = [&] { return float(std::exp2((int(random() % 2001) - 1000) / 1000.0)); };
    const auto anySpan = [&] { return StretchSpan{factor(), factor(), 0, 0, length}; };
    const Values out = play(anySpan, 40000, 128);
    EXPECT_EQ(
        std::search_n(out.begin() + centre - width / 2, out.begin() + centre + width / 2, 4, 0.0f),
        out.begin() + centre + width / 2);
    EXPECT_LT(*std::max_element(out.begin(), out.end()), 2.0f);
}
