#include "MixerFixture.h"

#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CMixer.h"
#include "engine/MixScene.h"
#include "gui/access/LiveTree.h"
#include "sequencer/edit/TrackEdits.h"

#include <fstream>

/// Which strips show, and how; scenes, and what a project keeps of all that.
class MixerViewTest : public MixerFixture {};

TEST_F(MixerViewTest, WheelsAndKeysGoAlongTheStrips) {
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

TEST_F(MixerViewTest, FiltersShowWhatIsMeant) {
    startWith(3);
    addTrackInstrument(seq(), seq()->addTrack(trackMIDI, seq()->getProg(), nullptr)->track,
                       nullptr);
    seq()->tracks.last()->id = "keys";
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
    for (auto* t : seq()->tracks)
        if (t->id == "c") t->output()->peakL = 0.5f;
    EXPECT_TRUE(pumpUntil([&] { return names() == "c Audio Out "; })) << names();
}

TEST_F(MixerViewTest, ScenesBringBackWhatIsAsked) {
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
    deleteTracks(seq(), {seq()->tracks.items(0)});
    panel()->follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), strips) << "it may come back";
    host->undoClear();
    panel()->scenes.follow();
    EXPECT_EQ(mixer().sceneAt(0)->count(), strips - 1);
    EXPECT_NE(usual, kept);
}

TEST_F(MixerViewTest, ProgramsKeepSectionsAndTheProjectKeepsAll) {
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
