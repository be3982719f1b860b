#include "StripFixture.h"
#include "engine/SongClock.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "support/Rows.h"

#include <cmath>

TEST(COutputChannel, FaderStaysWithinItsRange) {
    COutputChannel ch(nullptr);
    for (const auto& [asked, got] : {std::pair{1.5f, 1.0f}, {-2, 0}, {NAN, 0}, {0.25f, 0.25f}}) {
        ch.setVol(asked, false);
        EXPECT_EQ(ch.gain, got) << asked;
    }
}

TEST(COutputChannel, ParametersKeepTheirValuesAndReadAsTexts) {
    COutputChannel ch(nullptr);
    for (const auto& [param, name, value, text] :
         Rows<int, const char*, float, std::string>{{0, "Volume", 0.5f, "-12.04 dB"},
                                                    {0, "Volume", 0, "-inf"},
                                                    {1, "Pan", 0.5f, "<C>"},
                                                    {1, "Pan", 0, "L64"},
                                                    {1, "Pan", 0.75f, "R32"},
                                                    {2, "Mute", 0.5f, "on"},
                                                    {2, "Mute", 0.49f, "off"},
                                                    {3, "EQ1 power", 0.5f, "on"},
                                                    {4, "EQ1 gain", 0, "-24.0 dB"},
                                                    {5, "EQ1 freq", 0.25f, "5015 Hz"},
                                                    {6, "EQ1 Q", 0, "0.1 dB"},
                                                    {7, "EQ2 power", 0.49f, "off"},
                                                    {18, "EQ4 Q", 1, "12.0 dB"},
                                                    {19, "Solo", 1, "on"},
                                                    {20, "", 0, ""},
                                                    {-1, "", 0, ""}}) {
        ch.setParam(param, value);
        EXPECT_EQ(ch.paramText(param).asChar(), text) << param << " at " << value;
        EXPECT_STREQ(COutputChannel::paramName(param).asChar(), name);
        const float kept = text[0] == 'o' ? float(value >= 0.5f) : text.empty() ? 0.0f : value;
        EXPECT_NEAR(ch.param(param), kept, 1e-6) << param;
    }
    EXPECT_EQ(ch.numParams(), 19) << "a copy by parameters leaves solo out";
}

/// A constant signal through all of a strip: trim doubles it, a shelf of 6.02 dB doubles it again,
/// an insert adds to it, those that lack an end are passed by, another is half dry; behind that
/// come pan and fader, meters and the send.
TEST(COutputChannel, StripRunsInItsOrder) {
    StripFixture f;
    COutputChannel* ch = f.addSignal()->output();
    CGroupCh* bus = f.addBus();
    ch->trim = 0.5f;
    ch->setEqGain(3, 6.0206f);
    ch->setEqQ(3, 0.7f);
    ch->setEqPower(3, true);
    ch->setEqGain(1, 24.0f); // off
    auto* adds = f.addInsert(ch, new GainComp(f.host, 1.0f, 1.0f));
    CComp* deaf = f.addInsert(ch, new CComp(f.host));
    deaf->outputs.add(new COutputChannel(deaf));
    CComp* dumb = f.addInsert(ch, new CComp(f.host));
    dumb->inputs.add(new CInputChannel(dumb));
    auto* triples = f.addInsert(ch, new GainComp(f.host, 3.0f));
    triples->wet = 0.25f;
    ch->vol = ch->pan = ch->sendLevels[0]->level = 0.5f;
    for (int i = 0; i < 40; ++i) f.block();
    ch->holdR = adds->output()->peakL = 0.0f;
    f.block();
    const double left = 5 * (0.25 * 3 + 0.75) * 0.25 * 0.5, right = left / 0.5 * 1.25;
    EXPECT_TRUE(adds->ownerChannel == ch && adds->listKind == listInsert && ch->peakR == 1.0f);
    for (const auto& [got, wanted] : Rows<float, double>{{adds->output()->peakL, 5},
                                                         {ch->bufL[9], left},
                                                         {ch->bufR[255], right},
                                                         {ch->holdR, right},
                                                         {bus->input()->bufL[9], left * 0.25}})
        EXPECT_NEAR(got, wanted, 1e-4);
    triples->wet = 0.0f;
    ch->setEqPower(3, false); // with the next stride of the song
    while (!f.host->clock->due()) f.block();
    f.block();
    EXPECT_NEAR(ch->bufL[9], (2 + 1) * 0.25 * 0.5, 1e-4) << "a dry insert leaves the sound";
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
    EXPECT_LT(msBetween(ch->eqChangeTime, asTimeInMS()), 60000);
    f.host->setRate(96000);
    EXPECT_EQ(ch->eq[0]->rate, 96000.0f);
    f.host->setRate(44100);
}

TEST(COutputChannel, CopyTakesStripInsertsAndSendsButSoloOnlyWithAllSettings) {
    StripFixture f;
    f.addBus();
    COutputChannel from(f.out), toCopy(f.out), toSettings(f.out);
    for (const auto& [param, value] :
         Rows<int, float>{{0, 0.25f}, {1, 0.9f}, {2, 1}, {7, 1}, {12, 0.25f}})
        from.setParam(param, value);
    from.setEqType(1, eqNotch);
    from.solo = 1;
    from.trim = -0.5f;
    from.channels = 1;
    from.sendLevels[0]->level = 0.5f;
    from.sendLevels[7]->level = 0.75f; // of a bus that is not there
    auto* insert = f.addInsert(&from, new GainComp(f.host, 5.0f));
    insert->wet = 0.125f;
    insert->enabled = 0;
    f.addInsert(&from, new CComp(f.host)); // cannot be copied, and has to be survived
    toCopy.copy(&from);
    toSettings.copySettings(&from);
    for (COutputChannel* to : {&toCopy, &toSettings}) {
        for (int i = 0; i < from.numParams(); ++i) EXPECT_NEAR(to->param(i), from.param(i), 1e-6);
        EXPECT_TRUE(to->trim == -0.5f && to->eq[1]->filterType == eqNotch);
        EXPECT_EQ(to->sendLevels[0]->level, 0.5f);
        ASSERT_EQ(to->inserts.getCount(), 1);
        auto* twin = static_cast<GainComp*>(to->inserts.items(0));
        EXPECT_TRUE(twin->gain == 5 && twin->wet == 0.125f && twin->enabled == 0);
        const bool all = to == &toSettings;
        EXPECT_TRUE(to->solo == all && to->channels == (all ? 1 : 2));
        EXPECT_EQ(to->sendLevels[7]->level, all ? 0.75f : 0.0f);
    }
}
