#include "MixerFixture.h"

#include "effects/CEffect.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/TrackRouting.h"

/// Where the sound of strips comes from and goes, and what it goes through.
class MixerRoutesTest : public MixerFixture {
protected:
    static CCtrl* inGroup(CGroup* group, const char* id) {
        for (auto* c : group->controls) {
            if (c->id == id) return c;
            const bool holds = c->category == catGroup || c->category == catGroupLike;
            if (CCtrl* found = holds ? inGroup(static_cast<CGroup*>(c), id) : nullptr) return found;
        }
        return nullptr;
    }
};

TEST_F(MixerRoutesTest, InsertsComeGoMoveAndAreCopied) {
    startWith(2);
    for (const auto& keys :
         {std::vector<std::string>{"Down", "Down", "Return"}, {"c", "c", "Return"}}) {
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
    EXPECT_FLOAT_EQ(out("a")->inserts.first()->wet, 0.65f);
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

/// By the menu of the slot, the button of the rack's panel and a cable in the graph.
TEST_F(MixerRoutesTest, CompressorsFollowOtherStrips) {
    startWith(3);
    inMenu({"c", "c", "Return"});
    clickOn(on("b", "insert"));
    inMenu({"f", "Right", "a", "a", "Return"}); // behind the audio in
    clickOn(on("b", "insert"), "3");
    auto* rack = static_cast<CEffect*>(out("b")->inserts.first());
    ASSERT_EQ(rack->keyInput().source(), out("a"));
    const GraphModel graph(host.get());
    const int cable = graph.cableOf(static_cast<CObject*>(rack->keyInput().cables.getFirst()));
    ASSERT_GE(cable, 0);
    EXPECT_EQ(cableName(graph, cable), "a to the key of Compressor of b");
    Description d;
    on("b", "insert")->describe(d, CCtrl::wholeCtrl);
    EXPECT_EQ(d.text, "Compressor, on, follows a");
    settle();
    win->openEditor(rack);
    ASSERT_TRUE(loaded());
    CWin* panelWin = win->pages->editorOf(rack);
    CCtrl* button = panelWin ? inGroup(panelWin->clientGroup, "Follow") : nullptr;
    ASSERT_NE(button, nullptr);
    inMenu({"c", "Return"});
    clickOn(button);
    EXPECT_EQ(rack->keyInput().source(), out("c"));
    toggleCable(out("a"), &rack->keyInput().channel);
    EXPECT_EQ(rack->keyInput().source(), out("a"));
    toggleCable(out("b"), &rack->keyInput().channel);
    EXPECT_EQ(rack->keyInput().source(), out("a")) << "it would wait for itself";
    duplicateTracks(seq(), {strip("b")->strip().track});
    ASSERT_TRUE(pumpUntil([&] { return strip("b 2") != nullptr; })) << names();
    EXPECT_EQ(keyInputOf(out("b 2")->inserts.getFirst())->source(), out("a"));
    key("ctrl+z");
    for (COutputChannel* before : {out("c"), out("a"), static_cast<COutputChannel*>(nullptr)}) {
        key("ctrl+z");
        EXPECT_TRUE(pumpUntil([&] { return rack->keyInput().source() == before; }));
    }
}

TEST_F(MixerRoutesTest, InputsOfTracksAreChosen) {
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

TEST_F(MixerRoutesTest, SendsRoutesGroupsAndNames) {
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
    // Its window shows what comes to it.
    win->openEditor(group);
    ASSERT_TRUE(loaded());
    std::string around;
    for (const CMixerStrip* s :
         static_cast<CMixerWin*>(win->pages->editorOf(group))->strips()->strips())
        around += s->name().asChar() + std::string(" ");
    EXPECT_EQ(around, "a c Group Audio Out ");
    win->openEditor(&mixer());
    ASSERT_TRUE(loaded());
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
