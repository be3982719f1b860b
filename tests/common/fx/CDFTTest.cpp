#include "common/fx/CDFT.h"
#include "FxFixture.h"

/// Direct sums, as the bands are defined.
TEST(CDFT, BandsAreTheDirectSums) {
    for (const int frames : {1, 7, 64, 1024, 2048})
        for (const int size : {1, 16, 200}) {
            const Stereo sound = fxSignal(frames);
            CDFT dft(size);
            dft.transform(sound.left.data(), sound.right.data(), frames);
            for (int k = 0; k < size; k++) {
                double re = 0, im = 0;
                for (int n = 0; n < frames; n++) {
                    const double left = double(sound.left[size_t(n)]);
                    const double x = (left + double(sound.right[size_t(n)])) / 2;
                    const double t = (k + 1) * (6.283 / frames) * (n - frames * 0.5);
                    re += std::cos(t) * x;
                    im += std::sin(t) * x;
                }
                const size_t band = size_t(k);
                ASSERT_NEAR(dft.re[band], re, 1e-8) << frames << " frames, band " << k;
                ASSERT_NEAR(dft.im[band], im, 1e-8) << frames << " frames, band " << k;
                ASSERT_NEAR(dft.bands[band], std::min(std::hypot(re, im) * 2 / frames, 1.0), 1e-9);
            }
        }
}

TEST(CDFT, BandsOnlyRiseAndEndAtOne) {
    CDFT dft(0);
    ASSERT_EQ(dft.getSize(), 1);
    std::vector<float> wave(256);
    const auto bandAfter = [&](float height) {
        for (size_t n = 0; n < 256; n++)
            wave[n] = height * float(std::cos(6.283185307 * double(n) / 256));
        dft.transform(wave.data(), wave.data(), 256);
        return dft.bands[0];
    };
    EXPECT_NEAR(bandAfter(0.5f), 0.5, 1e-5) << "the amplitude of a cycle in the block";
    EXPECT_NEAR(bandAfter(std::nanf("")), 0.5, 1e-5);
    EXPECT_EQ(bandAfter(4.5f), 1.0);
    EXPECT_EQ(bandAfter(0.5f), 1.0) << "who shows them lets them fall";
}
