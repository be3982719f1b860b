#include "panels/rack/EffectShape.h"

#include "common/fx/CDelay.h"
#include "common/fx/CFilterFX.h"
#include "common/fx/CGuitarAmp.h"
#include "common/fx/CReverb.h"
#include "effects/EffectKinds.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// The picture's level at a share of the way from 20 Hz to 20 kHz.
double levelAt(const EffectShape& shape, double share) {
    const auto& points = shape.lines.front().points;
    return points[size_t(std::lround(share * double(points.size() - 1)))].y;
}

} // namespace

/// What is measured follows the settings, in decibels on a scale of 72 and 80.
TEST(EffectShape, TonesFollowTheKnobs) {
    EffectShaper shaper;
    CFilterFX filter(44100, 0);
    EXPECT_NEAR(levelAt(shaper.shapeOf(filter, 120), 0.1), 48.0 / 72, 0.01) << "0 dB";
    filter.setCutoff(0.3f); // f = 0.09: about 630 Hz, and 12 dB an octave above
    const EffectShape low = shaper.shapeOf(filter, 120);
    EXPECT_NEAR(levelAt(low, 0.1), 48.0 / 72, 0.02);
    EXPECT_NEAR((levelAt(low, 0.7) - levelAt(low, 0.8)) * 72, 12 * std::log2(std::pow(1000, 0.1)),
                1.5);
    EffectShaper ofAmp;
    CGuitarAmp amp(44100, 0);
    amp.setThreshold(1.0f); // the gate does not count
    const EffectShape before = ofAmp.shapeOf(amp, 120);
    amp.setBass(1.0f);
    const EffectShape more = ofAmp.shapeOf(amp, 120);
    EXPECT_GT(levelAt(more, 0.2), levelAt(before, 0.2) + 2.0 / 80);
    EXPECT_NEAR(levelAt(more, 0.9), levelAt(before, 0.9), 1.0 / 80);
}

TEST(EffectShape, TailsAndEchoesStandAtTheirTimes) {
    EffectShaper shaper;
    CReverb reverb(44100, 0);
    reverb.setPreDelay(100);
    reverb.setSize(4000);
    const EffectShape decay = shaper.shapeOf(reverb, 120);
    const auto& tail = decay.lines.back().points;
    EXPECT_NEAR(tail.front().x, 0.1 / 5, 1e-9); // on a scale of five seconds
    EXPECT_NEAR(tail.back().x, 4.1 / 5, 1e-9);
    CDelay delay(44100, 0);
    delay.setTicksLeft(1, 2);
    const EffectShape echoes = shaper.shapeOf(delay, 60);
    ASSERT_GE(echoes.bars.size(), 3u);
    EXPECT_NEAR(echoes.bars[0].x, 0.5 / 5, 1e-9) << "half a beat of a second";
    EXPECT_NEAR(echoes.bars[0].height, 0.25, 1e-9);
    EXPECT_NEAR(echoes.bars[1].x, 1.0 / 5, 1e-9) << "right";
}
