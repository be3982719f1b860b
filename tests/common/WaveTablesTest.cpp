#include "common/WaveTables.h"

#include <gtest/gtest.h>
#include <limits>

TEST(WaveTables, HoldTheirShapes) {
    createSinus();
    createSinus2();
    makeWaveforms();
    for (int i = 0; i < waveTableSize; i++) {
        const double t = double(i) / waveTableSize, sine = std::sin(2 * M_PI * t);
        ASSERT_NEAR(sinus[i], sine, 1e-15) << i;
        ASSERT_NEAR(sinus2[i], sine, 6e-8) << i;
        ASSERT_NEAR(triangle[i], 1 - std::fabs(std::remainder(4 * t - 1, 4)), 1e-15) << i;
        ASSERT_EQ(pulse[i], t < 0.5 ? 1.0 : -1.0) << i;
        ASSERT_EQ(saw[i], t < 0.5 ? 2 * t : 2 * t - 2) << i;
        ASSERT_NEAR(sinusWave[i * 2], sine / 2 + 0.5, 4e-7) << i;
        ASSERT_EQ(triangleWave[i * 2], 1 - std::fabs(1 - 2 * t)) << i;
        ASSERT_EQ(sawtoothWave[i * 2 + 1], t + 1.0 / lfoTableSize) << i;
    }
}

/// The index cuts towards 0, wraps below 0 as well, and is 0 far out.
TEST(WaveTables, IndexWrapsAndEndsFarOut) {
    const double far = 2147483648.0 / 65535.0, inf = std::numeric_limits<double>::infinity();
    for (double x : {0.0, 1.0, 0.5, -0.00001, -1.0, 1000.25, -32767.9, 32768.0, far * 0.999})
        EXPECT_EQ(phaseIndex(x), int((long long)(x * 65535) & 65535)) << x;
    for (double x : {32769.0, far * 2, -far * 2, 1e300, -1e300, inf, -inf, std::nan("")})
        EXPECT_EQ(phaseIndex(x), 0) << x;
}
