#include "StripFixture.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

TEST(COutputChannel, FaderClampsAndOnlyRampsWhereThereIsAWay) {
    struct Case {
        float from, to;
        bool ramp;
        float target;
        int frames;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Case cases[] = {{1, 1.5f, false, 1, 0},      {1, -2, false, 0, 0},
                          {0.5f, 0.5f, true, 0.5f, 0}, {1, 0.25f, true, 0.25f, 132},
                          {0, 9, true, 1, 132},        {1, nan, false, 0, 0}};
    framesInMs = 44;
    for (const Case& c : cases) {
        COutputChannel ch(nullptr);
        ch.setVol(c.from, false);
        ch.setVol(c.to, c.ramp);
        EXPECT_EQ(ch.gainTarget, c.target) << c.to;
        EXPECT_EQ(ch.gainRamp, c.frames) << c.to;
        EXPECT_FLOAT_EQ(ch.gainStep, c.frames ? (c.target - c.from) / 132 : 0) << c.to;
        EXPECT_EQ(ch.gain, c.frames ? c.from : c.target) << c.to;
    }
    framesInMs = 0; // an engine whose rate was never set
    COutputChannel ch(nullptr);
    ch.setVol(0.0f, true);
    EXPECT_TRUE(std::isfinite(ch.gainStep));
    framesInMs = 44;
}

TEST(COutputChannel, PanKeepsTheCentreAtUnityAndGivesHalfMoreToOneSide) {
    for (const float p : {-2.0f, -1.0f, -0.5f, 0.0f, 0.25f, 1.0f, 7.0f}) {
        COutputChannel ch(nullptr);
        ch.setPan(p, false);
        const float to = std::min(std::max(p, -1.0f), 1.0f);
        EXPECT_FLOAT_EQ(ch.panL, to < 0 ? 1 + 0.5f * -to : 1 - to) << p;
        EXPECT_FLOAT_EQ(ch.panR, to < 0 ? 1 - -to : 1 + 0.5f * to) << p;
    }
}

TEST(COutputChannel, ParametersReadAsTexts) {
    struct Case {
        int param;
        float value;
        const char* text;
    };
    const Case cases[] = {{0, 1, "0.00 dB"}, {0, 0.5f, "-12.04 dB"}, {0, 0, "-inf"},
                          {1, 0.5f, "<C>"},  {1, 0, "L64"},          {1, 1, "R64"},
                          {1, 0.75f, "R32"}, {2, 0.5f, "on"},        {2, 0.49f, "off"},
                          {19, 1, "on"},     {19, 0, "off"}};
    COutputChannel ch(nullptr);
    for (const Case& c : cases) {
        ch.setParam(c.param, c.value);
        EXPECT_STREQ(ch.paramText(c.param).asChar(), c.text) << c.param << " at " << c.value;
        if (c.param < 2) {
            EXPECT_FLOAT_EQ(ch.param(c.param), c.value);
        }
    }
    const char* names[] = {"Volume",   "Pan",      "Mute",  "EQ1 power",
                           "EQ1 gain", "EQ1 freq", "EQ1 Q", "EQ2 power"};
    for (int i = 0; i < 8; ++i) EXPECT_STREQ(COutputChannel::paramName(i).asChar(), names[i]);
    EXPECT_STREQ(COutputChannel::paramName(18).asChar(), "EQ4 Q");
    EXPECT_STREQ(COutputChannel::paramName(19).asChar(), "Solo");
    EXPECT_EQ(ch.numParams(), 19);
    EXPECT_STREQ(ch.sendLevels[0]->paramText(0).asChar(), "0%");
    ch.sendLevels[0]->setParam(0, 0.306f);
    EXPECT_STREQ(ch.sendLevels[0]->paramText(0).asChar(), "31%");
}

/// Trim is 4 to the power of its value; then the inserts in order, each blended by its wet share.
TEST(COutputChannel, FXIsTrimThenInsertsEachByItsWetShare) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    COutputChannel* ch = signal->output();
    ch->trim = 0.5f; // doubles
    auto* first = new GainComp(f.host);
    first->gain = 3.0f;
    auto* second = new GainComp(f.host);
    second->offset = 1.0f;
    f.addInsert(ch, first)->wet = 0.25f;
    f.addInsert(ch, new CComp(f.host)); // without channels: passed by
    f.addInsert(ch, second);
    f.block(64);
    const float behindFirst = 2 * 3 * 0.25f + 2 * 0.75f;
    for (const float x : {ch->bufL[0], ch->bufR[63]}) EXPECT_NEAR(x, behindFirst + 1, 1e-5);
    EXPECT_NEAR(first->output()->peakL, behindFirst, 1e-5);
    EXPECT_EQ(first->ownerChannel, ch);
    EXPECT_EQ(first->listKind, listInsert);

    second->wet = 0.0f;
    f.block(64);
    EXPECT_NEAR(ch->bufL[0], behindFirst, 1e-5) << "a dry insert leaves the sound";
}

TEST(COutputChannel, InsertGetsTheEventsOfItsComponentInOrder) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    auto* insert = f.addInsert(signal->output(), new GainComp(f.host));
    for (int i = 0; i < 3; ++i) signal->moves.push_back({double(i), insert, i, 0.5f});
    f.block(64);
    CMIDIQ* port = insert->inPort();
    ASSERT_EQ(port->count, 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(port->events[i].param, i);
}

TEST(COutputChannel, CopyTakesStripInsertsAndSendsButSoloOnlyWithAllSettings) {
    StripFixture f;
    f.addBus();
    COutputChannel from(f.out), toCopy(f.out), toSettings(f.out);
    from.setParam(0, 0.25f);
    from.setParam(1, 0.9f);
    from.setParam(2, 1);
    from.solo = 1;
    from.trim = -0.5f;
    from.channels = 1;
    from.sendLevels[0]->level = 0.5f;
    from.sendLevels[7]->level = 0.75f; // of a bus that is not there
    auto* insert = new GainComp(f.host);
    insert->gain = 5;
    f.addInsert(&from, insert)->wet = 0.125f;
    insert->enabled = 0;
    f.addInsert(&from, new CComp(f.host)); // cannot be copied, and has to be survived
    toCopy.copy(&from);
    toSettings.copySettings(&from);
    for (COutputChannel* to : {&toCopy, &toSettings}) {
        EXPECT_EQ(to->vol, 0.25f);
        EXPECT_FLOAT_EQ(to->pan, 0.8f);
        EXPECT_EQ(to->mute, 1);
        EXPECT_EQ(to->trim, -0.5f);
        EXPECT_EQ(to->sendLevels[0]->level, 0.5f);
        ASSERT_EQ(to->inserts.getCount(), 1);
        auto* twin = static_cast<GainComp*>(to->inserts.items(0));
        EXPECT_EQ(twin->gain, 5);
        EXPECT_EQ(twin->wet, 0.125f);
        EXPECT_EQ(twin->enabled, 0);
    }
    EXPECT_EQ(toCopy.solo, 0);
    EXPECT_EQ(toSettings.solo, 1);
    EXPECT_EQ(toCopy.channels, 2);
    EXPECT_EQ(toSettings.channels, 1);
    EXPECT_EQ(toCopy.sendLevels[7]->level, 0.0f);
    EXPECT_EQ(toSettings.sendLevels[7]->level, 0.75f);
}

TEST(COutputChannel, MetersFallInTwentyPasses) {
    COutputChannel ch(nullptr);
    ch.peakL = 1.0f;
    for (int i = 0; i < 19; ++i) ch.peakFadeout();
    EXPECT_NEAR(ch.peakL, 0.05f, 1e-5);
    ch.peakFadeout();
    ch.peakFadeout();
    EXPECT_GE(ch.peakL, 0.0f);
    EXPECT_NEAR(ch.peakL, 0.0f, 1e-5);
}

} // namespace
