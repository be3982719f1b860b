#include "StripFixture.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "support/RtTrap.h"

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

TEST(COutputChannel, ParametersKeepTheirValuesAndReadAsTexts) {
    struct Case {
        int param;
        float value;
        const char* text;
    };
    const Case cases[] = {
        {0, 1, "0.00 dB"}, {0, 0.5f, "-12.04 dB"}, {0, 0, "-inf"},        {1, 0.5f, "<C>"},
        {1, 0, "L64"},     {1, 0.75f, "R32"},      {2, 0.5f, "on"},       {2, 0.49f, "off"},
        {3, 0.5f, "on"},   {4, 0, "-24.0 dB"},     {5, 0.25f, "5015 Hz"}, {6, 0, "0.1 dB"},
        {7, 0.49f, "off"}, {8, 0.5f, "0.0 dB"},    {13, 1, "20000 Hz"},   {18, 1, "12.0 dB"},
        {19, 1, "on"},     {19, 0, "off"},         {20, 0, ""},           {-1, 0, ""}};
    COutputChannel ch(nullptr);
    for (const Case& c : cases) {
        ch.setParam(c.param, c.value);
        EXPECT_STREQ(ch.paramText(c.param).asChar(), c.text) << c.param << " at " << c.value;
    }
    const auto isSwitch = [](int i) { return i == 2 || i == 19 || i % 4 == 3; };
    const auto share = [](int i) { return float(i * 7 % 20) / 20; };
    for (int i = 0; i < 20; ++i) ch.setParam(i, share(i));
    for (int i = 0; i < 20; ++i) {
        const float kept = isSwitch(i) ? float(share(i) >= 0.5f) : share(i);
        EXPECT_NEAR(ch.param(i), kept, 1e-6) << i;
    }
    const char* names[] = {"Volume",    "Pan",       "Mute",      "EQ1 power", "EQ1 gain",
                           "EQ1 freq",  "EQ1 Q",     "EQ2 power", "EQ2 gain",  "EQ2 freq",
                           "EQ2 Q",     "EQ3 power", "EQ3 gain",  "EQ3 freq",  "EQ3 Q",
                           "EQ4 power", "EQ4 gain",  "EQ4 freq",  "EQ4 Q",     "Solo"};
    for (int i = 0; i < 20; ++i) EXPECT_STREQ(COutputChannel::paramName(i).asChar(), names[i]);
    EXPECT_EQ(ch.numParams(), 19) << "a copy by parameters leaves solo out";
    ch.sendLevels[0]->setParam(0, 0.306f);
    EXPECT_STREQ(ch.sendLevels[0]->paramText(0).asChar(), "31%");
}

/// A constant signal through all of a strip: trim doubles it, a shelf of 6.02 dB doubles it again,
/// an insert adds to it, another is half dry; behind that come pan and fader, meters and the send.
TEST(COutputChannel, StripRunsInItsOrder) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    CGroupCh* bus = f.addBus();
    COutputChannel* ch = signal->output();
    ch->trim = 0.5f;
    ch->setEqGain(3, 6.0206f);
    ch->setEqQ(3, 0.7f);
    ch->setEqPower(3, true);
    ch->setEqGain(1, 24.0f); // off
    auto* adds = new GainComp(f.host);
    adds->offset = 1.0f;
    f.addInsert(ch, adds);
    f.addInsert(ch, new CComp(f.host)); // without channels: passed by
    auto* triples = new GainComp(f.host);
    triples->gain = 3.0f;
    f.addInsert(ch, triples)->wet = 0.25f;
    ch->vol = 0.5f;
    ch->pan = 0.5f;
    ch->sendLevels[0]->level = 0.5f;
    for (int i = 0; i < 40; ++i) f.block();
    ch->holdR = adds->output()->peakL = 0.0f;
    f.block();
    const double inserted = 5 * (0.25 * 3 + 0.75);
    EXPECT_NEAR(adds->output()->peakL, 5, 1e-4);
    EXPECT_EQ(adds->ownerChannel, ch);
    EXPECT_EQ(adds->listKind, listInsert);
    EXPECT_NEAR(ch->bufL[9], inserted * 0.25 * 0.5, 1e-4);
    EXPECT_NEAR(ch->bufR[255], inserted * 0.25 * 1.25, 1e-4);
    EXPECT_EQ(ch->peakR, 1.0f);
    EXPECT_NEAR(ch->holdR, inserted * 0.25 * 1.25, 1e-4);
    EXPECT_NEAR(bus->input()->bufL[9], inserted * 0.25 * 0.5 * 0.25, 1e-4);
    triples->wet = 0.0f;
    ch->setEqPower(3, false);
    f.block();
    EXPECT_NEAR(ch->bufL[9], (2 + 1) * 0.25 * 0.5, 1e-4) << "a dry insert leaves the sound";
}

TEST(COutputChannel, BandsFollowTheRateAndTheirSetters) {
    StripFixture f(64, 48000);
    COutputChannel* ch = f.addSignal()->output();
    const int forms[] = {2, 1, 1, 0};
    const float centres[] = {10000, 2000, 800, 100};
    for (int k = 0; k < eqBandCount; ++k) {
        EXPECT_EQ(ch->eq[k]->active, 0);
        EXPECT_EQ(ch->eq[k]->filterType, forms[k]);
        EXPECT_EQ(ch->eq[k]->frequency, centres[k]);
        EXPECT_EQ(ch->eq[k]->rate, 48000.0f);
    }
    ch->setEqType(2, eqHighPass);
    ch->setEqFrequency(2, 1e6f);
    f.host->setRate(96000);
    const double w = 2 * 3.14159265358979 * 20000 / 96000, al = std::sin(w) / 0.2;
    EXPECT_NEAR(ch->eq[2]->ready()->b0, (1 + std::cos(w)) / 2 / (1 + al), 1e-8);
    f.host->setRate(44100);
}

/// Automation reaches a band without a call of the system; the clock is read by the idle pass.
TEST(COutputChannel, AutomationOfABandIsNotedByTheNextIdlePass) {
    StripFixture f;
    SignalComp* signal = f.addSignal();
    COutputChannel* ch = signal->output();
    signal->moves = {{0, ch, 3, 1.0f}, {5, ch, 5, 0.25f}};
    rtReset();
    f.block();
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_EQ(ch->eq[0]->active, 1);
    EXPECT_NEAR(ch->eq[0]->frequency, 5015, 0.01);
    EXPECT_EQ(ch->eqChangeTime, 0);
    f.host->idle();
    const int noted = ch->eqChangeTime;
    EXPECT_LT(msBetween(noted, asTimeInMS()), 60000);
    f.host->idle();
    EXPECT_EQ(ch->eqChangeTime, noted) << "once";
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
    from.setParam(7, 1);
    from.setParam(12, 0.25f);
    from.setEqType(1, eqNotch);
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
        EXPECT_EQ(to->eq[1]->active, 1);
        EXPECT_EQ(to->eq[1]->filterType, eqNotch);
        EXPECT_NEAR(to->eq[2]->gain, -12, 1e-5);
        EXPECT_EQ(to->eq[3]->active, 0);
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
    for (int i = 0; i < 22; ++i) {
        EXPECT_NEAR(ch.peakL, std::max(1 - i * 0.05, 0.0), 1e-5);
        ch.peakFadeout();
    }
}

} // namespace
