#include "MixerFixture.h"
#include "ProjectMask.h"
#include "SentEvents.h"

#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CMixer.h"
#include "engine/DeviceComps.h"
#include "engine/MixScene.h"
#include "gui/access/LiveTree.h"
#include "gui/controls/CButton.h"
#include "mixer/StripControls.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/TrackRouting.h"

#include <cmath>
#include <fstream>

/// What is done in the mixer, and what it leaves in the project.
class MixerTest : public MixerFixture {};

TEST_F(MixerTest, StripsStandBySectionAndFollowTheGraph) {
    startWith(2);
    addTrackInstrument(seq(), seq()->addTrack(trackMIDI, seq()->getProg(), nullptr)->track,
                       nullptr);
    static_cast<CTrack*>(seq()->tracks.last())->id = "keys";
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

/// A fader under the mouse does not follow what plays, others do.
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

TEST_F(MixerTest, InsertsComeGoMoveAndAreCopied) {
    startWith(2);
    for (const auto& keys :
         {std::vector<std::string>{"Down", "Down", "Return"}, {"Up", "Up", "Up", "Return"}}) {
        inMenu(keys);
        clickOn(on("a", "insert", out("a")->inserts.getCount()));
        EXPECT_TRUE(loaded());
    }
    EXPECT_EQ(inserts("a"), "Reverb Compressor ");
    auto* reverb = static_cast<CEffect*>(out("a")->inserts.first());
    EXPECT_LT(reverb->wet, 1.0f) << "the sound itself would be gone";
    // The light, and how much of it is heard.
    mouseTo(on("a", "insert"), 7, 9);
    act({"click", "1"});
    EXPECT_EQ(reverb->enabled, 0);
    focus(on("a", "insert"));
    for (const char* k : {"6", "5", "Return", "ctrl+Return"}) key(k);
    EXPECT_FLOAT_EQ(reverb->wet, 0.65f);
    EXPECT_NE(reverb->enabled, 0);
    // By a drag: to another place, to another strip, as a copy.
    drag(on("a", "insert", 1), on("a", "insert", 0), 0, 0);
    EXPECT_EQ(inserts("a"), "Compressor Reverb ");
    drag(on("a", "insert", 1), on("b", "insert", 0), 0, 0);
    EXPECT_EQ(inserts("a") + "| " + inserts("b"), "Compressor | Reverb ");
    EXPECT_EQ(reverb->ownerChannel, out("b"));
    drag(on("b", "insert", 0), on("a", "insert", 0), 0, 0, "ctrl");
    EXPECT_EQ(inserts("a") + "| " + inserts("b"), "Reverb Compressor | Reverb ");
    EXPECT_FLOAT_EQ(static_cast<CComp*>(out("a")->inserts.first())->wet, 0.65f);
    key("ctrl+z");
    EXPECT_TRUE(loaded());
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return inserts("a") == "Compressor Reverb "; })) << inserts("a");
    // By keys.
    focus(on("a", "insert", 1));
    key("alt+Up");
    EXPECT_TRUE(pumpUntil([&] { return inserts("a") == "Reverb Compressor "; }));
    EXPECT_EQ(page()->keyCtrl, on("a", "insert", 0));
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return inserts("a") == "Compressor "; })) << inserts("a");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return inserts("a") == "Reverb Compressor "; }));
}

TEST_F(MixerTest, InputsOfTracksAreChosen) {
    startWith(2);
    const auto source = [&](const char* name) {
        return trackSource(seq(), strip(name)->strip().track);
    };
    const auto choose = [&](const std::vector<std::string>& keys) {
        inMenu(keys);
        clickOn(on("a", "source"));
    };
    COutputChannel* in = host->getAudioIn()->output();
    EXPECT_EQ(source("a"), in);
    panel()->choose(*strip("a"), 0);
    panel()->choose(*strip("b"), modControl);
    choose({"Home", "Down", "Return"});
    EXPECT_EQ(source("a"), nullptr);
    EXPECT_EQ(source("b"), nullptr);
    choose({"End", "Return"});
    EXPECT_EQ(strip("b")->strip().track->recChs, 1);
    for (int i = 0; i < 2; i++) key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return source("a") == in && source("b") == in; }));
    EXPECT_EQ(strip("b")->strip().track->recChs, 2);
}

TEST_F(MixerTest, SendsRoutesGroupsAndNames) {
    startWith(3);
    host->addSendClicked();
    ASSERT_TRUE(pumpUntil([&] { return strip("Send") && on("b", "send"); }));
    settle();
    CCtrl* send = on("b", "send");
    drag(send, send, send->width / 4, 0);
    EXPECT_NEAR(out("b")->sendLevels[0]->level, 0.25, 0.02);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return out("b")->sendLevels[0]->level == 0.0f; }));
    // Two of them into a group.
    panel()->choose(*strip("a"), 0);
    panel()->choose(*strip("c"), modControl);
    key("ctrl+g");
    ASSERT_TRUE(pumpUntil([&] { return strip("Group") != nullptr; }));
    CComp* group = strip("Group")->strip().comp;
    const auto leads = [&](const char* name) { return stripTarget(host.get(), out(name)); };
    EXPECT_EQ(leads("a"), group);
    EXPECT_EQ(leads("b"), host->getAudioOut());
    EXPECT_EQ(leads("c"), group);
    EXPECT_EQ(leads("Group"), host->getAudioOut());
    // One of them elsewhere, both as they are selected.
    inMenu({"Home", "Return"});
    clickOn(on("c", "target"));
    EXPECT_TRUE(loaded());
    EXPECT_EQ(leads("a"), host->getAudioOut());
    EXPECT_EQ(leads("c"), host->getAudioOut());
    const auto targets = stripTargets(host.get(), out("Group"));
    EXPECT_EQ(std::ranges::find(targets, group), targets.end()) << "it would feed itself";
    // A name, of a track and of a group, by a double click and by the key.
    for (const char* name : {"b", "Group"}) {
        mouseTo(strip(name), 40, 10);
        act({"click", "--repeat", "2", "--delay", "50", "1"});
        EXPECT_TRUE(pumpUntil([&] { return page()->keyCtrl && page()->keyCtrl->id == "name"; }));
        act({"type", "--delay", "2", "New"});
        key("Return");
        EXPECT_TRUE(pumpUntil([&] { return strip("New") != nullptr; })) << names();
        EXPECT_EQ(on("New", "mute")->spokenName, "Mute, New");
        key("ctrl+z");
        EXPECT_TRUE(pumpUntil([&] { return strip(name) != nullptr; })) << names();
    }
    panel()->choose(*strip("Send"), 0);
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return host->sends.empty() && !strip("Send"); }));
    panel()->choose(*strip("Audio Out"), 0);
    key("Delete");
    EXPECT_TRUE(loaded());
    EXPECT_TRUE(strip("Audio Out")) << "there is one output at least";
    panel()->choose(*strip("b"), 0);
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return tracks() == 2; }));
}

TEST_F(MixerTest, WheelsAndKeysGoAlongTheStrips) {
    startWith(20);
    const CCtrl* first = strip("Audio In");
    const auto place = [&] { return page()->controlPos(first); };
    const CPoint start = place();
    mouseTo(panel(), 300, 100);
    act({"click", "5"});
    EXPECT_TRUE(pumpUntil([&] { return place().x < start.x; }));
    EXPECT_EQ(place().y, start.y);
    // What fits goes nowhere; over the last pixels at the right it is up and down.
    win->move(0, 0, wide, 400);
    settle();
    const CPoint low = place();
    mouseTo(panel(), panel()->width - 10, 100);
    act({"click", "5"});
    EXPECT_TRUE(pumpUntil([&] { return place().y < low.y; }));
    EXPECT_EQ(place().x, low.x);
    EXPECT_EQ(page()->controlPos(strip("Audio Out")).x + strip("Audio Out")->width,
              panel()->width - 14)
        << "the outputs stay";
    win->move(0, 0, wide, high);
    settle();
    focus(strip("a"));
    for (const char* k : {"Down", "Down", "Down", "Right"}) key(k);
    EXPECT_EQ(page()->keyCtrl, on("b", "mode"));
    for (int i = 0; i < 15; i++) key("Right");
    EXPECT_EQ(page()->keyCtrl, on("q", "mode"));
    EXPECT_FALSE(page()->keyCtrl->visibleRect().empty()) << "it comes into view";
    EXPECT_EQ(on("q", "volume")->tabStop, true);
    EXPECT_EQ(on("a", "volume")->tabStop, false);
    // Everything has a name, and can be reached along its strip.
    LiveTree tree(app.get());
    for (const CCtrl* stop : strip("q")->stops()) {
        const std::string name = tree.describe(tree.idOf(stop)).name;
        EXPECT_TRUE(stop == strip("q") || name.find(", q") != std::string::npos)
            << stop->id.asChar() << ": " << name;
    }
    EXPECT_EQ(tree.describe(tree.idOf(on("q", "volume"))).name, "Volume, q");
}

TEST_F(MixerTest, FiltersShowWhatIsMeant) {
    startWith(3);
    addTrackInstrument(seq(), seq()->addTrack(trackMIDI, seq()->getProg(), nullptr)->track,
                       nullptr);
    static_cast<CTrack*>(seq()->tracks.last())->id = "keys";
    seq()->songNotices.raise(SeqNotice::tracks);
    host->addSendClicked();
    const auto show = [&](const std::vector<std::string>& keys, const std::string& wanted) {
        inMenu(keys);
        clickOn(button("filter"));
        EXPECT_TRUE(pumpUntil([&] { return names() == wanted; })) << names();
    };
    const std::string all = "Audio In a b c keys Send Audio Out ";
    ASSERT_TRUE(pumpUntil([&] { return names() == all; }));
    key("ctrl+f");
    act({"type", "--delay", "2", "E"});
    EXPECT_TRUE(pumpUntil([&] { return names() == "keys Send Audio Out "; })) << names();
    key("BackSpace");
    key("Escape");
    EXPECT_TRUE(pumpUntil([&] { return names() == all; }));
    panel()->choose(*strip("a"), 0);
    panel()->choose(*strip("keys"), modControl);
    key("ctrl+g");
    ASSERT_TRUE(pumpUntil([&] { return strip("Group") != nullptr; }));
    host->values->set(levelOf(out("b")->sendLevels[0]), 0.5);
    panel()->choose(*strip("Group"), 0);
    show({"End", "Up", "Return"}, "a keys Group Audio Out ");
    show({"Home", "Return"}, "Audio In a b c keys Group Send Audio Out ");
    panel()->choose(*strip("Send"), 0);
    show({"End", "Up", "Return"}, "b Send Audio Out ");
    panel()->choose(*strip("b"), 0);
    show({"End", "Return"}, "b Audio Out ");
    show({"Home", "Down", "Return"}, "Audio Out ");
    for (auto* t : each<CTrack>(seq()->tracks))
        if (t->id == "c") t->output()->peakL = 0.5f;
    EXPECT_TRUE(pumpUntil([&] { return names() == "c Audio Out "; })) << names();
}

TEST_F(MixerTest, ScenesBringBackWhatIsAsked) {
    startWith(2);
    host->addSendClicked();
    ASSERT_TRUE(pumpUntil([&] { return strip("Send") != nullptr; }));
    auto* rack = static_cast<CEffect*>(addInsert(out("a"), fxChorus, -1));
    ValueDoor& door = *host->values;
    const auto set = [&](double to) {
        door.set(faderOf(out("a")), {to, 1.0});
        door.set(panOf(out("b")), to);
        door.set(muteOf(out("b")), 1.0);
        door.set(levelOf(out("a")->sendLevels[0]), to);
        door.set(eqGainOf(out("b"), 2), to * 10);
        door.set(parameterOf(rack, paramWet), to);
    };
    const auto now = [&] {
        return std::vector<double>{
            double(out("a")->vol),         double(out("b")->pan),
            double(out("b")->mute),        double(out("a")->sendLevels[0]->level),
            double(out("b")->eq[2]->gain), double(rack->wet)};
    };
    const auto usual = now();
    set(0.25);
    const auto kept = now();
    inMenu({"Home", "Return"});
    clickOn(button("scenes"));
    ASSERT_EQ(mixer().scenes.getCount(), 1);
    set(0.5);
    door.set(muteOf(out("b")), 0.0);
    auto other = now();
    const int before = steps();
    inMenu({"Home", "Return"});
    clickOn(button("scenes"));
    EXPECT_EQ(now(), kept);
    EXPECT_EQ(steps(), before + 1);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return now() == other; }));
    // Levels alone, of the selected strips alone.
    panel()->choose(*strip("a"), 0);
    for (const auto& keys : {std::vector<std::string>{"End", "Return"},
                             {"End", "Up", "Right", "Down", "Return"},
                             {"End", "Up", "Right", "Down", "Down", "Return"},
                             {"End", "Up", "Right", "Down", "Down", "Down", "Return"},
                             {"End", "Up", "Right", "Down", "Down", "Down", "Down", "Return"},
                             {"Home", "Return"}}) {
        inMenu(keys);
        clickOn(button("scenes"));
    }
    other[0] = kept[0];
    EXPECT_EQ(now(), other) << "only the fader of a";
    // Two states to compare.
    clickOn(button("state", 1));
    EXPECT_EQ(now(), other);
    set(0.75);
    const auto second = now();
    clickOn(button("state", 0));
    EXPECT_EQ(now(), other);
    clickOn(button("state", 1));
    EXPECT_EQ(now(), second);
    // Scenes are of the project, and forget strips that have gone for good.
    const std::string path = at("scenes.qv");
    std::ofstream(path) << "old";
    host->projectFile = path.c_str();
    ASSERT_TRUE(win->flows->saveClicked());
    ASSERT_TRUE(load(kindFile, path.c_str()));
    ASSERT_TRUE(pumpUntil([&] { return page() && strip("a") && strip("b"); }));
    ASSERT_EQ(mixer().scenes.getCount(), 1);
    rack = static_cast<CEffect*>(out("a")->inserts.first());
    mixer().sceneAt(0)->recall(host.get(), sceneAll, {}, "All");
    EXPECT_EQ(now(), kept);
    const int strips = mixer().sceneAt(0)->count();
    deleteTracks(seq(), {static_cast<CTrack*>(seq()->tracks.items(0))});
    panel()->follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), strips) << "it may come back";
    host->undoClear();
    panel()->scenes.follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), strips - 1);
    EXPECT_NE(usual, kept);
}

TEST_F(MixerTest, EqualiserOpensLarge) {
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

TEST_F(MixerTest, LoudnessOfTheOutputIsToldAndReset) {
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

TEST_F(MixerTest, ProgramsKeepSectionsAndTheProjectKeepsAll) {
    startWith(2);
    mixer().addProg();
    clickOn(button("section", 0));
    EXPECT_EQ(names(), "a b Audio Out ");
    key("8");
    EXPECT_TRUE(pumpUntil([&] { return names() == "Audio In a b Audio Out "; }));
    key("9");
    EXPECT_TRUE(pumpUntil([&] { return names() == "a b Audio Out "; }));
    mixer().duplicateProg();
    EXPECT_EQ(mixer().progs.getCount(), 3);
    EXPECT_EQ(mixer().getProg(-1)->sh, 30);
    mixer().deleteProg();
    EXPECT_EQ(mixer().progs.getCount(), 2);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return mixer().progs.getCount() == 3; }));
    host->values->set(soloSafeOf(out("a")), 1.0);
    panel()->choose(*strip("b"), 0);
    key("n");
    EXPECT_LT(strip("b")->width, strip("a")->width);
    mouseTo(on("b", "mode"), 5, 5);
    act({"click", "1"});
    mouseTo(on("a", "mode"), on("a", "mode")->width - 5, 5);
    act({"click", "1"});
    EXPECT_TRUE(on("a", "eq")->visible);
    // Saved and opened again: page, program, widths and what shows in place of the inserts.
    const std::string path = at("kept.qv");
    std::ofstream(path) << "old";
    host->projectFile = path.c_str();
    ASSERT_TRUE(win->flows->saveClicked());
    ASSERT_TRUE(load(kindEmpty));
    EXPECT_EQ(page(), nullptr);
    ASSERT_TRUE(load(kindFile, path.c_str()));
    ASSERT_TRUE(pumpUntil([&] { return page() != nullptr; }));
    EXPECT_EQ(names(), "a b Audio Out ");
    EXPECT_LT(strip("b")->width, strip("a")->width);
    EXPECT_TRUE(on("a", "eq")->visible);
    EXPECT_FALSE(on("b", "eq")->visible);
    EXPECT_EQ(out("a")->soloSafe, 1);
    EXPECT_EQ(out("b")->soloSafe, 0);
}

/// Ten thousand drags, presses, turns and keys on whatever strips there are, and edits of their
/// inserts, buses and groups: all taken back, and done again.
TEST_F(MixerTest, RandomGesturesCanBeUndone) {
    startWith(4);
    unsigned seed = 7;
    const auto upTo = [&seed](int n) {
        seed = seed * 1664525u + 1013904223u;
        return int((seed >> 16) % unsigned(n));
    };
    const auto content = [this] {
        host->settle();
        host->idle();
        return projectContent(host.get(), &mixer());
    };
    const auto where = [&](const std::string& other) {
        const std::string now = content();
        size_t at = 0;
        while (at < now.size() && at < other.size() && now[at] == other[at]) at++;
        return blockAt(now, at);
    };
    const std::string first = content();
    const int begun = host->undoIndex;
    const unsigned held[] = {0, 0, 0, ShiftMask, ControlMask};
    const KeySym keys[] = {XK_Delete, XK_Prior, XK_Next, XK_Home,
                           XK_Right,  XK_Down,  XK_5,    XK_Return};
    for (int i = 0; i < 10000 && !HasFailure(); i++) {
        SentEvents hand(app.get());
        hand.held = held[upTo(5)];
        panel()->follow();
        const auto& strips = panel()->strips();
        CMixerStrip* strip = strips[size_t(upTo(int(strips.size())))];
        COutputChannel* ch = strip->strip().channel;
        std::vector<CCtrl*> targets;
        for (CCtrl* c : strip->stops()) // what opens menus would wait
            if (!(c->id == "insert") && !(c->id == "source") && !(c->id == "target") &&
                !(c->id == "eq"))
                targets.push_back(c);
        CCtrl* target = targets[size_t(upTo(int(targets.size())))];
        const CPoint in = page()->controlPos(target);
        const CPoint middle = asPoint(in.x + target->width / 2, in.y + target->height / 2);
        if (page()->controlAtPos(middle.x, middle.y) != target) continue; // out of view
        const auto place = [&] {
            return asPoint(in.x + upTo(target->width + 20) - 10,
                           in.y + upTo(target->height + 60) - 30);
        };
        const int what = upTo(16);
        if (what < 8) {
            hand.press(page(), middle, Button1);
            for (int k = upTo(4); k > 0; k--) hand.move(page(), place());
            if (upTo(6) == 0) hand.key(win.get(), XK_Escape);
            hand.release(page(), place(), Button1);
        } else if (what < 10) {
            hand.held = ControlMask;
            hand.wheel(page(), middle, upTo(2) ? Button4 : Button5);
        } else if (what < 11) {
            page()->setKeyCtrl(target);
            hand.held = 0;
            hand.key(win.get(), keys[upTo(8)]);
        } else if (what < 13) {
            auto* insert = static_cast<CComp*>(ch->inserts.first());
            auto* other = strips[size_t(upTo(int(strips.size())))]->strip().channel;
            if (!insert)
                addInsert(ch, upTo(effectKindCount), 0);
            else if (upTo(3))
                upTo(2) ? void(moveInsert(ch, insert, other, upTo(3)))
                        : void(copyInsert(insert, other, -1));
            else
                removeInsert(ch, insert);
        } else if (what < 14) {
            const char* const actions[] = {"addsend", "addgroup", "groupstrips", "unsolo",
                                           "solosafe"};
            if (strips.size() < 12) win->runAction(win->getAction(actions[upTo(5)]));
        } else if (what < 15) {
            upTo(2) ? panel()->scenes.compare(upTo(2)) : mixer().addScene();
        } else {
            win->runAction(win->getAction(upTo(3) ? "undo" : "redo"));
        }
        host->settle();
        host->idle();
        app->paintFrame();
    }
    host->values->end();
    const std::string last = content();
    const int end = host->undoIndex;
    EXPECT_GT(end - begun, 1000) << "hardly anything was done";
    while (host->undoIndex > begun) host->undoClicked(), host->settle();
    EXPECT_TRUE(content() == first) << where(first);
    while (host->undoIndex < end) host->redoClicked(), host->settle();
    EXPECT_TRUE(content() == last) << where(last);
}
