#include "common/Curves.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

/// The fraction as it is published, in double.
double hyperbola(double t, double a) {
    return a == 1 ? t : 1 - (a / ((1 - a) * t + a) - a) / (1 - a);
}

} // namespace

TEST(Curves, LieOnTheHyperbola) {
    for (double c : {-1.0, -0.5, -0.01, -0.001, 0.0, 0.001, 0.01, 0.3, 1.0})
        for (double t : {0.0, 0.01, 0.25, 0.5, 0.9, 1.0}) {
            const double k = 1 + 63 * c * c;
            const double fast = hyperbola(t, 1 / k), slow = hyperbola(t, k);
            const double up = c >= 0 ? fast : slow, ramp = c > 0 ? slow : fast;
            EXPECT_NEAR(envelopePoint(-1, 3, float(t), float(c)), up * 4 - 1, 2e-6) << c << t;
            EXPECT_NEAR(automationPoint(0, 3, -1, float(t), float(c)), 3 - ramp * 4, 2e-6)
                << c << t;
        }
    EXPECT_EQ(automationPoint(1, 0.25f, 1, 0.5f, 0), 0.25f) << "a held value";
    EXPECT_EQ(automationPoint(2, 0.25f, 1, 0.5f, 0), 0.0f) << "no shape";
    EXPECT_EQ(curvePoint(2, 5, -1, 3), 2.0f);
    EXPECT_NEAR(curvePoint(2, 5, 9, 3), 5.0f, 1e-6f);
    EXPECT_EQ(curvePoint(2, 5, std::nanf(""), 3), 2.0f);
}
