#include "PanelsFixture.h"

#include "base/Paths.h"
#include "common/fx/CDelay.h"
#include "common/fx/CReverb.h"
#include "effects/RackEdits.h"
#include "effects/RackParams.h"
#include "engine/EffectSettings.h"
#include "engine/MapEdits.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDocker.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "panels/drums/DrumPads.h"
#include "project/PresetFiles.h"

#include <algorithm>

using PanelChainsTest = PanelsFixture;

TEST_F(PanelChainsTest, ChainsOfEffects) {
    start();
    ASSERT_TRUE(load(kindDefault));
    CEffect* r = rack();
    open(r);
    auto& chain = r->getProg()->effects;
    auto* delay = static_cast<CDelay*>(chain.getFirst());
    find("Feedback")->win->setKeyCtrl(find("Feedback"));
    key("End");
    EXPECT_EQ(delay->feedback, 1.0f);
    choose("add", {"Down", "Down", "Return"});
    ASSERT_EQ(chain.getCount(), 2);
    auto* reverb = static_cast<CReverb*>(chain.items(1));
    ASSERT_EQ(reverb->type, fxReverb);
    click("Move up", 1);
    EXPECT_EQ(chain.getFirst(), reverb);
    undo();
    EXPECT_EQ(chain.getFirst(), delay);
    find("Feedback")->win->setKeyCtrl(find("Feedback"));
    key("ctrl+Down");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(chain.getFirst(), reverb);
    find("Feedback")->win->setKeyCtrl(find("Feedback"));
    key("ctrl+Delete");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(chain.getCount(), 1);
    undo();
    undo();
    EXPECT_EQ(chain.getFirst(), delay);
    click("Power", 1);
    EXPECT_EQ(reverb->enabled, 0);
    undo();
    EXPECT_EQ(reverb->enabled, 1);
    click("Remove", 0);
    EXPECT_EQ(chain.getCount(), 1);
    EXPECT_EQ(chain.getFirst(), reverb);
    undo();
    EXPECT_EQ(chain.getFirst(), delay);
    // By its head an effect goes to where it is dropped; Escape leaves it.
    CCtrl* echo = find("Delay");
    CCtrl* hall = find("Reverb");
    const int up = hall->top - (echo->top + echo->height / 2 - 8);
    comeIntoView(find("Time", 2));
    for (const bool escape : {true, false}) {
        drag(hall, asPoint(200, 16), asPoint(200, -up), escape);
        EXPECT_EQ(chain.getFirst(), escape ? static_cast<CFX*>(delay) : reverb);
    }
    undo();
    // A switch has a menu as well.
    CCtrl* sync = find("Sync");
    sync->win->setKeyCtrl(sync);
    inMenu({"Down", "Return"});
    key("shift+F10");
    ASSERT_TRUE(loaded());
    const ParamRef synced = rackParamOf(*r, *delay, *findSetting(settingsOf(*delay), "Sync"));
    EXPECT_EQ(controllerOf(host.get(), synced).number, LeadingController::awaited);
    undo();
    // One effect has presets of its own, which leave its power and the rest of the chain alone.
    find("Feedback")->win->setKeyCtrl(find("Feedback"));
    for (const char* k : {"4", "0", "Return"}) key(k);
    const float length = reverb->getRevTime(), feedback = delay->feedback;
    const auto typed = [this](const char* dialog) {
        keysInDialog(dialog, {"ctrl+a"});
        typeInDialog(dialog, at("echo.qve"));
        keysInDialog(dialog, {"Return"});
    };
    typed("Save preset");
    choose("Presets", {"End", "Return"});
    ASSERT_TRUE(pumpUntil([&] { return fileExists(at("echo.qve").c_str()); }));
    choose("Presets", {"Home", "Return"});
    EXPECT_NE(delay->feedback, feedback);
    typed("Open preset");
    choose("Presets", {"End", "Up", "Return"});
    EXPECT_EQ(delay->feedback, feedback);
    EXPECT_EQ(chain.getCount(), 2);
    EXPECT_EQ(reverb->getRevTime(), length);
    EXPECT_FALSE(openEffect(r, reverb, at("echo.qve").c_str())) << "it has none of these";
    for (int i = 0; i < 3; i++) undo();
    // The way of the sound: a box is switched by two presses.
    CCtrl* way = find("chain");
    comeIntoView(way);
    mouseTo(way, 150, 48);
    act({"click", "--repeat", "2", "--delay", "60", "1"});
    EXPECT_EQ(delay->enabled, 0);
    undo();
    EXPECT_EQ(delay->enabled, 1);
    EXPECT_EQ(chain.getFirst(), delay);
    // What has left under the hands of the panel is not touched any more.
    key("ctrl+z");
    find("Time", 2)->win->setKeyCtrl(find("Time", 2));
    key("Home");
    ASSERT_TRUE(loaded());
    EXPECT_EQ(chain.getCount(), 1);
}

TEST_F(PanelChainsTest, TheArpeggiatorOfATrack) {
    start();
    ASSERT_TRUE(load(kindDefault));
    auto* songTrack = seq()->getProg()->tracks.getFirst();
    seq()->selectTrack(songTrack, true);
    CArp* arp = songTrack->track->arp.get();
    win->move(0, 0, 800, 590);
    key("ctrl+shift+a");
    ASSERT_TRUE(pumpUntil([&] { return win->pages->editorOf(arp) != nullptr; }));
    page = win->pages->editorOf(arp);
    click("Power");
    EXPECT_EQ(arp->enabled, 1);
    choose("Mode", {"Down", "Down", "Return"});
    EXPECT_NE(arp->getProg()->mode, arpAsPlayed);
    find("Octaves")->win->setKeyCtrl(find("Octaves"));
    key("Prior");
    EXPECT_EQ(arp->getProg()->octaves, 2);
    for (int i = 0; i < 3; i++) undo();
    EXPECT_EQ(arp->enabled, 0);
    EXPECT_EQ(arp->getProg()->mode, arpAsPlayed);
    EXPECT_EQ(arp->getProg()->octaves, 1);
}

TEST_F(PanelChainsTest, TheDrumsOfAKit) {
    start();
    ASSERT_TRUE(load(kindDrumAndBass));
    CSongTrack* drums = nullptr;
    for (auto* t : seq()->getProg()->tracks)
        if (t->track->kind == trackDrum) drums = t;
    ASSERT_NE(drums, nullptr);
    open(sampler());
    key("F8");
    seq()->unselectTracks();
    seq()->selectTrack(drums, true);
    key("ctrl+space");
    ASSERT_TRUE(pumpUntil([&] { return win->pages->editorOf(drums->track) != nullptr; }));
    // Its page moves up when one before it goes.
    const int place = drums->track->editorStruct.page;
    win->pages->dockWin(page, seq()->editorStruct.page, true);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(drums->track->editorStruct.page, place - 1);
    page = win->pages->editorOf(drums->track);
    win->openEditor(drums->track);
    settle();
    auto* pads = find<DrumPads>("pads");
    EXPECT_EQ(pads->accessParts(), drums->track->drumLayer()->sounds.getCount());
    Description d;
    pads->describe(d, 1);
    mouseTo(pads, d.bounds.left + 20, d.bounds.top + 20); // the second
    act({"click", "1"});
    ASSERT_TRUE(pumpUntil([&] { return pads->index() == 1; }));
    CDrumSound* second = drums->track->drumSound(1);
    EXPECT_TRUE(heard(drums->track)) << "a press plays";
    pads->win->setKeyCtrl(pads);
    for (const char* k : {"Right", "Left", "Return"}) key(k);
    EXPECT_TRUE(heard(drums->track)) << "and a key";
    click("Mute drum");
    EXPECT_EQ(second->mute, 1);
    undo();
    EXPECT_EQ(second->mute, 0);
    find("Cutoff")->win->setKeyCtrl(find("Cutoff"));
    key("Home");
    EXPECT_EQ(second->cutoff, 0.0f);
    EXPECT_EQ(drums->track->drumSound(0)->cutoff, 1.0f);
    undo();
    EXPECT_EQ(second->cutoff, 1.0f);
}
