#include "engine/CSamplePreview.h"

#include "audiofiles/CSample.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

/// Frame n of the sample is n / 1024, so that what comes out tells which frame it was; at a loop's
/// end comes its first frame, at the end of the range silence.
TEST(CSamplePreview, PlaysItsFramesAndNoOthers) {
    constexpr int frames = 512, block = 64;
    CQV host;
    CSample sample;
    sample.setFormat(int(host.rate), 16, 1);
    auto* values = static_cast<int16_t*>(malloc(frames * sizeof(int16_t)));
    for (int i = 0; i < frames; i++) values[i] = int16_t(i * 32);
    sample.takeData(reinterpret_cast<unsigned char*>(values), frames);
    CSamplePreview* preview = CSamplePreview::of(&host);
    ASSERT_EQ(preview, CSamplePreview::of(&host));
    const struct {
        const char* name;
        int from, to, count;
        bool loop;
    } cases[] = {{"once", 100, 230, 192, false}, {"over and over", 10, 40, 320, true}};
    for (const auto& c : cases) {
        preview->play(&sample, c.from, c.to, c.loop);
        EXPECT_TRUE(preview->isOn()) << c.name;
        for (int at = 0; at < c.count; at += block) {
            std::vector<float> left(block, 0.25f), right(block), a(block), b(block);
            const GraphHold hold(&host);
            preview->process(left.data(), right.data(), a.data(), b.data(), block);
            for (int i = 0; i < block; i++) {
                const int in = at + i, length = c.to - c.from;
                const bool heard = c.loop || in < length;
                const float value = heard ? float(c.from + in % length) / 1024.0f : 0.0f;
                ASSERT_NEAR(left[size_t(i)], 0.25f + value, 1e-5) << c.name << " " << in;
                ASSERT_NEAR(right[size_t(i)], value, 1e-5) << c.name << " " << in;
            }
        }
        EXPECT_EQ(preview->isOn(), c.loop) << c.name;
        EXPECT_EQ(preview->frame() >= 0, c.loop) << c.name;
    }
    forgetObject(&host, &sample);
    EXPECT_FALSE(preview->getPlaying()) << "its sample has gone";
}
