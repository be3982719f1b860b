#include "ControlFixture.h"

#include "base/Paths.h"
#include "gui/Colours.h"
#include "gui/dialogs/CColourWin.h"
#include "gui/dialogs/CFileWin.h"
#include "gui/dialogs/CTextWin.h"
#include "gui/dialogs/MessageBox.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/// Keys for xdotool: "type:..." types a text, all else is the name of a key.
using Keys = std::vector<std::string>;

/// Dialogs over a folder with alpha/inner.qv, beta/, .hidden.qv, Other.qv, song.qv and sound.wav,
/// which is also the home folder.
class DialogTest : public LoopTest {
protected:
    void SetUp() override {
        char name[] = "/tmp/sondrava-gui-XXXXXX";
        ASSERT_TRUE(mkdtemp(name));
        root = std::string(name) + "/";
        for (const char* folder : {"alpha", "beta"})
            std::filesystem::create_directory(root + folder);
        for (const char* file :
             {"alpha/inner.qv", ".hidden.qv", "Other.qv", "song.qv", "sound.wav"})
            std::ofstream(root + file) << "x";
        setenv("HOME", name, 1);
        LoopTest::SetUp();
        if (usable()) installMessageBox(app.get());
    }
    void TearDown() override {
        LoopTest::TearDown();
        std::filesystem::remove_all(root);
    }
    static std::string told(const Keys& keys) {
        std::string all;
        for (const std::string& key : keys) all += key + " ";
        return all;
    }
    /// The file of a case in full, empty without one.
    std::string full(const char* path) const { return path ? root + path : ""; }
    /// Shows a dialog until the keys have closed it.
    void run(CDialogWin& dialog, const Keys& keys) {
        for (const std::string& key : keys)
            if (key.starts_with("type:"))
                later(Words{"type", "--delay", "1", key.substr(5)});
            else
                later(Words{"key", key});
        bool closed = true;
        whenever([&] { return !dialog.visible; },
                 [&] {
                     closed = !dialog.visible;
                     dialog.hide();
                 });
        dialog.showModal();
        EXPECT_TRUE(closed) << told(keys);
        steps.clear();
        app->killTimer(clock);
    }

    std::string root;
};

struct FileCase {
    Keys keys;
    const char* path; ///< below the root; null for no result
};

} // namespace

/// The list has the focus; Tab leads to the name, Shift-Tab over the places and "New folder" to the
/// path.
TEST_F(DialogTest, AFileIsOpenedByKeys) {
    const FileCase cases[] = {
        {{"End", "Return"}, "song.qv"}, // sound.wav is none of them
        {{"type:al", "Return", "Down", "Return"}, "alpha/inner.qv"},
        {{"type:so", "Return"}, "song.qv"},
        {{"Tab", "type:so", "Return"}, "song.qv"},
        {{"Tab", "type:ot", "Tab", "Return"}, "Other.qv"},
        {{"Tab", "type:Other", "Delete", "Return"}, "Other.qv"},
        {{"Tab", "type:alpha/../beta/../al", "Return", "type:in", "Return"}, "alpha/inner.qv"},
        {{"Tab", "type:~/alpha/inner.qv", "Return"}, "alpha/inner.qv"},
        {{"Tab", "type:.hidden.qv", "Return"}, ".hidden.qv"},
        {{"Tab", "type:missing", "Return", "Escape"}, nullptr},
        {{"Home", "Return", "BackSpace", "Down", "Down", "Return"}, "Other.qv"},
        {{"Home", "Return", "alt+Up", "End", "Return"}, "song.qv"},
        {{"shift+Tab", "shift+Tab", "shift+Tab", "type:~/al", "Return", "End", "Return"},
         "alpha/inner.qv"},
        {{"shift+Tab", "shift+Tab", "shift+Tab", "type:/gone/far", "Return", "Escape"}, nullptr},
        {{"Down", "Escape"}, nullptr},
        {{"Tab", "type:song.qv", "Tab", "Tab", "Return"}, nullptr}};
    for (const FileCase& c : cases) {
        CFileWin dialog(win.get(), "Open", ".QV", root.c_str(), "", false);
        run(dialog, c.keys);
        EXPECT_EQ(dialog.result, c.path != nullptr) << told(c.keys);
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << told(c.keys);
    }
}

TEST_F(DialogTest, AFileIsSavedByKeys) {
    const FileCase cases[] = {{{"type:new", "Return"}, "new.qv"},
                              {{"type:new.QVS", "Return"}, "new.QVS"},
                              {{"type:new.song", "Return"}, "new.song.qv"},
                              {{"type:so", "Return"}, "so.qv"}, // not completed to what is there
                              {{"type:al", "Return"}, "al.qv"},
                              {{"type:al", "Tab", "type:x", "Return"}, "alpha/x.qv"},
                              {{"type:so", "Tab", "Return", "y"}, "song.qv"},
                              {{"type:song", "Return", "y"}, "song.qv"},
                              {{"type:song", "Return", "n", "Escape"}, nullptr},
                              {{"type:song", "Return", "Escape", "Escape"}, nullptr},
                              {{"type:beta/x", "Return"}, "beta/x.qv"},
                              {{"type:beta", "Return", "type:x", "Tab", "Return"}, "beta/x.qv"},
                              {{"type:gone/x", "Return", "Escape"}, nullptr},
                              {{"Return"}, "song2.qv"}};
    for (const FileCase& c : cases) {
        CFileWin dialog(win.get(), "Save", ".QV|.QVS", root.c_str(), "song2", true);
        run(dialog, c.keys);
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << told(c.keys);
    }
}

TEST_F(DialogTest, AFolderIsChosenByKeys) {
    const FileCase cases[] = {
        {{"Tab", "Return"}, ""},
        {{"Down", "Tab", "Return"}, "alpha/"},
        {{"Tab", "type:~/be", "Return"}, "beta/"},
        {{"End", "Return", "Tab", "Return"}, "beta/"},
        {{"Tab", "type:song.qv", "Return", "Escape"}, nullptr},
        {{"shift+Tab", "shift+Tab", "Return", "type:made", "Return", "Tab", "Tab", "Tab", "Return"},
         "made/"}};
    for (const FileCase& c : cases) {
        CFolderWin dialog(win.get(), "Add folder", (root + "gone/deep").c_str());
        run(dialog, c.keys);
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << told(c.keys);
    }
}

TEST_F(DialogTest, ATextIsAskedFor) {
    struct Case {
        Keys keys;
        bool result;
        const char* text;
    };
    const Case cases[] = {{{"Return"}, true, "old"},
                          {{"type:new name", "Return"}, true, "new name"},
                          {{"End", "type:er", "Tab", "Return"}, true, "older"},
                          {{"type:new", "Escape"}, false, "old"},
                          {{"type:new", "Tab", "Tab", "space"}, false, "old"},
                          {{"BackSpace", "space", "Return", "Escape"}, false, "old"}};
    int shortcuts = 0;
    class Global : public CObject {
    public:
        int* count = nullptr;
        bool key(CObject*, int&, int) { return ++*count; }
    } global;
    global.count = &shortcuts;
    app->onKey = new _COnKey<Global>(&global, &Global::key);
    for (const Case& c : cases) {
        CTextWin dialog(win.get(), "Name", "old");
        run(dialog, c.keys);
        EXPECT_EQ(dialog.result, c.result) << told(c.keys);
        EXPECT_STREQ(dialog.text.asChar(), c.text) << told(c.keys);
    }
    EXPECT_EQ(shortcuts, 0); // the program's keys do not act behind a dialog
    delete app->onKey;
    app->onKey = nullptr;
}

/// Focus: square and strip, red, green, blue, code, palette, OK.
TEST_F(DialogTest, AColourIsAskedFor) {
    struct Case {
        Keys keys;
        unsigned rgb;
    };
    const Case cases[] = {
        {{"Return"}, 0x804000},
        {{"Tab", "Tab", "type:255", "Return", "Tab", "Tab", "Tab", "Tab", "Return"}, 0x80ff00},
        {{"Tab", "Tab", "Tab", "Tab", "type:#12aBff", "Return", "Tab", "Tab", "Return"}, 0x12abff},
        {{"Tab", "Tab", "Tab", "Tab", "type:zzz", "Tab", "Tab", "Return"}, 0x804000},
        {{"type:x", "Escape"}, 0x804000}};
    for (const Case& c : cases) {
        CColourWin dialog(win.get(), "Colour", hexColor(0x804000));
        run(dialog, c.keys);
        EXPECT_EQ(dialog.colour, hexColor(c.rgb)) << told(c.keys);
    }
}
