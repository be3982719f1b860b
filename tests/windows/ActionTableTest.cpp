#include "ui/Commands.h"

#include "base/CIniFile.h"
#include "base/TempFolder.h"
#include "gui/Keys.h"
#include "ui/Shortcuts.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace {

constexpr int shift = modShift, control = modControl, alt = modAlt;

std::string found(const Commands& table, int key, int mods, int editorType) {
    const CAction* action = table.find(key, mods, editorType);
    return action ? action->name.asChar() : "";
}

/// As when every room has bound its own.
struct BoundCommands : Commands {
    BoundCommands() {
        for (auto* action : actions) bind(action->name.asChar(), [] {});
    }
};

} // namespace

TEST(ActionTable, FindsTheActionOfAKeyPress) {
    struct Case {
        int key, mods, editorType;
        const char* name;
    };
    const Case cases[] = {
        {keyReturn, 0, 0, "play"},
        {keyReturn, shift, 0, "playselection"},
        {keyReturn, alt, 0, ""},
        {'l', 0, 0, "loop"},
        {'L', 0, 0, "loop"}, // Caps Lock
        {'l', control, 0, "openlast"},
        {'S', control | shift, 0, "saveas"},
        {'s', 0, 0, ""}, // of the arrangement
        {'s', 0, 4, "solo"},
        {'m', 0, 9, ""},
        {'X', shift, 4, "snapNext"},
        {'f', control, 4, "find"},
        {'F', control | shift, 4, "freeze"},
        {'C', shift, 4, "crossfade"},
        {keyF1 - 4, 0, 0, "render"},
        {keyDelete, 0, 0, "delete"},
        {'+', shift, 0, "zoomin"}, // where the sign needs Shift
        {'+', 0, 0, "zoomin"},
        {'+', shift | control, 4, "zoomselection"}, // the exact one comes first
        {'+', control, 4, "trackzoomin"},
        {'<', shift, 4, "priormarker"},
        {'-', shift, 0, "zoomout"},
        {'_', shift | control, 4, "zoomback"}, // as keyboards have it
        {'1', shift, 0, ""},                   // digits and letters mean their Shift
        {'z', shift, 4, ""},
        {keyF1, shift, 0, ""},
        {' ', shift | control, 4, ""},
        {0, 0, 4, ""}, // of an action without a key
        {0xe9, 0, 4, ""},
    };
    const BoundCommands table;
    for (const Case& c : cases)
        EXPECT_EQ(found(table, c.key, c.mods, c.editorType), c.name)
            << c.key << " with " << c.mods << " in " << c.editorType;
}

/// Two actions with one shortcut in the same window would hide the later one.
TEST(ActionTable, GivesNoKeyTwice) {
    const BoundCommands table;
    std::set<std::string> names;
    for (auto* action : table.actions) {
        EXPECT_TRUE(names.insert(action->name.asChar()).second) << action->name.asChar();
        const int in = action->group > groupGlobal ? action->group : groupArrange;
        EXPECT_TRUE(!action->key || table.find(action->key, action->mods, in) == action)
            << action->name.asChar();
    }
}

TEST(ActionTable, TakesShortcutsFromTheSettings) {
    const TempFolder folder;
    inifile = folder.file("ini");
    std::ofstream(inifile.asChar()) << "[shortcuts]\nplay=32,112\nstop=x,-9\nloop=16,y\nrecord=5\n"
                                       "gone=0,65\nmute = 64 , 75 \nsolo=\n";
    BoundCommands table;
    table.readShortcuts();
    const auto of = [&](const char* name) {
        const CAction* a = table.getAction(name);
        return std::to_string(a->mods) + "," + std::to_string(a->key);
    };
    EXPECT_EQ(of("play"), "32,112");
    EXPECT_EQ(of("stop"), "0,-9") << "the modifiers are no number";
    EXPECT_EQ(of("loop"), "16,108") << "the key is no number";
    EXPECT_EQ(of("record"), "0,114") << "there is no comma";
    EXPECT_EQ(of("mute"), "64,75");
    EXPECT_EQ(of("solo"), "0,115");
    EXPECT_EQ(found(table, 'p', control, 0), "play");

    Commands::setShortcut(table.getAction("play"), keyReturn, 0);
    EXPECT_EQ(found(table, 'p', control, 0), "loopselection") << "not in force at once";
    EXPECT_EQ(CIniFile(inifile).readString("shortcuts", "play", ""), "0,-9");
    BoundCommands again;
    again.readShortcuts();
    EXPECT_EQ(found(again, keyReturn, 0, 0), "play");
}

TEST(Shortcuts, TellKeysAndUnderstandThem) {
    struct Case {
        int key, mods;
        const char* text;
    };
    const Case cases[] = {{'s', control | shift, "CTRL + SHIFT + S"},
                          {keyReturn, 0, "ENTER"},
                          {' ', alt, "ALT + SPACE"},
                          {keyF12, shift | alt, "SHIFT + ALT + F12"},
                          {keyDelete, 0, "DEL"},
                          {keyAsterisk, control, "CTRL + *"},
                          {'+', 0, "+"},
                          {0, control, ""},
                          {keyLeft, 0, ""}};
    for (const Case& c : cases) EXPECT_EQ(shortcutToStr(c.key, c.mods), c.text);
    const struct {
        const char* text;
        int key;
    } typed[] = {{"return", keyReturn},
                 {"Enter", keyReturn},
                 {"F1", keyF1},
                 {"f10", keyF1 - 9},
                 {"F13", 0},
                 {"PageUp", keyPageUp},
                 {"insert", keyInsert},
                 {"*", keyAsterisk},
                 {"q", 'q'},
                 {"Q", 'Q'},
                 {"\xc3\xb6", 0xf6},
                 {"\xd0\xb6", 0},
                 {"", 0},
                 {"qq", 0}};
    for (const auto& c : typed) EXPECT_EQ(strToKey(c.text), c.key) << c.text;
    const BoundCommands table;
    for (auto* a : table.actions)
        EXPECT_EQ(upperKey(strToKey(keyToStr(a->key))), upperKey(a->key)) << a->name.asChar();
}
