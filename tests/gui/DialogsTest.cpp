#include "ControlFixture.h"

#include "base/TempFolder.h"
#include "gui/Colours.h"
#include "gui/controls/CListbox.h"
#include "gui/dialogs/CColourWin.h"
#include "gui/dialogs/CFileWin.h"
#include "gui/dialogs/CTextWin.h"
#include "gui/dialogs/MessageBox.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

/// Dialogs over a folder with alpha/inner.qv, beta/, .hidden.qv, Other.qv, song.qv and sound.wav,
/// which is also the home folder. 40 files lie in beta/many/.
///
/// What is done is a row of names of keys, "type:text", and, with the mouse on a control or on a
/// row of a list, "click:id", "click:id:row", "double:id:row", "drag:id" for the list's bar.
class DialogTest : public LoopTest {
protected:
    void SetUp() override {
        root = folder.file("").asChar();
        for (const char* name : {"alpha", "beta"}) std::filesystem::create_directory(root + name);
        for (const char* file :
             {"alpha/inner.qv", ".hidden.qv", "Other.qv", "song.qv", "sound.wav"})
            std::ofstream(root + file) << "x";
        std::filesystem::create_directory(root + "beta/many");
        for (int i = 10; i < 50; i++)
            std::ofstream(root + "beta/many/" + std::to_string(i) + ".qv") << "x";
        setenv("HOME", root.substr(0, root.size() - 1).c_str(), 1);
        LoopTest::SetUp();
        if (usable()) installMessageBox(app.get());
    }
    /// The file of a case in full, empty without one.
    std::string full(const char* path) const { return path ? root + path : ""; }
    /// Shows a dialog until the steps have closed it.
    void run(CDialogWin& dialog, const char* what) {
        for (const std::string& step : split(what))
            if (step.starts_with("type:"))
                later("type --delay 1 " + step.substr(5));
            else if (step.find(':') != step.npos)
                later([this, step] { useMouse(step); });
            else
                later("key " + step);
        bool closed = true;
        whenever([&] { return !dialog.visible; },
                 [&] {
                     closed = !dialog.visible;
                     dialog.hide();
                 });
        dialog.showModal();
        EXPECT_TRUE(closed) << what;
        steps.clear();
        app->killTimer(clock);
    }
    static CCtrl* find(CGroup* group, const std::string& id) {
        for (CCtrl* c : group->controls) {
            if (c->id == id.c_str()) return c;
            CCtrl* inner = c->category == catGroup ? find(static_cast<CGroup*>(c), id) : nullptr;
            if (inner) return inner;
        }
        return nullptr;
    }
    /// The middle of a row, by its name, as "first", or "last" of those that are shown.
    static int rowAt(CListbox* list, const std::string& name) {
        int line = name == "last" ? (list->height - 2) / list->itemHeight - 1 : 0;
        for (int i = 0; i < list->items.getCount(); i++)
            if (list->row(i)->id == name.c_str()) line = i;
        return 1 + line * list->itemHeight + list->itemHeight / 2;
    }
    void useMouse(std::string step) {
        std::replace(step.begin(), step.end(), ':', ' ');
        const std::vector<std::string> words = split(step);
        CWin* dialog = app->modalWin;
        CCtrl* ctrl = find(dialog->clientGroup, words[1]);
        if (words[0] == "drag" && ctrl) ctrl = find(static_cast<CGroup*>(ctrl), "scroll");
        if (!ctrl) return ADD_FAILURE() << step, void();
        CPoint at = asPoint(ctrl->width / 2, words[0] == "drag" ? 20 : ctrl->height / 2);
        if (words.size() > 2) at.y = rowAt(static_cast<CListbox*>(ctrl), words[2]);
        at = addPos(at, addPos(dialog->getPos(true), dialog->controlPos(ctrl)));
        xdotool("mousemove " + std::to_string(at.x) + " " + std::to_string(at.y));
        if (words[0] == "drag")
            xdotool("mousedown 1 mousemove_relative 0 400 mouseup 1");
        else
            xdotool(words[0] == "double" ? "click --repeat 2 --delay 20 1" : "click 1");
    }

    const TempFolder folder;
    std::string root; ///< of the folder, with a separator at its end
};

struct FileCase {
    const char* keys;
    const char* path; ///< below the root; null for no result
};

} // namespace

/// The name has the focus; Shift-Tab leads to the list, then over the places and "New folder" to
/// the path.
TEST_F(DialogTest, AFileIsOpened) {
    const FileCase cases[] = {
        {"shift+Tab End Return", "song.qv"}, // sound.wav is none of them
        {"shift+Tab type:al Return Down Return", "alpha/inner.qv"},
        {"shift+Tab type:so Return", "song.qv"},
        {"type:so Return", "song.qv"},
        {"type:ot Tab Return", "Other.qv"},
        {"type:Other Delete Return", "Other.qv"},
        {"type:alpha/../beta/../al Return type:in Return", "alpha/inner.qv"},
        {"type:~/alpha/inner.qv Return", "alpha/inner.qv"},
        {"type:.hidden.qv Return", ".hidden.qv"},
        {"type:missing Return Escape", nullptr},
        {"shift+Tab Home Return BackSpace Down Down Return", "Other.qv"},
        {"shift+Tab Home Return alt+Up End Return", "song.qv"},
        {"shift+Tab shift+Tab shift+Tab shift+Tab type:~/al Return End Return", "alpha/inner.qv"},
        {"shift+Tab shift+Tab shift+Tab shift+Tab type:/gone/far Return Escape", nullptr},
        {"Down Escape", nullptr},
        {"type:song.qv Tab Tab Return", nullptr},
        {"click:files:song.qv click:Open", "song.qv"},
        {"click:files:song.qv click:Cancel", nullptr},
        {"double:files:alpha double:files:inner.qv", "alpha/inner.qv"},
        {"click:files:alpha click:Open click:up End Return", "song.qv"},
        {"double:files:alpha click:places:first click:files:Other.qv click:Open", "Other.qv"},
        {"double:files:beta double:files:many drag:files double:files:last", "beta/many/49.qv"}};
    for (const FileCase& c : cases) {
        CFileWin dialog(win.get(), "Open", ".QV", root.c_str(), "", false);
        run(dialog, c.keys);
        EXPECT_EQ(dialog.result, c.path != nullptr) << c.keys;
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << c.keys;
    }
}

TEST_F(DialogTest, AFileIsSaved) {
    const FileCase cases[] = {{"type:new Return", "new.qv"},
                              {"type:new.QVS Return", "new.QVS"},
                              {"type:new.song Return", "new.song.qv"},
                              {"type:so Return", "so.qv"}, // not completed to what is there
                              {"type:al Return", "al.qv"},
                              {"type:al Tab type:x Return", "alpha/x.qv"},
                              {"type:so Tab Return y", "song.qv"},
                              {"type:song Return y", "song.qv"},
                              {"type:song Return n Escape", nullptr},
                              {"type:song Return Escape Escape", nullptr},
                              {"type:beta/x Return", "beta/x.qv"},
                              {"type:beta Return type:x Tab Return", "beta/x.qv"},
                              {"type:gone/x Return Escape", nullptr},
                              {"Return", "song2.qv"},
                              {"click:files:song.qv click:Save click:Yes", "song.qv"},
                              {"double:files:song.qv click:No click:Cancel", nullptr},
                              {"double:files:beta click:Save", "beta/song2.qv"}};
    for (const FileCase& c : cases) {
        CFileWin dialog(win.get(), "Save", ".QV|.QVS", root.c_str(), "song2", true);
        run(dialog, c.keys);
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << c.keys;
    }
}

TEST_F(DialogTest, AFolderIsChosen) {
    const FileCase cases[] = {
        {"Return", ""},
        {"Down Tab Return", "alpha/"},
        {"type:~/be Return", "beta/"},
        {"shift+Tab End Return Tab Return", "beta/"},
        {"type:song.qv Return Escape", nullptr},
        {"shift+Tab shift+Tab shift+Tab Return type:made Return Tab Tab Tab Return", "made/"},
        {"click:files:alpha click:Select", "alpha/"},
        {"double:files:alpha click:up double:files:beta click:Select", "beta/"},
        {"click:newfolder type:made2 Return click:Select", "made2/"}};
    for (const FileCase& c : cases) {
        CFolderWin dialog(win.get(), "Add folder", (root + "gone/deep").c_str());
        run(dialog, c.keys);
        EXPECT_EQ(dialog.path.asChar(), full(c.path)) << c.keys;
    }
}

TEST_F(DialogTest, ATextIsAskedFor) {
    struct Case {
        const char* keys;
        bool result;
        const char* text;
    };
    const Case cases[] = {{"Return", true, "old"},
                          {"type:new_name Return", true, "new_name"},
                          {"End type:er Tab Return", true, "older"},
                          {"type:new Escape", false, "old"},
                          {"type:new Tab Tab space", false, "old"},
                          {"BackSpace space Return Escape", false, "old"}};
    int shortcuts = 0;
    Target global([&] { shortcuts++; });
    global.takes = true;
    app->onKey = global.key();
    for (const Case& c : cases) {
        CTextWin dialog(win.get(), "Name", "old");
        run(dialog, c.keys);
        EXPECT_EQ(dialog.result, c.result) << c.keys;
        EXPECT_STREQ(dialog.text.asChar(), c.text) << c.keys;
    }
    EXPECT_EQ(shortcuts, 0); // the program's keys do not act behind a dialog
    delete app->onKey;
    app->onKey = nullptr;
}

/// Focus: square and strip, red, green, blue, code, palette, OK.
TEST_F(DialogTest, AColourIsAskedFor) {
    struct Case {
        const char* keys;
        unsigned rgb;
    };
    const Case cases[] = {{"Return", 0x804000},
                          {"Tab Tab type:255 Return", 0x80ff00},
                          {"Tab Tab Tab Tab type:#12aBff Return", 0x12abff},
                          {"Tab Tab Tab Tab type:zzz Tab Tab Return", 0x804000},
                          {"Tab Tab Tab Tab type:zz Return type:010203 Return", 0x010203},
                          {"type:x Escape", 0x804000}};
    for (const Case& c : cases) {
        CColourWin dialog(win.get(), "Colour", hexColor(0x804000));
        run(dialog, c.keys);
        EXPECT_EQ(dialog.colour, hexColor(c.rgb)) << c.keys;
    }
}
