#include "Blocks.h"
#include "ModularFixture.h"

#include "engine/CMap.h"
#include "engine/CompTypes.h"
#include "engine/DeviceComps.h"
#include "engine/MapEdits.h"
#include "engine/MidiBytes.h"
#include "engine/MidiRouting.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CValue.h"
#include "surfaces/CMIDIMapWin.h"
#include "surfaces/CMapPanel.h"

namespace {

/// The window of controllers, over a graph with a synthesizer.
class MapWinTest : public ModularFixture {
protected:
    void SetUp() override {
        ModularFixture::SetUp();
        startModular();
        strip = add(compSampler, 300, 60)->output();
        key("ctrl+shift+m");
        ASSERT_TRUE(pumpUntil([this] { return page() != nullptr; }));
        settle();
    }
    CCompEditor* page() { return win->pages->editorOf(host.get()); }
    CGroup* list() {
        for (auto* c : page()->clientGroup->controls)
            if (c->id == "maps") return static_cast<CScrollPanel*>(c)->inner;
        return nullptr;
    }
    CMapPanel* row(int i) { return static_cast<CMapPanel*>(list()->controls.items(i)); }
    bool rows(int count) {
        return pumpUntil([&] { return list()->controls.getCount() == count; });
    }
    template <class T>
    T* within(CGroup* group, const char* id) {
        for (auto* c : group->controls) {
            if (c->id == id) return static_cast<T*>(c);
            if (c->id == "transporter")
                if (T* found = within<T>(static_cast<CGroup*>(c), id)) return found;
        }
        return nullptr;
    }
    void press(const char* id) { within<CCtrl>(page()->clientGroup, id)->pressPart(-1); }
    void move(int cc, int value) {
        host->getMIDIIn()->outPort()->addMidiEvent(0, asData(midiController, cc, value));
        const GraphHold hold(host.get());
        host->handleMIDIIn();
        host->getMIDIIn()->outPort()->clear();
    }
    CMapProg* prog() { return currentMaps(host.get()); }
    COutputChannel* strip = nullptr;
};

} // namespace

/// A control of the program, then one of the device; or the device's first, for a row that waits.
TEST_F(MapWinTest, LearnsBothWays) {
    host->paramMoved(strip, 0, 0.5f);
    EXPECT_EQ(prog()->items.getCount(), 0) << "off, and nothing is recorded";
    press("learn");
    host->paramMoved(strip, 0, 0.5f);
    ASSERT_TRUE(rows(1));
    move(21, 64);
    const auto* first = row(0)->shown();
    EXPECT_TRUE(first->cc == 21 && first->target == strip && !first->learning);
    host->paramMoved(strip, 0, 0.5f);
    EXPECT_TRUE(first->learning) << "the same row again";
    move(22, 64);
    EXPECT_EQ(first->cc, 22);
    press("add");
    ASSERT_TRUE(rows(2));
    within<CCtrl>(row(1), "learn")->pressPart(-1);
    move(30, 1);
    EXPECT_TRUE(pumpUntil([this] { return within<CValue>(row(1), "cc")->value == 30; }));
    host->paramMoved(strip, 1, 0.5f);
    ASSERT_TRUE(pumpUntil([this] { return row(1) && row(1)->shown()->target == strip; }));
    EXPECT_TRUE(row(1)->shown()->cc == 30 && !row(1)->shown()->learning);
    EXPECT_EQ(mapTargetText(row(1)->shown()), (strip->comp->getName(strip) + ", Pan"));
    key("ctrl+z");
    key("ctrl+z");
    EXPECT_TRUE(rows(1));
}

/// Number, range and mode are steps; what is deleted comes back.
TEST_F(MapWinTest, RowsAreEdited) {
    press("add");
    ASSERT_TRUE(rows(1));
    CMap* map = row(0)->shown();
    map->learning = true;
    EXPECT_TRUE(within<CValue>(row(0), "cc")->enterNumber(-1, 74));
    EXPECT_TRUE(map->cc == 74 && !map->learning);
    EXPECT_TRUE(within<CValue>(row(0), "min")->enterNumber(-1, 100));
    EXPECT_TRUE(within<CValue>(row(0), "max")->enterNumber(-1, 20));
    within<CDropdown>(row(0), "mode")->setIndex(mapPickup, true);
    EXPECT_TRUE(map->min == 100 && map->max == 20 && map->mode == mapPickup);
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([map] { return map->mode == mapJump; }));
    EXPECT_EQ(map->max, 20);
    within<CCtrl>(row(0), "delete")->pressPart(-1);
    EXPECT_TRUE(rows(0));
    EXPECT_STREQ(host->undoText().asChar(), "Delete");
    key("ctrl+z");
    EXPECT_TRUE(rows(1));
}

/// There is always a list in force, and the transport learns its controllers.
TEST_F(MapWinTest, ListsAndTransport) {
    addMapProg(host.get());
    ASSERT_TRUE(pumpUntil(
        [this] { return within<CDropdown>(page()->clientGroup, "programs")->index == 1; }));
    renameMapProg(host.get(), prog(), "stage");
    deleteMapProg(host.get());
    EXPECT_EQ(host->curMap, 0);
    const CMapProg* only = prog();
    deleteMapProg(host.get());
    EXPECT_EQ(host->maps.getCount(), 1);
    EXPECT_TRUE(prog() && prog() != only && prog()->name == "program");
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return prog() == only && host->maps.getCount() == 1; }));
    press("play");
    move(40, 0);
    EXPECT_EQ(host->ctrlStart, 40);
    EXPECT_TRUE(pumpUntil(
        [this] { return within<CButton>(page()->clientGroup, "play")->text == "Play CC 40"; }));
    press("play");
    press("play");
    EXPECT_EQ(host->ctrlStart, -1);
}
