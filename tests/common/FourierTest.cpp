#include "common/Fourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

/// A sine gives its amplitude at its own place, half of it on both sides, as the window tells, and
/// nothing elsewhere; two of them do not disturb each other.
TEST(Fourier, FindsSinesWithTheirAmplitudes) {
    constexpr int size = 1024;
    Fourier fourier(size);
    std::vector<float> signal(size);
    for (int i = 0; i < size; i++) {
        const double turn = 2 * std::numbers::pi * i / size;
        signal[size_t(i)] = float(0.5 * std::sin(turn * 100 + 0.3) + 0.25 * std::cos(turn * 301));
    }
    const std::vector<float>& found = fourier.amplitudes(signal.data());
    ASSERT_EQ(found.size(), size_t(size / 2));
    for (size_t k = 0; k < found.size(); k++) {
        const auto near = [k](size_t place, double amplitude) {
            return k == place ? amplitude : k + 1 == place || k == place + 1 ? amplitude / 2 : 0.0;
        };
        EXPECT_NEAR(found[k], near(100, 0.5) + near(301, 0.25), 1e-4) << k;
    }
}
