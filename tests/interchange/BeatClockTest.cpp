#include "interchange/BeatClock.h"

#include <cmath>
#include <gtest/gtest.h>

/// Against the sum over small steps of beats, whose tempo is read off the points.
TEST(BeatClock, FollowsStepsAndLines) {
    const BeatClock clock(60.0, {{4, 120, false}, {8, 120, true}, {16, 60, false}});
    const auto bpm = [](double beat) {
        return beat < 4 ? 60.0 : beat < 8 ? 120.0 : beat < 16 ? 120.0 - (beat - 8) * 7.5 : 60.0;
    };
    double seconds = 0.0;
    constexpr double step = 1.0 / 4096;
    for (double beat = 0.0; beat < 20.0; beat += step) {
        if (std::fmod(beat, 0.5) == 0.0) {
            EXPECT_NEAR(clock.toSeconds(beat), seconds, 1e-6) << beat;
            EXPECT_NEAR(clock.toBeats(clock.toSeconds(beat)), beat, 1e-9);
        }
        seconds += step * 60.0 / bpm(beat + step / 2);
    }
}
