#include "MixerFixture.h"

#include "engine/CMixer.h"
#include "mixer/StripControls.h"
#include "sequencer/edit/StripEdits.h"

#include <cmath>

/// What is done in the mixer, and what it leaves in the project.
class MixerTest : public MixerFixture {};

TEST_F(MixerTest, StripsStandBySectionAndFollowTheGraph) {
    startWith(2);
    addTrackInstrument(seq(), seq()->addTrack(trackMIDI, seq()->getProg(), nullptr)->track,
                       nullptr);
    seq()->tracks.last()->id = "keys";
    seq()->songNotices.raise(SeqNotice::tracks);
    EXPECT_TRUE(pumpUntil([&] { return names() == "Audio In a b keys Audio Out "; })) << names();
    key("ctrl+shift+g");
    EXPECT_TRUE(pumpUntil([&] { return names() == "Audio In a b keys Group Audio Out "; }));
    key("ctrl+shift+e");
    const std::string all = "Audio In a b keys Group Send Audio Out ";
    EXPECT_TRUE(pumpUntil([&] { return names() == all; })) << names();
    EXPECT_TRUE(on("a", "send"));
    // What is hidden leaves the strips, and the choice is kept with the program.
    const char* without[] = {"a b keys Group Send Audio Out ", "Audio In Group Send Audio Out ",
                             "Audio In a b keys Send Audio Out ",
                             "Audio In a b keys Group Audio Out ", "Audio In a b keys Group Send "};
    for (int i = 0; i < 5; i++) {
        clickOn(button("section", i));
        EXPECT_TRUE(pumpUntil([&] { return names() == without[i]; })) << names();
        EXPECT_EQ(mixer().getProg(-1)->sh, 31 & ~(1 << i));
        clickOn(button("section", i));
        EXPECT_TRUE(pumpUntil([&] { return names() == all; }));
    }
    // What leaves the graph leaves the mixer, in the middle of a drag too, and comes back.
    toMiddle(on("Group", "volume"));
    act({"mousedown", "1"});
    mouseTo(on("Group", "volume"), 10, 150);
    deleteComps(host.get(), {strip("Group")->strip().comp});
    mouseTo(panel(), 300, 300);
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return names() == "Audio In a b keys Send Audio Out "; }));
    EXPECT_FALSE(host->values->dragging());
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return names() == all; })) << names();
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out("Group")->vol == 1.0f; }));
}

TEST_F(MixerTest, FaderAndPanByMouseKeysAndNumbers) {
    startWith(3);
    auto* fader = static_cast<CVolFader*>(on("a", "volume"));
    const double room = strip("a")->faderTravel();
    const int before = steps();
    drag(fader, fader, 0, 60, "", true);
    EXPECT_EQ(out("a")->vol, 1.0f);
    EXPECT_EQ(steps(), before);
    drag(fader, fader, 0, 60);
    EXPECT_NEAR(out("a")->vol, 1.0 - 60 / room, 1e-5);
    EXPECT_EQ(steps(), before + 1);
    const float dragged = out("a")->vol;
    // Those that are selected keep their ratio, and stop with the first at its end.
    host->values->set(faderOf(out("b")), {0.5, 1.0});
    clickOn(strip("a"));
    mouseTo(strip("b"), 10, 10);
    act({"keydown", "ctrl"});
    act({"click", "1"});
    act({"keyup", "ctrl"});
    EXPECT_EQ(panel()->state.selection().size(), 2U);
    drag(fader, fader, 0, -400);
    EXPECT_EQ(out("a")->vol, 1.0f);
    EXPECT_NEAR(out("b")->vol, 0.5 / double(dragged), 1e-4);
    EXPECT_EQ(out("c")->vol, 1.0f);
    drag(on("b", "volume"), on("b", "volume"), 0, -400);
    EXPECT_NEAR(out("b")->vol, 0.5 / double(dragged), 1e-4) << "the other is at its end";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out("a")->vol == dragged && out("b")->vol == 0.5f; }));
    panel()->state.unselect();
    // By keys, in decibels.
    focus(fader);
    for (const char* k : {"minus", "6", "Return"}) key(k);
    EXPECT_NEAR(out("a")->vol, std::pow(10.0, -6.0 / 40), 1e-5);
    key("Next");
    EXPECT_NEAR(out("a")->vol, std::pow(10.0, -6.0 / 40) - 0.05, 1e-5);
    key("Delete");
    EXPECT_EQ(out("a")->vol, 1.0f);
    // By the wheel with Control, several turns in one step.
    const int turned = steps();
    toMiddle(fader);
    for (int i = 0; i < 3; i++) act({"keydown", "ctrl", "click", "5", "keyup", "ctrl"});
    EXPECT_NEAR(out("a")->vol, 1.0 - 3 * 0.02, 1e-5);
    act({"keydown", "ctrl", "keydown", "shift", "click", "5", "keyup", "shift", "keyup", "ctrl"});
    EXPECT_NEAR(out("a")->vol, 1.0 - 3.1 * 0.02, 1e-5);
    host->values->end();
    EXPECT_EQ(steps(), turned + 1);
    CCtrl* pan = on("a", "pan");
    drag(pan, pan, 32, 0);
    EXPECT_NEAR(out("a")->pan, 0.5, 0.02);
    drag(pan, pan, 0, 32);
    EXPECT_NEAR(out("a")->pan, 0.0, 0.02) << "down turns to the left";
    focus(pan);
    for (const char* k : {"minus", "3", "2", "Return"}) key(k);
    EXPECT_FLOAT_EQ(out("a")->pan, -0.5f);
    toMiddle(pan);
    act({"click", "--repeat", "2", "--delay", "50", "1"});
    EXPECT_TRUE(pumpUntil([&] { return out("a")->pan == 0.0f; }));
}

TEST_F(MixerTest, FollowsTheEngineButWhatIsHeld) {
    startWith(2);
    auto* fader = on("a", "volume");
    const auto told = [&](const char* name) {
        Description d;
        on(name, "volume")->describe(d, Accessible::wholeCtrl);
        return d.range->now;
    };
    toMiddle(fader);
    act({"mousedown", "1"});
    mouseTo(fader, fader->width / 2, fader->height / 2 + 30);
    const double held = told("a");
    host->setParam(0, 0.0f);
    out("a")->setParam(0, 0.25f);
    out("b")->setParam(0, 0.25f);
    EXPECT_TRUE(pumpUntil([&] { return std::abs(told("b") - 0.25) < 1e-6; }));
    EXPECT_EQ(told("a"), held);
    act({"mouseup", "1"});
    EXPECT_TRUE(pumpUntil([&] { return std::abs(told("a") - double(out("a")->vol)) < 1e-6; }));
    // Peak and light stay until a press, or the fader moves.
    for (const char* id : {"peak", "meter"}) {
        out("b")->holdL = 1.25f;
        EXPECT_TRUE(pumpUntil([&] {
            Description d;
            on("b", "peak")->describe(d, Accessible::wholeCtrl);
            return d.text == "1.9 dB";
        }));
        clickOn(on("b", id));
        EXPECT_EQ(out("b")->holdL, 0.0f) << id;
    }
    out("b")->holdR = 0.5f;
    drag(on("b", "volume"), on("b", "volume"), 0, 20);
    EXPECT_EQ(out("b")->holdR, 0.0f);
}

TEST_F(MixerTest, SwitchesOfOneSeveralAndASwipe) {
    startWith(4);
    const struct {
        const char* id;
        std::function<bool(const MixerStrip&)> on;
    } switches[] = {{"mute", [](const MixerStrip& s) { return s.channel->mute != 0; }},
                    {"solo", [](const MixerStrip& s) { return s.channel->solo != 0; }},
                    {"arm", [](const MixerStrip& s) { return s.track->recArm != 0; }}};
    for (const auto& s : switches) {
        const auto is = [&](const std::string& wanted) {
            std::string now;
            for (const char* name : {"a", "b", "c", "d"})
                now += s.on(strip(name)->strip()) ? '1' : '0';
            EXPECT_EQ(now, wanted) << s.id;
        };
        clickOn(on("b", s.id));
        is("0100");
        drag(on("a", s.id), on("d", s.id), 0, 0, "", true);
        is("0100");
        const int before = steps();
        drag(on("a", s.id), on("d", s.id), 0, 0);
        is("1111");
        EXPECT_EQ(steps(), before + 1);
        key("ctrl+z");
        EXPECT_TRUE(loaded());
        is("0100");
        panel()->choose(*strip("c"), 0);
        panel()->choose(*strip("d"), modControl);
        clickOn(on("d", s.id));
        is("0111");
        clickOn(on("a", s.id));
        is("1111");
        panel()->state.unselect();
    }
    clickOn(button("unsolo"));
    for (const char* name : {"a", "b", "c", "d"}) EXPECT_EQ(out(name)->solo, 0);
    // Safe from solos: by a press with Control, and from the menu.
    act({"keydown", "ctrl"});
    clickOn(on("d", "solo"));
    act({"keyup", "ctrl"});
    EXPECT_EQ(out("d")->soloSafe, 1);
    EXPECT_EQ(out("d")->solo, 0);
    panel()->choose(*strip("d"), 0);
    key("ctrl+alt+s");
    EXPECT_EQ(out("d")->soloSafe, 0);
    // The same by keys, for what is selected.
    panel()->choose(*strip("b"), 0);
    panel()->choose(*strip("c"), modControl);
    for (const char* k : {"m", "s"}) key(k);
    EXPECT_EQ(out("b")->mute, 0);
    EXPECT_EQ(out("c")->solo, 1);
    EXPECT_EQ(out("d")->solo, 0);
    key("shift+s");
    EXPECT_EQ(out("c")->solo, 0);
}
