#include "engine/ParamUnit.h"

#include "engine/COutputChannel.h"

#include <gtest/gtest.h>

#include <cmath>

/// What is typed in the unit of a parameter gives the share that is told so.
TEST(ParamUnit, TakesWhatItTells) {

    COutputChannel strip(nullptr);
    CSend send(nullptr, &strip);
    const struct {
        CObject* object;
        int param;
        float share;
        const char *told, *typed;
    } cases[] = {
        {&strip, 0, std::pow(10.0f, -6.0f / 40), "-6.00 dB", "-6"},
        {&strip, 0, 0.0f, "-inf", "-inf dB"},
        {&strip, 0, 1.0f, "0.00 dB", "0,0"},
        {&strip, 1, 0.25f, "L32", "l 32"},
        {&strip, 1, 0.75f, "R32", "32"},
        {&strip, 1, 0.5f, "<C>", "c"},
        {&strip, 2, 1.0f, "on", "On"},
        {&strip, 2, 0.0f, "off", "OFF"},
        {&strip, 4, 0.625f, "6.0 dB", "6 dB"},
        {&strip, 5, 980.0f / 19980, "1000 Hz", "1 kHz"},
        {&send, 0, 0.46f, "46%", "46 %"},
        {nullptr, 7, 0.07f, "7%", "7"},
    };
    for (const auto& c : cases) {
        const ParamUnit& unit = unitOf(c.object, c.param);
        EXPECT_EQ(unit.text(c.share), c.told) << c.typed;
        ASSERT_TRUE(typedNumber(c.typed)) << c.typed;
        EXPECT_NEAR(unit.share(*typedNumber(c.typed)), c.share, 1e-6f) << c.typed;
    }
    for (const char* none : {"", "loud", "-", "l", "dB"}) EXPECT_FALSE(typedNumber(none)) << none;
}
