#include "Blocks.h"
#include "BusyComp.h"
#include "MixerFixture.h"

#include "common/fx/CEQ.h"
#include "engine/StripMeters.h"
#include "mixer/CEqView.h"
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
        for (auto* w : app->windows)
            if (w->id == "Equaliser, b") eq = w;
        return eq && eq->hasFocus();
    }));
    const auto part = [&](const char* id, int number) {
        for (auto* c : eq->clientGroup->controls)
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
    Loudness& loudness = host->getAudioOut()->output()->meters().loudness;
    ASSERT_TRUE(pumpUntil([&] { return loudness.measures(); }));
    std::vector<float> tone(44100);
    for (size_t i = 0; i < tone.size(); i++)
        tone[i] = float(0.1 * std::sin(2 * 3.14159265 * 1000.0 * double(i) / 44100));
    loudness.process(tone.data(), tone.data(), int(tone.size()));
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
    // Of another strip only where that is asked for.
    EXPECT_EQ(shown->measured(), nullptr);
    panel()->showRows(rowsLoudness, true);
    ASSERT_TRUE(pumpUntil([&] { return shown->measured() != nullptr; }));
    shown->meters().loudness.process(tone.data(), tone.data(), int(tone.size()));
    EXPECT_TRUE(pumpUntil([&] {
        Description d;
        on("a", "loudness")->describe(d, Accessible::wholeCtrl);
        return d.text == "-20.0 LUFS";
    }));
    panel()->showRows(rowsLoudness, false);
    EXPECT_FALSE(shown->meters().loudness.measures());
    EXPECT_TRUE(loudness.measures());
    page()->hide();
    EXPECT_FALSE(loudness.measures()) << "for nobody";
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

/// A tone stands out in the large equaliser at its place, until the window is closed.
TEST_F(MixerMetersTest, TheLargeEqualiserShowsTheSpectrum) {
    startWith(1);
    panel()->openEq(strip("a")->strip());
    settle();
    StripMeters& meters = out("a")->meters();
    ASSERT_EQ(meters.samples, 1);
    std::vector<float> tone(4096);
    for (size_t i = 0; i < tone.size(); i++)
        tone[i] = float(0.5 * std::sin(2 * 3.14159265 * 1000.0 * double(i) / 44100));
    meters.takeEqualised(tone.data(), tone.data(), int(tone.size()));
    const auto* view = static_cast<CEqView*>(nullptr);
    for (auto* w : app->windows)
        for (auto* c : w->clientGroup->controls)
            if (c->id == "curve") view = static_cast<CEqView*>(c);
    ASSERT_TRUE(view);
    const auto level = [&](double hz) { // of the columns on both sides of it
        const auto& levels = *view->curve.spectrum;
        const size_t at = size_t(view->curve.FreqToScreen(hz));
        return at < levels.size() ? std::max(levels[at - 1], levels[at]) : -200.0;
    };
    EXPECT_TRUE(pumpUntil([&] { return level(1000) > -9.0; })) << level(1000); // 20 lg 0.5 is -6
    EXPECT_LT(level(1000), -6.0 + 0.1);
    EXPECT_LT(level(4000), -60.0);
    view->win->hide();
    EXPECT_EQ(meters.samples, 0);
}
