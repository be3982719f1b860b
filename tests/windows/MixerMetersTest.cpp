#include "Blocks.h"
#include "BusyComp.h"
#include "MixerFixture.h"

#include "common/fx/CEQ.h"
#include "engine/DeviceComps.h"
#include "sequencer/edit/TrackEdits.h"

#include <cmath>

/// What the mixer tells of the sound, and of what it costs.
class MixerMetersTest : public MixerFixture {};

TEST_F(MixerMetersTest, EqualiserOpensLarge) {
    startWith(2);
    for (const char* name : {"a", "b"}) {
        mouseTo(on(name, "mode"), on(name, "mode")->width - 5, 5);
        act({"click", "1"});
    }
    ASSERT_TRUE(pumpUntil([&] { return on("b", "eq")->visible; }));
    clickOn(on("b", "eq"), "3");
    for (const auto* band : out("b")->eq) EXPECT_EQ(band->active, 1);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out("b")->eq[0]->active == 0; })) << "all in one step";
    clickOn(on("b", "eq"));
    CWin* eq = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        for (auto* w : each<CWin>(app->windows))
            if (w->id == "Equaliser, b") eq = w;
        return eq && eq->hasFocus();
    }));
    const auto part = [&](const char* id, int number) {
        for (auto* c : each<CCtrl>(eq->clientGroup->controls))
            if (c->id == id && number-- == 0) return c;
        return static_cast<CCtrl*>(nullptr);
    };
    clickOn(part("power", 1));
    EXPECT_EQ(out("b")->eq[1]->active, 1);
    focus(part("freq", 1));
    for (const char* k : {"4", "4", "0", "Return"}) key(k);
    EXPECT_FLOAT_EQ(out("b")->eq[1]->frequency, 440.0f);
    // Equal ways are equal ratios.
    CCtrl* freq = part("freq", 2);
    drag(freq, freq, freq->width / 3, 0);
    EXPECT_NEAR(out("b")->eq[2]->frequency,
                800.0 * std::pow(1000.0, double(freq->width / 3) / freq->width), 1.0);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out("b")->eq[2]->frequency == 800.0f; }));
    // A band that is moved is meant to be heard.
    CCtrl* curve = part("curve", 0);
    curve->win->setKeyCtrl(curve);
    for (const char* k : {"3", "Up"}) key(k);
    EXPECT_EQ(out("b")->eq[2]->active, 1);
    EXPECT_GT(out("b")->eq[2]->gain, 0.0f);
    deleteTracks(seq(), {strip("b")->strip().track});
    EXPECT_TRUE(pumpUntil([&] { return !strip("b") && !app->windows.contains(eq); }))
        << "it goes with its strip";
}

TEST_F(MixerMetersTest, LoudnessOfTheOutputIsToldAndReset) {
    startWith(1);
    auto* output = static_cast<CAudioOut*>(host->getAudioOut());
    ASSERT_TRUE(pumpUntil([&] { return output->loudness.measures(); }));
    std::vector<float> tone(44100);
    for (size_t i = 0; i < tone.size(); i++)
        tone[i] = float(0.1 * std::sin(2 * 3.14159265 * 1000.0 * double(i) / 44100));
    output->loudness.process(tone.data(), tone.data(), int(tone.size()));
    const auto told = [&](const char* id) {
        Description d;
        on("Audio Out", id)->describe(d, Accessible::wholeCtrl);
        return d.text;
    };
    EXPECT_TRUE(pumpUntil([&] { return told("loudness") == "-20.0 LUFS"; })) << told("loudness");
    EXPECT_EQ(told("truepeak"), "-20.0 dBTP");
    clickOn(on("Audio Out", "loudness"));
    EXPECT_EQ(told("loudness"), "-inf LUFS");
    EXPECT_EQ(told("truepeak"), "-inf dBTP");
    EXPECT_TRUE(pumpUntil([&] { return out("a")->powerWanted != 0; }));
    COutputChannel* shown = out("a");
    page()->hide();
    EXPECT_FALSE(output->loudness.measures()) << "for nobody";
    EXPECT_EQ(shown->powerWanted, 0);
}

/// An eighth of a block's time at least is told of the strip whose insert takes it, and of no
/// other.
TEST_F(MixerMetersTest, StripsTellWhatTheyCost) {
    startWith(2);
    EXPECT_FALSE(on("a", "stripload")->visible);
    panel()->showRows(rowsLoad, true);
    auto* busy = new BusyComp(host.get());
    busy->init();
    busy->createBuffers(host->frames);
    {
        const GraphHold hold(host.get());
        out("a")->inserts.add(busy);
    }
    const auto told = [&](const char* name) {
        Description d;
        on(name, "stripload")->describe(d, Accessible::wholeCtrl);
        return std::atof(d.text.c_str());
    };
    EXPECT_TRUE(pumpUntil([&] {
        runBlocks(host.get(), 16);
        return told("a") >= 12.4;
    })) << told("a");
    EXPECT_LT(told("b"), told("a") / 2);
}
