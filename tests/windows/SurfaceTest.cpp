#include "ModularFixture.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "engine/Cycle.h"
#include "engine/DeviceMidi.h"
#include "engine/MidiBytes.h"
#include "engine/ValueDoor.h"
#include "gui/XConnection.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CTree.h"
#include "gui/controls/CValue.h"
#include "shell/Rooms.h"
#include "support/Rows.h"
#include "surfaces/CConfigWin.h"
#include "surfaces/SurfacePanel.h"

#include <X11/Xlib.h>

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
    map.takeOver = mapScale;
    map.left = 5;
    map.sxOffset = 7;
    section.pages[0].maps.push_back(map);
    map.takeOver = mapJump;
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

/// The same, with knobs that are obeyed at once.
SurfaceDef jumping() {
    SurfaceDef def = example();
    def.sections[0].pages[0].maps[0].takeOver = mapJump;
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
    /// Opens a definition; what it sends goes to `exclusive`.
    void use(const SurfaceDef& def) {
        surface().sysexOut = [this](const MidiBytes& bytes) {
            exclusive.push_back(bytes);
            return true;
        };
        ASSERT_TRUE(def.save(at("knobs.qcs").c_str()) && surface().open(at("knobs.qcs").c_str()));
    }
    CWin* window(const char* title) {
        for (auto* w : app->windows)
            if (w->id == title && w->visible) return w;
        return nullptr;
    }
    void openConfig() {
        win->runAction(win->getAction("surface"));
        ASSERT_TRUE(pumpUntil([&] { return window("Control surface") != nullptr; }));
        settle();
    }
    CCtrl* inConfig(const char* id, const char* group = nullptr) {
        CGroup* in = window("Control surface")->clientGroup;
        if (group) in = find<CGroup>(group, in);
        return find<CCtrl>(id, in);
    }
    /// With the pointer and the keys.
    void clickOn(CCtrl* ctrl, int x = 20, int y = 10) {
        const CPoint screen = ctrl->win->getPos(true), in = ctrl->win->controlPos(ctrl);
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
        act({"click", "1"});
        settle();
    }
    void typeInto(CCtrl* ctrl, const std::string& text) {
        // As a window manager does.
        XSetInputFocus(liveDisplay(), ctrl->win->handle, RevertToParent, CurrentTime);
        ASSERT_TRUE(pumpUntil([&] { return ctrl->win->hasFocus(); }));
        clickOn(ctrl);
        act({"key", "ctrl+a"});
        act({"type", "--delay", "2", text});
        act({"key", "Return"});
        settle();
    }
    /// The messages come from a device, in a block.
    void send(const std::vector<int>& messages) {
        std::vector<float> left(size_t(host->frames)), right = left;
        float* ins[] = {left.data(), right.data()};
        float* outs[] = {left.data(), right.data()};
        std::vector<AamEvent> events(aamMaxEvents);
        for (size_t i = 0; i < messages.size(); i++) events[i] = {messages[i], 0, {}, 0};
        surface().lastEvent = 0;
        libio(ins, outs, 2, 2, host->frames, events.data(), int(messages.size()));
        host->tasks->audioStopped();
        EXPECT_TRUE(pumpUntil([&] { return surface().lastEvent == messages.back(); }));
    }
    COutputChannel* strip = nullptr;
    std::vector<MidiBytes> exclusive; ///< that the surface sent
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
        EXPECT_EQ(read.sections[0].pages[0].maps[0].takeOver, mapScale);
        EXPECT_EQ(read.sections[0].pages[0].maps[1].on.png, (std::vector<unsigned char>{9, 8, 7}));
    }
}

/// Files that are no definition, or a damaged one, are read to where they make sense, in time and
/// memory of their own size.
TEST(SurfaceDef, DamagedFilesAreBounded) {
    const auto record = [](CMemoryStream& to, const char* id, int size,
                           std::initializer_list<int> n) {
        to.writeId(id, size);
        for (const int i : n) to.writeInt(i);
    };
    CMemoryStream rows;
    record(rows, "hwg", 4, {0});
    record(rows, "sec", 0, {});
    record(rows, "sec-pa", 4, {0});
    for (int i = 0; i < 100000; i++) {
        record(rows, "hwc", 8, {0, i});
        record(rows, "sec-pa-map", 16, {99, -5, 7, 1});
        record(rows, "map-list-items", 4, {0x7FFFFFFF});
    }
    rows.setPos(0);
    SurfaceDef def;
    def.read(&rows);
    ASSERT_EQ(def.groups.size(), 1u);
    EXPECT_EQ(def.groups[0].numCtrls(), SurfaceDef::mostCtrls);
    const auto& maps = def.sections[0].pages[0].maps;
    EXPECT_LT(maps.size(), size_t(SurfaceDef::mostParts));
    EXPECT_TRUE(maps[0].mode == surfaceStore && maps[0].group == -1 && maps[0].items.empty());
    CMemoryStream whole;
    example().write(&whole);
    unsigned random = 1;
    for (int round = 0; round < 2000; round++) {
        CMemoryStream bad;
        bad.write(whole.data, int(whole.size));
        for (int i = 0; i < 8; i++) {
            random = random * 1664525u + 1013904223u;
            bad.data[(random >> 8) % unsigned(whole.size)] = static_cast<unsigned char>(random);
        }
        bad.setPos(0);
        def.read(&bad);
        size_t read = 0;
        for (const CControlPages& section : def.sections)
            for (const CControlSectionPage& page : section.pages)
                for (const CControlMap& map : page.maps) {
                    read += map.on.png.size() + map.items.size();
                    ASSERT_TRUE(map.group >= -1 && map.group < int(def.groups.size()));
                    ASSERT_TRUE(map.mode >= 0 && map.mode < surfaceModes);
                }
        ASSERT_LE(read, size_t(whole.size));
    }
}

/// Knobs of the page that shows turn the strip, as one step of each, buttons turn the page.
TEST_F(SurfaceTest, PagesTurnParameters) {
    ASSERT_TRUE(jumping().save(at("knobs.qcs").c_str()));
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

/// A knob, and buttons that turn banks, tracks and pages, those of all sections or of their own; in
/// another section a page shows program changes.
TEST_F(SurfaceTest, ButtonsTurnWhatTheyAreFor) {
    constexpr int knob = 10, buttons = 20; // controllers
    SurfaceDef def;
    def.sections.resize(2);
    def.sections[0].pages = {{"One", {}}, {"Two", {}}, {"Three", {}}};
    def.sections[1].pages = {{"First", {}}, {"Last", {}}};
    for (int mode = surfaceParam; mode <= surfaceProgram; mode++) {
        def.groups.push_back({"Group", {}});
        def.groups.back().addCtrl("x", mode == surfaceParam ? knob : buttons + mode);
        CControlMap map;
        map.group = map.mode = mode;
        map.takeOver = mapJump;
        for (CControlSectionPage& page : def.sections[0].pages)
            if (mode != surfaceProgram) page.maps.push_back(map);
        if (mode == surfaceProgram) def.sections[1].pages[0].maps.push_back(map);
    }
    ASSERT_TRUE(load(kindPortaStudio));
    use(def);
    const auto press = [this](int mode) {
        send({turned(buttons + mode, 127), turned(buttons + mode, 0)});
    };
    const auto pages = [this] {
        return std::pair(surface().def.sections[0].current, surface().def.sections[1].current);
    };
    CSeq* seq = songOf(host.get());
    const auto& tracks = seq->getProg()->tracks;
    const auto selected = [&] {
        std::vector<int> rows;
        for (auto* track : seq->selection.tracks) rows.push_back(tracks.indexed(track));
        return rows;
    };
    const std::vector<int> first{0}, second{1};
    seq->unselectTracks();
    press(surfaceTrackUp);
    ASSERT_EQ(selected(), first) << "the first one, if there was none";
    press(surfaceTrackUp);
    EXPECT_EQ(selected(), second);
    for (int i = 0; i < 3; i++) press(surfaceTrackDown);
    EXPECT_EQ(selected(), first) << "the first one stays";
    // Of the selected track's strip: volume, and pan a bank behind it.
    COutputChannel* own = tracks.items(0)->track->output();
    send({turned(knob, 127)});
    EXPECT_EQ(own->param(0), 1.0f);
    press(surfaceBankUp);
    send({turned(knob, 0)});
    EXPECT_EQ(own->param(1), 0.0f);
    press(surfaceBankDown);
    press(surfaceBankDown);
    send({turned(knob, 0)});
    EXPECT_EQ(own->param(0), 0.0f);
    press(surfaceNextPage);
    EXPECT_EQ(pages(), std::pair(1, 1));
    press(surfaceNextPage);
    EXPECT_EQ(pages(), std::pair(2, 1)) << "the last of each stays";
    press(surfacePageDown);
    EXPECT_EQ(pages(), std::pair(1, 1));
    press(surfacePriorPage);
    EXPECT_EQ(pages(), std::pair(0, 0));
    press(surfacePageUp);
    EXPECT_EQ(pages(), std::pair(1, 0));
    send({asData(midiProgram, 77, 0)});
    EXPECT_EQ(surface().def.groups[surfaceProgram].ctrls[0].val, 77);
    press(surfaceStore);
    EXPECT_EQ(surface().def.groups[surfaceStore].ctrls[0].val, 0) << "shown, and nothing else";
    EXPECT_EQ(pages(), std::pair(1, 0));
}

/// Pictures come from PNG files, as they are; from nothing else.
TEST(SurfaceDef, TakesPictures) {
    const TempFolder folder;
    std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\2\0\0\0\7", 24);
    const SurfaceImage cut = loadTexture(folder.write("cut.png", png));
    EXPECT_TRUE(cut.png.empty());
    png += "more of it";
    const SurfaceImage image = loadTexture(folder.write("knob.png", png));
    EXPECT_EQ(image.name, "knob.png");
    EXPECT_EQ(std::string(image.png.begin(), image.png.end()), png);
    EXPECT_EQ(std::pair(image.width, image.height), std::pair(258, 7));
    png[1] = 'Q';
    EXPECT_TRUE(loadTexture(folder.write("other.png", png)).png.empty());
    EXPECT_TRUE(loadTexture("/nowhere.png").png.empty());
}

/// What a parameter becomes by others is sent to the control that shows it, but not while a hand is
/// on that.
TEST_F(SurfaceTest, ValuesGoBack) {
    ASSERT_TRUE(jumping().save(at("knobs.qcs").c_str()));
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
    choose(2);
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

/// The preset of a device is asked for when the definition is opened and when the device has
/// another one; it moves the controls, and goes back with what they have changed.
TEST_F(SurfaceTest, PresetsComeAndGo) {
    const MidiBytes asked = {0xF0, 0x43, 0x20, 0xF7};
    SurfaceDef def = jumping();
    def.getPresetText = "F0 43 20 F7";
    def.getPreset.offset = 3;
    def.setPresetText = "F0 43 00 %s F7";
    auto& maps = def.sections[0].pages[0].maps;
    maps[0].sxOffset = 1;
    CControlMap text;
    text.mode = surfaceText;
    text.controlType = surfaceLabel;
    text.sxOffset = 3;
    text.sxDataSize = 5;
    maps.push_back(text);
    use(def);
    EXPECT_TRUE(pumpUntil([this] { return !exclusive.empty(); }));
    EXPECT_EQ(exclusive.front(), asked);
    const MidiBytes dump = {0xF0, 0x43, 0, 9, 64, 3, 'A', 'b', ' ', 0xF7};
    MidiBytes other = dump, cut = dump, open = dump;
    other[1] = 0x41;
    cut[5] = 0x80;
    open.pop_back();
    for (const MidiBytes& bad : {other, cut, open, MidiBytes(), asked}) surface().handleSysex(bad);
    EXPECT_TRUE(!surface().preset.defined() && !surface().dumpPreset());
    surface().handleSysex(dump);
    EXPECT_EQ(surface().def.groups[0].ctrls[0].val, 64);
    EXPECT_EQ(surface().def.groups[0].ctrls[1].val, 3);
    EXPECT_STREQ(surface().def.sections[0].pages[0].maps.back().text.asChar(), "Ab");
    send({turned(20, 100)});
    EXPECT_TRUE(surface().dumpPreset());
    MidiBytes back = dump;
    back[4] = 100;
    EXPECT_EQ(exclusive.back(), back);
    surface().handleSysex(dump);
    EXPECT_EQ(surface().preset.byteAt(1), 64) << "the device sends by itself";
    send({asData(midiProgram, 5, 0)});
    EXPECT_TRUE(pumpUntil([&] { return exclusive.size() == 3 && exclusive.back() == asked; }));
    surface().handleSysex({});
    EXPECT_TRUE(surface().preset.awaiting(asTimeInMS()));
}

/// Controls that talk by system exclusive messages turn parameters, and are told them.
TEST_F(SurfaceTest, ExclusiveMessagesAreControls) {
    SurfaceDef def = jumping();
    CHWCtrl& knob = def.groups[0].ctrls[1];
    knob.sysexText = "F0 43 10 00 F7";
    knob.sysex.offset = 3;
    use(def);
    surface().handleSysex(MidiBytes{0xF0, 0x43, 0x11, 0, 0xF7});
    EXPECT_NE(strip->pan, 1.0f);
    surface().handleSysex(MidiBytes{0xF0, 0x43, 0x10, 127, 0xF7});
    EXPECT_EQ(strip->pan, 1.0f);
    surface().feedback = 0;
    host->values->setParam(strip, 1, 0.0f);
    const MidiBytes told = {0xF0, 0x43, 0x10, 0, 0xF7};
    EXPECT_TRUE(pumpUntil([&] { return !exclusive.empty() && exclusive.back() == told; }));
}

/// A fader that is not where the parameter is moves it only once it has come there, and the panel
/// says so; a knob without an end moves it by steps, a key to its end.
TEST_F(SurfaceTest, ParametersAreTakenOver) {
    SurfaceDef def = jumping();
    CControlMap& map = def.sections[0].pages[0].maps[0];
    map.takeOver = mapPickup;
    use(def);
    openConfig();
    clickOn(inConfig("panel"));
    ASSERT_TRUE(pumpUntil([this] { return window("Panel") != nullptr; }));
    auto* panel = find<SurfacePanel>("panel", window("Panel")->clientGroup);
    const auto help = [&] {
        Description d;
        panel->describe(d, 0);
        return d.help;
    };
    const float before = strip->vol;
    send({turned(20, 2), turned(20, 5)});
    EXPECT_EQ(strip->vol, before);
    EXPECT_TRUE(pumpUntil([&] { return help() == "Waits to be picked up"; }));
    send({turned(20, 127)});
    EXPECT_EQ(strip->vol, 1.0f) << "it has passed";
    EXPECT_TRUE(pumpUntil([&] { return help().empty() && !surface().waits(); }));
    surface().def.sections[0].pages[0].maps[0].takeOver = mapRelative;
    send({turned(20, 126)});
    EXPECT_NEAR(strip->param(0), 125.0 / 127.0, 1e-4);
    surface().def.groups[0].ctrls[0].cc = firstNoteSource + 60;
    surface().def.sections[0].pages[0].maps[0].takeOver = mapJump;
    send({asData(midiNoteOn, 60, 127), asData(midiNoteOff, 60, 0)});
    EXPECT_EQ(strip->param(0), 0.0f) << "let go";
}

/// With pointer and keys: what a tree row is, is typed and chosen beside it, and kept in the file.
TEST_F(SurfaceTest, FieldsAreTyped) {
    use(jumping());
    openConfig();
    auto* tree = static_cast<CTree*>(inConfig("definition"));
    const auto choose = [&](CTreeNode* node) {
        const CRect row = tree->nodeRect(node);
        clickOn(tree, row.left + node->indent + CTree::boxWidth + 20, (row.top + row.bottom) / 2);
    };
    const auto field = [this](const char* id) { return inConfig(id, "fields"); };
    const auto root = [&](int i) { return tree->root.children.items(i); };
    choose(root(0));
    typeInto(field("getpreset"), "F0 43 20 F7");
    EXPECT_EQ(surface().def.getPresetText, "F0 43 20 F7");
    EXPECT_TRUE(field("presetbyte")->visible);
    EXPECT_EQ(surface().def.getPreset.size(), 4);
    EXPECT_FALSE(field("cc")->visible);
    choose(root(1)->children.items(0)->children.items(1));
    typeInto(field("name"), "Cutoff");
    EXPECT_STREQ(surface().def.groups[0].ctrls[1].name.asChar(), "Cutoff");
    clickOn(field("learn"));
    send({asData(midiPitchBend, 0, 90)});
    EXPECT_EQ(surface().def.groups[0].ctrls[1].cc, bendSource);
    EXPECT_TRUE(pumpUntil([&] {
        return std::string(root(1)->children.items(0)->children.items(1)->text.asChar()) ==
               "Cutoff (Bend)";
    }));
    choose(root(2)->children.items(0)->children.items(0)->children.items(0));
    static_cast<CDropdown*>(field("takeover"))->setIndex(mapPickup, true);
    typeInto(field("items"), "Off, On");
    const CControlMap& map = surface().def.sections[0].pages[0].maps[0];
    EXPECT_TRUE(map.takeOver == mapPickup && map.items == (std::vector<std::string>{"Off", "On"}));
    EXPECT_TRUE(surface().changed);
}

/// What a device floods with, 31,250 bytes a second, is served within the tick in which it comes;
/// what there is no room for is lost, and the last of what comes later is obeyed.
TEST_F(SurfaceTest, FloodsAreServed) {
    use(jumping());
    std::vector<int> flood;
    for (int i = 0; i < aamMaxEvents - 1; i++) flood.push_back(turned(20, i % 128));
    std::vector<float> left(size_t(host->frames)), right = left;
    float* ins[] = {left.data(), right.data()};
    float* outs[] = {left.data(), right.data()};
    std::vector<AamEvent> events(aamMaxEvents);
    for (size_t i = 0; i < flood.size(); i++) events[i] = {flood[i], 0, {}, 0};
    for (int block = 0; block < 20; block++)
        libio(ins, outs, 2, 2, host->frames, events.data(), int(flood.size()));
    host->tasks->audioStopped();
    surface().idle();
    EXPECT_NE(surface().lastEvent, 0);
    int left1 = 0;
    EXPECT_FALSE(host->deviceMidi->copied.pop(left1)) << "one tick serves all that fits";
    send({turned(20, 127)});
    EXPECT_EQ(strip->vol, 1.0f);
    for (int i = 0; i < 5000; i++)
        surface().handleSysex(MidiBytes{0xF0, 1, 2, static_cast<unsigned char>(i & 127), 0xF7});
    EXPECT_FALSE(surface().preset.defined());
}
