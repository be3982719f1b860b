#include "ModularFixture.h"
#include "ProjectMask.h"

#include "effects/CEffect.h"
#include "effects/RackEdits.h"
#include "engine/DeviceComps.h"
#include "engine/KeyInput.h"
#include "gui/controls/CButton.h"
#include "project/ProjectFile.h"
#include "sequencer/edit/StripEdits.h"
#include "support/StoredPlaces.h"

namespace {

using ModularCablesTest = ModularFixture;

/// A component from the menu of a cable comes into it; the strong and the faint are chosen in the
/// menu, and change nothing of the project.
TEST_F(ModularCablesTest, CablesHaveAMenuAndCanBeDimmed) {
    startModular();
    CComp* synth = add(compSampler, 300, 60);
    out()->posX = 300, out()->posY = 400;
    view()->rebuild();
    CObject* cable = static_cast<CObject*>(out()->audioCables.items(0));
    menuAt(cableAt(cable), {"Down", "Down", "Right", "Return"}); // Insert, the multi effect
    CComp* effect = comp("Multi Effect");
    ASSERT_TRUE(effect);
    EXPECT_TRUE(areJoined(synth->output(), effect->input()));
    EXPECT_TRUE(areJoined(effect->output(), out()->input()));
    EXPECT_FALSE(areJoined(synth->output(), out()->input()));

    const int before = host->undoIndex;
    const auto faint = [this] {
        app->paintFrame();
        std::string all;
        const auto& graph = view()->graph();
        for (size_t i = 0; i < graph.cables.size(); i++)
            all += std::string(graph.cables[i].midi ? "m" : "a") +
                   (view()->shownNow().faintCables[i] ? "-" : "+");
        return all;
    };
    EXPECT_EQ(faint(), "m+a+a+");
    for (const auto& [action, shown] : {std::pair{"midicables", "m-a+a+"},
                                        {"audiocables", "m-a-a-"},
                                        {"midicables", "m+a-a-"},
                                        {"audiocables", "m+a+a+"}}) {
        win->runAction(win->getAction(action));
        EXPECT_EQ(faint(), shown) << action;
    }
    selectOnly(host.get(), synth);
    win->runAction(win->getAction("othercables"));
    EXPECT_EQ(faint(), "m+a-a+") << "that from the effect is of neither";
    EXPECT_EQ(host->undoIndex, before);
}

/// A cable is muted by a key in one step that a project keeps; what is listened to and metered is
/// no part of it, and ends with the page and the cable.
TEST_F(ModularCablesTest, CablesAreMutedListenedToAndMetered) {
    startModular();
    CComp* synth = add(compSampler, 300, 60);
    out()->posX = 300, out()->posY = 400;
    view()->rebuild();
    auto* cable = out()->audioCables.first();
    auto* notes = static_cast<CObject*>(synth->midiCables.first());
    auto* speaker = static_cast<CAudioOut*>(out());
    click(cableAt(cable));
    ASSERT_EQ(view()->item(), cable);
    key("m");
    EXPECT_EQ(cable->muted, 1);
    EXPECT_EQ(undoName(), "Mute cable");
    view()->setItem(notes);
    key("m");
    ASSERT_TRUE(isMuted(notes));
    const std::string path = at("muted.qv");
    ProjectUi plain;
    ASSERT_TRUE(saveProject({host.get(), &win->flows->mixer, &plain}, path.c_str()));
    undo();
    EXPECT_FALSE(isMuted(notes));
    undo();
    EXPECT_EQ(cable->muted, 0);
    click(cableAt(cable));
    const int before = host->undoIndex;
    key("h");
    key("v");
    EXPECT_EQ(speaker->listened.load(), synth->output());
    ASSERT_TRUE(view()->watched().isMetered(cable));
    EXPECT_TRUE(pumpUntil([&] {
        synth->output()->peakL = 0.5f; // which falls by itself
        return view()->watched().figureOf(cable) == "-6.0 dB";
    }));
    EXPECT_EQ(host->undoIndex, before);
    win->runAction(win->getAction("mixer"));
    EXPECT_TRUE(pumpUntil([&] { return speaker->listened.load() == nullptr; })) << "another page";
    win->runAction(win->getAction("modular"));
    key("h");
    EXPECT_TRUE(pumpUntil([&] { return speaker->listened.load() != nullptr; }));
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return speaker->listened.load() == nullptr; })) << "it is gone";
    EXPECT_EQ(view()->watched().meterCount(), 0u);
    win->options().savePrompt.set(0);
    ASSERT_TRUE(load(kindFile, path.c_str()));
    int muted = 0;
    for (const auto& c : view()->graph().cables) muted += isMuted(c.cable);
    EXPECT_EQ(muted, 2);
}

/// Everything that a project stores of a side chain: the strip it follows, led or chosen, and its
/// cable's mute.
TEST_F(ModularCablesTest, SideChainsAreStoredAsTheyAreSet) {
    startModular();
    CComp* kick = add(compSampler, 300, 60);
    CComp* snare = add(compSampler, 560, 60);
    auto* rack = static_cast<CEffect*>(add(compEffect, 300, 300));
    insertEffect(rack, rack->getProg(), fxGate, 0);
    refresh();
    const auto stored = [&] {
        const std::string all = projectContent(host.get(), &win->flows->mixer);
        const std::string name = "sidechain";
        const size_t block = all.find(name);
        return block == std::string::npos ? "" : all.substr(block, name.size() + 24);
    };
    const auto lead = [&](CComp* from) {
        drag(portAt(from->output()), portAt(&rack->keyInput().channel));
        return stored();
    };
    EXPECT_EQ(stored(), "");
    const std::string byKick = lead(kick);
    EXPECT_EQ(rack->keyInput().source(), kick->output());
    undo();
    EXPECT_EQ(stored(), "");
    const std::string bySnare = lead(snare);
    EXPECT_EQ(differing(byKick, bySnare).size(), 1u) << "the other strip";
    view()->setItem(rack->keyInput().cables.first());
    key("m");
    EXPECT_EQ(differing(bySnare, stored()).size(), 1u) << "the mute";
    undo();
    win->openEditor(rack);
    ASSERT_TRUE(pumpUntil([&] { return win->pages->editorOf(rack) != nullptr; }));
    auto* follow = find<CButton>("Follow", win->pages->editorOf(rack)->clientGroup);
    ASSERT_NE(follow, nullptr);
    const auto choose = [&](const std::vector<std::string>& keys) {
        const CPoint screen = follow->win->getPos(true), in = follow->win->controlPos(follow);
        inMenu(keys);
        act({"mousemove", std::to_string(screen.x + in.x + 4), std::to_string(screen.y + in.y + 4),
             "click", "1"});
        EXPECT_TRUE(pumpUntil([this] { return app->menus.empty(); }));
        refresh();
        return stored();
    };
    EXPECT_EQ(choose({"End", "Up", "Return"}), byKick);
    EXPECT_EQ(choose({"Home", "Return"}), "");
    undo();
    EXPECT_EQ(stored(), byKick);
}

} // namespace
