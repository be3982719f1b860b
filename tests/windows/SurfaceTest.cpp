#include "ModularFixture.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/Cycle.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/ValueDoor.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CTree.h"
#include "gui/controls/CValue.h"
#include "shell/Rooms.h"
#include "support/Rows.h"
#include "surfaces/CConfigWin.h"

namespace {

constexpr int turned(int cc, int value) {
    return asData(midiController, cc, value);
}

/// Two knobs, a button for pages, and two pages of which the second turns pan alone.
SurfaceDef example() {
    SurfaceDef def;
    def.groups.push_back({"Knobs", {}});
    def.groups[0].addCtrl("a", 20);
    def.groups[0].addCtrl("b", 21);
    def.groups[0].ctrls[1].sysexText = "F0 43 10";
    def.groups.push_back({"Page", {}});
    def.groups[1].addCtrl("next", 30);
    def.groups.push_back({"Second", {}});
    def.groups[2].addCtrl("c", 20);
    CControlPages section;
    section.name = "Strip";
    section.align = 3;
    section.pages = {{"Level", {}}, {"Place", {}}};
    CControlMap map;
    map.group = 0;
    map.label = "Volume and pan";
    map.items = {"one", "two"};
    map.left = 5;
    map.sxOffset = 7;
    section.pages[0].maps.push_back(map);
    map.group = 1;
    map.mode = surfaceNextPage;
    map.controlType = surfaceButton;
    map.on = {"on", 1, 2, 3, {9, 8, 7}};
    section.pages[0].maps.push_back(map);
    map = CControlMap();
    map.group = 2;
    map.param = 1;
    section.pages[1].maps.push_back(map);
    def.sections.push_back(section);
    return def;
}

class SurfaceTest : public ModularFixture {
protected:
    void SetUp() override {
        ModularFixture::SetUp();
        startModular();
        strip = host->getAudioOut()->output();
    }
    CCS& surface() { return win->rooms->surfaces.surface; }
    /// The messages come from a device, in a block.
    void send(const std::vector<int>& messages) {
        std::vector<float> left(size_t(host->frames)), right = left;
        float* ins[] = {left.data(), right.data()};
        float* outs[] = {left.data(), right.data()};
        std::vector<AamEvent> events(aamMaxEvents);
        for (size_t i = 0; i < messages.size(); i++) events[i] = {messages[i], 0, {}, 0};
        libio(ins, outs, 2, 2, host->frames, events.data(), int(messages.size()));
        host->tasks->audioStopped();
        EXPECT_TRUE(pumpUntil([&] { return surface().lastEvent == messages.back(); }));
    }
    COutputChannel* strip = nullptr;
};

} // namespace

/// Bytes of a message as users write them.
TEST(CSysexData, ReadsHexadecimal) {
    using Bytes = std::vector<unsigned char>;
    for (const auto& [text, bytes] :
         Rows<const char*, Bytes>{{"F0 43 10", {0xF0, 0x43, 0x10}},
                                  {"0xF0 0x43 0x10", {0xF0, 0x43, 0x10}},
                                  {"F0431", {}},
                                  {"F0 43", {}},
                                  {"F0 4G 10", {}},
                                  {"0xF0 43 10", {}},
                                  {"", {}}}) {
        CSysexData data;
        data.fromStr(text, false);
        EXPECT_EQ(data.data, bytes) << text;
    }
}

/// What is written is read; a file that is cut anywhere gives what came before.
TEST(SurfaceDef, KeepsWhatItHas) {
    const SurfaceDef def = example();
    CMemoryStream file;
    def.write(&file);
    for (int cut = 0; cut <= file.size; cut++) {
        CMemoryStream part, again;
        part.write(file.data, cut);
        part.setPos(0);
        SurfaceDef read;
        read.read(&part);
        if (cut < file.size) continue;
        read.write(&again);
        ASSERT_EQ(again.size, file.size);
        EXPECT_EQ(std::memcmp(again.data, file.data, size_t(file.size)), 0);
        EXPECT_EQ(read.groups[0].ctrls[1].sysex.size(), 3);
        EXPECT_EQ(read.sections[0].pages[0].maps[1].on.png, (std::vector<unsigned char>{9, 8, 7}));
    }
}

/// Knobs of the page that shows turn the strip, as one step of each, buttons turn the page.
TEST_F(SurfaceTest, PagesTurnParameters) {
    ASSERT_TRUE(example().save(at("knobs.qcs").c_str()));
    EXPECT_FALSE(surface().open(at("none.qcs").c_str()));
    ASSERT_TRUE(surface().open(at("knobs.qcs").c_str()));
    const float before = strip->vol;
    send({turned(20, 10), turned(20, 127)});
    EXPECT_EQ(strip->vol, 1.0f);
    send({turned(21, 0), turned(99, 3)});
    EXPECT_EQ(strip->pan, -1.0f);
    send({turned(30, 127), turned(30, 0)});
    EXPECT_EQ(surface().def.sections[0].current, 1);
    send({turned(20, 127)});
    EXPECT_EQ(strip->pan, 1.0f);
    EXPECT_EQ(strip->vol, 1.0f);
    const float now = strip->pan;
    while (!host->undoText().empty() || host->values->moved()) {
        host->undoClicked();
        ASSERT_TRUE(loaded());
    }
    EXPECT_NE(strip->pan, now);
    EXPECT_EQ(strip->vol, before);
}

/// What a parameter becomes by others is sent to the control that shows it, but not while a hand is
/// on that.
TEST_F(SurfaceTest, ValuesGoBack) {
    ASSERT_TRUE(example().save(at("knobs.qcs").c_str()));
    surface().open(at("knobs.qcs").c_str());
    surface().feedback = 2;
    const auto sent = [this](int cc) {
        std::vector<AamEvent> room(16);
        int value = -1;
        for (int i = host->deviceMidi->sendOutside(room) - 1; i >= 0; i--)
            if (asByte1(room[size_t(i)].data) == cc && room[size_t(i)].device == 2)
                value = asByte2(room[size_t(i)].data);
        return value;
    };
    host->values->setParam(strip, 0, 1.0f);
    EXPECT_TRUE(pumpUntil([&] { return sent(20) == 127; }));
    send({turned(20, 64)});
    host->values->setParam(strip, 1, 1.0f);
    EXPECT_TRUE(pumpUntil([&] { return sent(21) == 127; }));
    surface().def.groups[0].ctrls[0].touched = asTimeInMS() + 100000;
    host->values->setParam(strip, 0, 0.0f);
    host->values->setParam(strip, 1, 0.0f);
    EXPECT_TRUE(pumpUntil([&] { return surface().def.groups[0].ctrls[1].val == 0; }));
    EXPECT_EQ(surface().def.groups[0].ctrls[0].val, 64);
}

/// The window makes a definition: knobs that are moved come to the group, once each.
TEST_F(SurfaceTest, DefinitionsAreMade) {
    win->runAction(win->getAction("surface"));
    CWin* config = nullptr;
    ASSERT_TRUE(pumpUntil([&] {
        for (auto* w : app->windows)
            if (w->id == "Control surface") config = w;
        return config != nullptr;
    }));
    const auto press = [&](const char* key) {
        for (auto* c : config->clientGroup->controls)
            if (c->id == key) c->pressPart(-1);
    };
    press("teach");
    EXPECT_TRUE(pumpUntil([this] { return surface().editing; }));
    host->deviceMidi->copies = true;
    send({turned(40, 1), turned(41, 1), turned(40, 2), asData(midiNoteOn, 60, 99)});
    ASSERT_EQ(surface().def.groups.size(), 1u);
    EXPECT_EQ(surface().def.groups[0].numCtrls(), 2);
    EXPECT_STREQ(surface().getLastEventStr().asChar(), "Note on: 60 vel: 99");
    CTree* tree = nullptr;
    for (auto* c : config->clientGroup->controls)
        if (c->id == "definition") tree = static_cast<CTree*>(c);
    const auto choose = [&](int top) {
        tree->select(tree->root.children.items(top));
        (*tree->onChange)(tree);
    };
    choose(1);
    press("add");
    press("add");
    press("add");
    ASSERT_EQ(surface().def.sections.size(), 1u);
    ASSERT_EQ(surface().def.sections[0].pages.size(), 1u);
    EXPECT_EQ(surface().def.sections[0].pages[0].maps.size(), 1u);
    send({turned(40, 127)});
    EXPECT_EQ(strip->vol, 1.0f) << "what it makes works at once";
    press("delete");
    EXPECT_TRUE(surface().def.sections[0].pages[0].maps.empty());
}
