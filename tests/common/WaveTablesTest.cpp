#include "common/WaveTables.h"

#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

/// Corners and middles of each table, in exact fractions.
TEST(WaveTables, HoldTheirShapes) {
    createSinus();
    createSinus2();
    makeWaveforms();
    struct Case {
        int i;
        double sine, triangle, pulse, saw;
    };
    const double r = std::sqrt(0.5);
    const Case cases[] = {{0, 0, 0, 1, 0},           {8192, r, 0.5, 1, 0.25},
                          {16384, 1, 1, 1, 0.5},     {24576, r, 0.5, 1, 0.75},
                          {32768, 0, 0, -1, -1},     {40960, -r, -0.5, -1, -0.75},
                          {49152, -1, -1, -1, -0.5}, {57344, -r, -0.5, -1, -0.25}};
    for (const Case& c : cases) {
        EXPECT_NEAR(sinus[c.i], c.sine, 1e-15) << c.i;
        EXPECT_NEAR(sinus2[c.i], float(c.sine), 6e-8f) << c.i;
        EXPECT_EQ(triangle[c.i], c.triangle) << c.i;
        EXPECT_EQ(pulse[c.i], c.pulse) << c.i;
        EXPECT_EQ(saw[c.i], c.saw) << c.i;
        EXPECT_NEAR(sinusWave[c.i * 2], float(c.sine * 0.5 + 0.5), 4e-7f) << c.i;
        EXPECT_EQ(sawtoothWave[c.i * 2], float(c.i) / 65536) << c.i;
    }
    EXPECT_EQ(pulse[32767], 1.0);
    EXPECT_EQ(saw[32767], 32767.0 / 32768);
    EXPECT_EQ(triangleWave[0], 0.0f);
    EXPECT_EQ(triangleWave[65535], 65535.0f / 65536);
    EXPECT_EQ(triangleWave[65536], 1.0f);
    EXPECT_EQ(triangleWave[98304], 0.5f);
}

TEST(WaveTables, AreCompleteForWhomeverAsks) {
    std::vector<std::thread> threads;
    std::vector<double> seen(8);
    for (double& value : seen)
        threads.emplace_back([&value] {
            createSinus();
            value = saw[65535];
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(seen, std::vector<double>(8, 32767.0 / 32768 - 1.0));
}

/// The index cuts towards 0, wraps below 0 as well, and is 0 far out.
TEST(WaveTables, IndexWrapsAndEndsFarOut) {
    const double far = 2147483648.0 / 65535.0, inf = std::numeric_limits<double>::infinity();
    for (double x : {0.0, 1.0, 0.5, 2.0, -0.00001, -0.7, 1000.25, -32767.9, 32767.9, far * 0.999})
        EXPECT_EQ(phaseIndex(x), int((long long)(x * 65535) & 65535)) << x;
    for (double x : {far * 2, -far * 2, 1e300, -1e300, inf, -inf, std::nan("")})
        EXPECT_EQ(phaseIndex(x), 0) << x;
    EXPECT_EQ(phaseIndex(-1), 1);
    EXPECT_EQ(phaseIndex(32768.0), 32768) << "the last cycles before the end";
    EXPECT_EQ(phaseIndex(32769.0), 0);
}
