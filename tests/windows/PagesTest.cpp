#include "MainFixture.h"

#include "engine/CGroupCh.h"
#include "engine/DeviceComps.h"
#include "gui/controls/CDocker.h"
#include "gui/controls/CEdit.h"
#include "project/ProjectFile.h"
#include "shell/DockBar.h"
#include "shell/MainProjectUi.h"
#include "shell/PageRecords.h"
#include "shell/Pages.h"
#include "shell/Rooms.h"
#include "ui/Commands.h"

#include <X11/Xlib.h>

#include <climits>

namespace {

constexpr int editorStyle = winCaption | winSizable | winMaxButton | winDockable;

/// Two components with an editor each, beside the song's.
class PagesTest : public MainWinTest {
protected:
    void begin() {
        start();
        ASSERT_TRUE(load(kindDefault));
        for (int i = 0; i < 2; i++) {
            comps[i] = new CGroupCh(qv);
            qv->comps.add(comps[i]);
            edits[i] = make(i);
        }
    }
    std::unique_ptr<CCompEditor> make(int i) {
        return std::make_unique<CCompEditor>(app.get(), win.get(), i ? "two" : "one", 50, 50, 200,
                                             150, editorStyle, comps[i], &table);
    }
    void openBoth() {
        for (auto& e : edits) win->pages->open(e.get());
        settle();
    }
    void TearDown() override {
        for (auto& e : edits) e.reset();
        MainWinTest::TearDown();
    }
    /// Names of the pages behind the song's, page of each editor by record, and page in front.
    std::string state() {
        CDocker* docker = win->pages->docker.get();
        std::string text;
        EXPECT_STREQ(docker->getDock(1)->name.asChar(), "Arrangement");
        for (int i = 2; i < docker->docks.getCount(); i++) {
            if (!text.empty()) text += ",";
            text += docker->getDock(i)->name.asChar();
        }
        for (auto& e : edits) {
            const int page = e->dock->page;
            text += " " + std::to_string(page);
            if (e->hasStyle(winMaximized)) text += "m";
            const CDock* wanted = page < 0 ? nullptr : docker->getDock(page);
            const bool follows = docker->dockOf(e.get()) == wanted;
            if (!follows || e->isPage() != (wanted != nullptr)) text += "?"; // its record
        }
        return text + " | " + std::to_string(docker->activeIndex);
    }
    void history(const char* action) {
        win->onAction(win->getAction(action));
        loaded();
    }

    Commands table;
    CComp* comps[2] = {};
    std::unique_ptr<CCompEditor> edits[2];
};

} // namespace

/// Each step has to be undone and done again whole: docks, records and windows.
TEST_F(PagesTest, DockingIsUndone) {
    begin();
    openBoth();
    const struct {
        int editor, where;
        const char* expected;
    } moves[] = {
        {0, -1, "one 2m -1 | 2"},     {1, -1, "one,two 2m 3m | 3"}, {0, 3, "two 2m 2m | 2"},
        {1, -1, "two,two 2m 3m | 3"}, {0, -2, "two -1 2m | 2"},     {0, 2, "two 2m 2m | 2"},
        {1, -2, "two 2m -1 | 2"},     {0, -2, " -1 -1 | 1"},
    };
    std::vector<std::string> states = {state()};
    EXPECT_EQ(states[0], " -1 -1 | 1");
    for (const auto& s : moves) {
        win->dockWin(edits[s.editor].get(), s.where, true);
        settle();
        states.push_back(state());
        EXPECT_EQ(states.back(), s.expected);
    }
    const auto layout = [](const std::string& text) { return text.substr(0, text.find('|')); };
    for (int round = 0; round < 2; round++) {
        for (size_t i = states.size() - 1; i > 0; i--) {
            history("undo");
            EXPECT_TRUE(pumpUntil([&] { return layout(state()) == layout(states[i - 1]); }))
                << "undo of step " << i << ": " << state();
        }
        for (size_t i = 1; i < states.size(); i++) {
            history("redo");
            EXPECT_TRUE(pumpUntil([&] { return layout(state()) == layout(states[i]); }))
                << "redo of step " << i << ": " << state();
        }
    }
    for (const int nowhere : {0, -3, 7}) win->dockWin(edits[0].get(), nowhere, true);
    EXPECT_STREQ(qv->redoText().asChar(), "") << "what does nothing is no step";
    EXPECT_STREQ(qv->undoText().asChar(), "Un-dock");
}

TEST_F(PagesTest, ProjectsKeepTheirPages) {
    begin();
    openBoth();
    win->dockWin(edits[0].get(), -1, true);
    win->dockWin(edits[1].get(), -1, false);
    win->pages->docker->setActive(2);
    MainProjectUi ui(win.get());
    ui.gatherWindows();
    const std::vector<unsigned char> one = {3, 0, 0, 0, 'o', 'n', 'e', 0, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(ui.windows.pages.size(), 3u);
    EXPECT_EQ(ui.windows.pages[1], one);
    EXPECT_EQ(ui.windows.currentPage, 2);
    EXPECT_EQ(ui.windows.modularPage, 0);
    EXPECT_EQ(comps[0]->editorStruct.visible + comps[1]->editorStruct.visible, 2);
    ui.clearWindows();
    EXPECT_EQ(win->editors.getCount(), 0);
    EXPECT_EQ(comps[0]->editorStruct.visible, 0);
    ui.showPages();
    openBoth();
    win->updateDocker();
    EXPECT_EQ(state(), "one,two 2m 3 | 2");

    // Numbers of pages that are not there, as a file may have them.
    for (const int page : {0, -7, 4, INT_MAX, INT_MIN}) {
        ui.clearWindows();
        comps[0]->editorStruct.page = page;
        comps[1]->editorStruct = {INT_MAX, INT_MIN, INT_MAX, -1, 1, 1, 3, INT_MIN};
        ui.windows.currentPage = page;
        ui.showPages();
        openBoth();
        win->updateDocker();
        EXPECT_EQ(state(), "one,two -1 3m | 3");
    }
}

TEST(PageRecords, NamesAreReadFromAnyBytes) {
    const std::string longName(1000, 'n');
    const struct {
        std::vector<unsigned char> bytes;
        std::string name;
    } cases[] = {{{}, "Untitled"},
                 {{2, 0, 0}, "Untitled"},
                 {{0, 0, 0, 0, 'x'}, "Untitled"},
                 {{2, 0, 0, 0, 'x'}, "Untitled"},
                 {{255, 255, 255, 255, 'x'}, "Untitled"},
                 {{255, 255, 255, 127, 'x'}, "Untitled"},
                 {{2, 0, 0, 0, 'h', 'i'}, "hi"},
                 {{3, 0, 0, 0, 'h', 0, 'i', 0}, "h"},
                 {pageRecord(longName.c_str()), longName.substr(0, 64)},
                 {pageRecord("Mixer"), "Mixer"}};
    for (const auto& c : cases) EXPECT_EQ(pageName(c.bytes).asChar(), c.name);
}

/// With real keys and presses: the bar comes and goes, and typing on a page starts no transport.
TEST_F(PagesTest, TheBarTurnsPages) {
    begin();
    CDocker* docker = win->pages->docker.get();
    CCtrl* bar = nullptr;
    for (auto* c : win->clientGroup->controls)
        if (c->id == "dockbar") bar = c;
    ASSERT_NE(bar, nullptr);
    auto* field = new CEdit(edits[0].get(), "field", 20, 20, 100, 20);
    edits[0]->addControl(field);
    openBoth();
    win->dockWin(edits[0].get(), -1, true);
    win->dockWin(edits[1].get(), -1, true);
    win->setFocus(true);
    loaded();
    EXPECT_TRUE(bar->visible);
    const auto click = [&](CWin* on, CCtrl* ctrl, int x, int y) {
        const CPoint corner = on->getPos(true), in = on->controlPos(ctrl);
        act({"mousemove", std::to_string(corner.x + in.x + x), std::to_string(corner.y + in.y + y),
             "click", "1"});
    };
    const std::pair<const char*, int> keys[] = {{"F2", 0}, {"F2", 1}, {"F1", 0}, {"F1", 3}};
    for (const auto& [name, page] : keys) {
        key(name);
        EXPECT_EQ(docker->activeIndex, page) << name;
    }
    const CRect tab = docker->tabRect(docker->getDock(2), DockBar::tabHeight);
    click(win.get(), bar, tab.left + 5, 5);
    EXPECT_EQ(docker->activeIndex, 2);
    click(edits[0].get(), field, 5, 5);
    act({"type", "a b"});
    EXPECT_STREQ(field->text.asChar(), "a b");
    EXPECT_FALSE(qv->playing);
    win->setPos(-150, 0); // the screen is narrower than the window
    settle();
    click(win.get(), bar, bar->width - 10, 9); // the button that closes
    EXPECT_FALSE(edits[0]->visible);
    EXPECT_EQ(docker->activeIndex, 1);
    EXPECT_TRUE(win->getAction("nextpage")->isReady());
    win->pages->closeDocked();
    EXPECT_EQ(docker->activeIndex, 0);
    EXPECT_FALSE(bar->visible);
    EXPECT_FALSE(win->getAction("nextpage")->isReady());
}

/// A component is edited in the window that is entered for its type: one, which is kept.
TEST_F(PagesTest, TheTableOfEditorsOpensThem) {
    begin();
    auto* comp = new CAudioOut(qv); // a kind that has none
    qv->comps.add(comp);
    EXPECT_FALSE(win->hasEditor(comp));
    comp->edit(true);
    EXPECT_EQ(win->pages->editorOf(comp), nullptr);
    win->rooms->editors.enter(comp->type, [](Workspace& workspace, CComp& of) {
        CWin* owner = workspace.mainWindow();
        return std::make_unique<CCompEditor>(owner->app, owner, of.id, 50, 50, 200, 150,
                                             editorStyle, &of, &workspace.commands());
    });
    comp->edit(true);
    settle();
    const auto* editor = win->pages->editorOf(comp);
    ASSERT_TRUE(editor && editor->visible);
    comp->edit(false);
    EXPECT_EQ(win->pages->editorOf(comp), nullptr);
    comp->edit(true);
    EXPECT_EQ(win->pages->editorOf(comp), editor);
    hooks->deleteEditors(comp);
    EXPECT_EQ(win->pages->editorOf(comp), nullptr);
}

/// The song has a page whatever its project holds of pages; who closes it finds a way back, and no
/// key reaches a song that is out of sight. None of that is a change.
TEST_F(PagesTest, TheSongIsOnAPage) {
    start();
    const auto songPage = [this] { return win->pages->editorOf(seq()); };
    const auto front = [this] { return win->pages->current(); };
    ASSERT_TRUE(load(kindSequencer));
    ASSERT_TRUE(songPage() && front() == songPage());
    const CStr path = folder.write("song.qv", "");
    host->projectFile = path;
    seq()->editorStruct = {}; // as a project without pages has it
    ProjectUi plain;
    ASSERT_TRUE(saveProject({host.get(), &win->flows->mixer, &plain}, path));
    ASSERT_TRUE(load(kindFile, path));
    EXPECT_TRUE(songPage() && front() == songPage());
    EXPECT_FALSE(host->modified());
    EXPECT_STREQ(host->undoText().asChar(), "");

    seq()->selectAll();
    win->onAction(win->getAction("closeall"));
    ASSERT_EQ(front(), nullptr);
    for (const char* k : {"Delete", "ctrl+x", "ctrl+d", "m", "ctrl+i"}) key(k);
    EXPECT_TRUE(loaded());
    EXPECT_STREQ(host->undoText().asChar(), "") << "unseen";
    ASSERT_TRUE(win->flows->saveClicked());
    ASSERT_TRUE(load(kindFile, path));
    EXPECT_TRUE(!songPage() && win->pages->firstInFront()) << "as it was saved";
    key("F8");
    EXPECT_TRUE(pumpUntil([&] { return songPage() && front() == songPage(); })) << "by its key";

    win->dockWin(songPage(), -2, false);
    EXPECT_TRUE(pumpUntil([&] { return songPage()->hasFocus(); }));
    EXPECT_GE(songPage()->width, 480) << "not as small as a window can be";
    key("Delete");
    EXPECT_TRUE(pumpUntil([&] { return !seq()->getProg()->hasParts(); })) << "keys on the screen";
    key("ctrl+z");
    EXPECT_TRUE(pumpUntil([&] { return seq()->getProg()->hasParts(); }));
    ASSERT_TRUE(win->flows->saveClicked());
    ASSERT_TRUE(load(kindFile, path));
    EXPECT_TRUE(songPage() && !songPage()->isPage()) << "where it was";
    ASSERT_TRUE(load(kindModular));
    EXPECT_EQ(front(), nullptr);
    EXPECT_FALSE(win->getAction("arrangement")->isReady());
}

/// What is asked of a window manager may be done late, when the window is a page already, and would
/// move it there: so a page asks for nothing.
TEST_F(PagesTest, APageAsksNoWindowManager) {
    begin();
    Display* manager = XOpenDisplay(nullptr);
    ASSERT_TRUE(manager);
    XSelectInput(manager, DefaultRootWindow(manager), SubstructureRedirectMask);
    XSync(manager, False);
    edits[0] = make(0);
    comps[0]->editorStruct.page = comps[0]->editorStruct.maximized = 1;
    win->pages->open(edits[0].get());
    settle();
    XSync(manager, False);
    int asked = 0;
    for (XEvent event; XPending(manager);) {
        XNextEvent(manager, &event);
        asked +=
            event.type == ConfigureRequest && event.xconfigurerequest.window == edits[0]->handle;
    }
    XCloseDisplay(manager);
    EXPECT_EQ(asked, 0);
    const CDocker* docker = win->pages->docker.get();
    EXPECT_EQ(edits[0]->getSize(), asPoint(docker->width, docker->height));
    edits[0]->restore();
    EXPECT_EQ(edits[0]->getSize(), asPoint(300, 300)) << "as its record tells";
}
