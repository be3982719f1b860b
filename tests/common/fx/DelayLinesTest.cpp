#include "common/fx/DelayLines.h"
#include "common/WaveTables.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(MDelayLine, GivesBackWhatWentIn) {
    MDelayLine line;
    line.SetMaxDelay(20);
    EXPECT_EQ(line.size, 31);
    EXPECT_EQ(line.GetMem(), 31 * 4);
    for (int i = 0; i < 100; i++) {
        float out = -1.0f;
        line.copyFrom(line.read, 1, &out);
        line.read = (line.read + 1) % line.size;
        EXPECT_EQ(out, i < 20 ? 0.0f : float(i - 20)) << i;
        const float in = float(i);
        line.append(&in, 1);
    }
    line.Suspend();
    EXPECT_EQ(line.ring, std::vector<float>(31, 0.0f));
}

/// A ramp through a swept line comes out as the ramp at the swept delay, within what the all-pass
/// adds while it follows.
TEST(MSVRAP1ModDelayLine, ReadsAtTheSweptPlace) {
    createSinus2();
    MSVRAP1ModDelayLine line;
    line.SetNomDelay(100);
    line.SetModDepth(6);
    line.incr = 1.0 / 5000;
    for (int i = 0; i < 12000; i++) {
        const float y = line.GetCurValue();
        const double place = i - 100 + 6 * std::sin(2 * M_PI * i / 5000.0);
        if (i > 1000) {
            ASSERT_NEAR(double(y), place * 1e-3, 1.2e-3) << i;
        }
        const float in = float(i) * 1e-3f;
        line.append(&in, 1);
    }
}

TEST(MLPF1a, FiltersByItsTwoCoefficients) {
    MLPF1a filter;
    filter.SetCoeffs(0.25f, -0.75f);
    double want = 0.0;
    for (int i = 0; i < 200; i++) {
        want = 0.25 * (i < 40) + 0.75 * want;
        ASSERT_NEAR(double(filter.process(i < 40 ? 1.0f : 0.0f)), want < 1e-10 ? 0.0 : want, 1e-6);
    }
    EXPECT_EQ(filter.process(0.0f), 0.0f) << "no endless tail of tiny numbers";
}

TEST(MSinOsc, StaysASineForLong) {
    for (double hz : {0.5, 440.0, 9000.0}) {
        MSinOsc osc;
        osc.SetFreq(hz, 44100, 30);
        for (int i = 1; i < 50000; i++) {
            const double want = std::sin(M_PI / 6 + 2 * M_PI * hz * i / 44100);
            ASSERT_NEAR(double(osc.GetCurValue()), want, 1e-3) << hz << " Hz, sample " << i;
        }
    }
}
