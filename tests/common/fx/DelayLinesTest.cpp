#include "common/fx/DelayLines.h"

#include <cmath>
#include <gtest/gtest.h>

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
