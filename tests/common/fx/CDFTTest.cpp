#include "common/fx/CDFT.h"
#include "FxFixture.h"

/// Direct sums, as the bands are defined.
TEST(CDFT, BandsAreTheDirectSums) {
    for (const int frames : {1, 7, 64, 1024, 2048})
        for (const int size : {1, 16, 200}) {
            Stereo sound = fxSignal(frames);
            for (int n = 0; n < frames; n++)
                sound.right[std::size_t(n)] = float(0.7 * std::cos(0.03 * n + 0.5));
            CDFT dft(size);
            dft.transform(sound.left.data(), sound.right.data(), frames);
            for (int k = 0; k < size; k++) {
                double re = 0, im = 0;
                for (int n = 0; n < frames; n++) {
                    const std::size_t at = std::size_t(n);
                    const double x = (double(sound.left[at]) + double(sound.right[at])) / 2;
                    const double t = (k + 1) * (6.283 / frames) * (n - frames * 0.5);
                    re += std::cos(t) * x;
                    im += std::sin(t) * x;
                }
                const std::size_t band = std::size_t(k);
                ASSERT_NEAR(dft.re[band], re, 1e-8) << frames << " frames, band " << k;
                ASSERT_NEAR(dft.im[band], im, 1e-8) << frames << " frames, band " << k;
                ASSERT_NEAR(dft.bands[band], std::min(std::hypot(re, im) * 2 / frames, 1.0), 1e-9);
            }
        }
}

TEST(CDFT, BandsOnlyRiseAndEndAtOne) {
    CDFT dft(0);
    ASSERT_EQ(dft.getSize(), 1);
    std::vector<float> wave(256), loud(256), broken(256, std::nanf(""));
    for (std::size_t n = 0; n < 256; n++) {
        wave[n] = float(0.5 * std::cos(6.283185307 * double(n) / 256));
        loud[n] = 9 * wave[n];
    }
    dft.transform(wave.data(), wave.data(), 256);
    EXPECT_NEAR(dft.bands[0], 0.5, 1e-5) << "the amplitude of a cycle in the block";
    dft.transform(broken.data(), wave.data(), 256);
    EXPECT_NEAR(dft.bands[0], 0.5, 1e-5);
    dft.transform(loud.data(), loud.data(), 256);
    EXPECT_EQ(dft.bands[0], 1.0);
    dft.transform(wave.data(), wave.data(), 256);
    EXPECT_EQ(dft.bands[0], 1.0) << "who shows them lets them fall";
}
