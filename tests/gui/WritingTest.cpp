#include "ControlFixture.h"

#include "gui/Keys.h"
#include "gui/XConnection.h"
#include "gui/controls/CEdit.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/keysym.h>

#include <cstdlib>

/// Keys of other layouts than the server's own. The input method that the user names runs nowhere.
class WritingTest : public ControlTest {
protected:
    void SetUp() override {
        setenv("XMODIFIERS", "@im=runs_nowhere", 1);
        ControlTest::SetUp();
    }
    void TearDown() override {
        ControlTest::TearDown();
        unsetenv("XMODIFIERS");
    }
    /// Puts symbols on a key: plain and with Shift, of the first layout and of the second.
    void assign(int code, std::vector<KeySym> symbols) {
        symbols.resize(4, NoSymbol);
        XChangeKeyboardMapping(liveDisplay(), code, 4, symbols.data(), 1);
        settle();
    }
};

/// Dead keys, compose sequences and other scripts, all by real presses.
TEST_F(WritingTest, FieldsTakeWhatKeysWrite) {
    constexpr int firstFree = 200;
    const KeySym symbols[] = {XK_dead_acute,     XK_Multi_key,       XK_Cyrillic_ef,
                              XK_Greek_alpha,    0x1000000 + 0x65e5, XK_eacute,
                              XK_dead_diaeresis, 0x1000000 + 0x1f3b5};
    int code = firstFree;
    for (const KeySym symbol : symbols) assign(code++, {symbol, symbol});
    const struct {
        const char *keys, *text;
    } cases[] = {
        {"a 200 e b", "a\xc3\xa9"
                      "b"},
        {"201 slash o", "\xc3\xb8"},
        {"206 u Left 200 a", "\xc3\xa1\xc3\xbc"},
        {"202 203 204", "\xd1\x84\xce\xb1\xe6\x97\xa5"},
        {"205 207 BackSpace", "\xc3\xa9"},
        {"200 Escape a", "a"}, // the dead key is given up, not the field
    };
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    for (const auto& c : cases) {
        edit->setText("");
        win->setKeyCtrl(edit);
        xdo(std::string("key ") + c.keys);
        EXPECT_STREQ(edit->text.asChar(), c.text) << c.keys;
    }
    // What is begun in a field does not go on elsewhere.
    edit->setText("");
    xdo("key 200");
    auto* probe = add(new ProbeCtrl(win.get(), "probe", 10, 40, 50, 20));
    win->setKeyCtrl(probe);
    xdo("key e");
    EXPECT_EQ(probe->last(), "key 101 0");
    win->setKeyCtrl(edit);
    xdo("key e");
    EXPECT_STREQ(edit->text.asChar(), "e");
}

/// The key of "a" writes a Cyrillic letter: alone, or beside a layout that has "b" there.
TEST_F(WritingTest, ShortcutsGoByThePlaceOfALatinLetter) {
    const int code = XKeysymToKeycode(liveDisplay(), XK_a);
    const std::string key = std::to_string(code);
    auto* probe = add(new ProbeCtrl(win.get(), "probe", 10, 40, 50, 20));
    auto* edit = add(new CEdit(win.get(), "e", 10, 10, 120, 20));
    const struct {
        std::vector<KeySym> symbols;
        int letter;
    } cases[] = {{{XK_Cyrillic_ef, XK_Cyrillic_EF}, 'a'},
                 {{XK_Cyrillic_ef, XK_Cyrillic_EF, XK_b, XK_B}, 'b'},
                 {{XK_odiaeresis, XK_Odiaeresis}, 0xf6}, // a letter of its own
                 {{XK_a, XK_A}, 'a'}};
    for (const auto& c : cases) {
        assign(code, c.symbols);
        win->setKeyCtrl(probe);
        xdo("key " + key);
        EXPECT_EQ(probe->last(), "key " + std::to_string(c.letter) + " 0");
        xdo("key ctrl+" + key);
        EXPECT_EQ(probe->last(), "key " + std::to_string(c.letter) + " 32");
        if (c.letter >= 128) continue;
        xdo("key shift+" + key);
        EXPECT_EQ(probe->last(), "key " + std::to_string(c.letter - 32) + " 16");
    }
    // In a field the letter is written, and the commands of the field go by the place.
    assign(code, {XK_Cyrillic_ef, XK_Cyrillic_EF});
    edit->setText("x");
    win->setKeyCtrl(edit);
    xdo("key " + key);
    EXPECT_STREQ(edit->text.asChar(), "x\xd1\x84");
    xdo("key ctrl+" + key + " Delete");
    EXPECT_STREQ(edit->text.asChar(), "");
    assign(code, {XK_a, XK_A});
}
