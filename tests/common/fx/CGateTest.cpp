#include "common/fx/CGate.h"

#include "support/Rows.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

/// A burst over the threshold among a hum below it: the gain rises, holds and falls as the formula
/// tells, whatever the blocks.
TEST(CGate, OpensHoldsAndClosesByItsFormula) {
    constexpr double rate = 48000.0, attackMs = 2.0, releaseMs = 20.0;
    constexpr int burst = 2000, length = 960, hold = 480, all = 8000; // frames
    const double rise = std::exp(-1000.0 / (attackMs * rate));
    const double fall = std::exp(-1000.0 / (releaseMs * rate));
    for (const auto& [block, range] :
         Rows<int, float>{{all, -20.0f}, {1, -20.0f}, {333, -100.0f}}) {
        CGate gate(float(rate), 0);
        gate.setThreshold(-6.0f);
        gate.setAttack(float(attackMs));
        gate.setHold(10.0f);
        gate.setRelease(float(releaseMs));
        gate.setRange(range);
        std::vector<float> left(all, 0.25f), right(all, -0.125f);
        for (int i = burst; i < burst + length; ++i) right[size_t(i)] = 0.75f;
        const std::vector<float> inL = left, inR = right;
        for (int at = 0; at < all; at += block) {
            const int n = std::min(block, all - at);
            gate.process(&left[size_t(at)], &right[size_t(at)], &left[size_t(at)],
                         &right[size_t(at)], n);
        }
        const double floor = range <= -100.0f ? 0.0 : std::pow(10.0, double(range) / 20.0);
        const int end = burst + length + hold;
        const double top = 1.0 - std::pow(rise, length + hold);
        for (int i = 0; i < all; ++i) {
            double share = 0.0;
            if (i >= burst) share = 1.0 - std::pow(rise, i - burst + 1);
            if (i >= end) share = top * std::pow(fall, i - end + 1);
            const double g = floor + (1.0 - floor) * share;
            ASSERT_NEAR(left[size_t(i)], double(inL[size_t(i)]) * g, 1e-6) << i << " by " << block;
            ASSERT_NEAR(right[size_t(i)], double(inR[size_t(i)]) * g, 1e-6) << i;
        }
        EXPECT_NEAR(gate.gain, floor + (1.0 - floor) * top * std::pow(fall, all - end), 1e-6);
    }
}
