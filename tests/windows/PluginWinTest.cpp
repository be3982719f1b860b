#include "MainFixture.h"

#include "effects/Inserts.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CForeign.h"
#include "gui/controls/CPopup.h"
#include "panels/plugins/CVSTWin.h"
#include "plugins/CVST.h"
#include "plugins/MadeFile.h"
#include "plugins/MadePlugin.h"
#include "plugins/remote/RemotePlugin.h"
#include "shell/Pages.h"
#include "shell/Rooms.h"
#include "support/Places.h"
#include "ui/PluginMenu.h"
#include "ui/PluginShelf.h"

#include <csignal>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>

/// Plug-ins under the mouse and the keys, with copies of the made one in a folder of the user's.
class PluginWinTest : public MainWinTest {
protected:
    void SetUp() override {
        MainWinTest::SetUp();
        set("VSTFolders", "0", at("").c_str());
    }
    void TearDown() override {
        page = nullptr;
        MainWinTest::TearDown();
    }
    std::string file(const std::string& name) { return madeFile(at(""), name); }
    MadePlugin* seen(const std::string& name) {
        void* library = dlopen(file(name).c_str(), RTLD_LAZY);
        return reinterpret_cast<MadePlugin* (*)()>(dlsym(library, "latestMade"))();
    }
    COutputChannel* strip() { return host->getAudioOut()->output(); }
    /// An insert of the master, with its window open.
    CVST* open(const std::string& name, bool trusted = true) {
        PluginProcesses& processes = *win->rooms->plugins.processes;
        processes.program = builtFile("bin/sondrava-plugins").c_str();
        if (trusted) processes.trust.set(file(name).c_str(), true);
        auto* c =
            static_cast<CVST*>(addInsert(strip(), newPlugin(host.get(), file(name).c_str()), -1));
        win->openEditor(c);
        page = win->pages->editorOf(c);
        EXPECT_TRUE(pumpUntil([this] { return page->mapped; }));
        settle();
        return c;
    }
    CCtrl* find(CGroup* in, const char* id) {
        for (auto* c : in->controls) {
            if (!c->visible) continue;
            if (c->id == id) return c;
            if (c->category != catGroup && c->category != catGroupLike) continue;
            if (CCtrl* found = find(static_cast<CGroup*>(c), id)) return found;
        }
        return nullptr;
    }
    void mouseTo(const char* id, int x, int y) {
        settle();
        CCtrl* c = find(page->clientGroup, id);
        ASSERT_NE(c, nullptr) << id;
        const CPoint screen = page->getPos(true), in = page->controlPos(c);
        act({"mousemove", std::to_string(screen.x + in.x + x),
             std::to_string(screen.y + in.y + y)});
    }
    void click(const char* id, int x = 8, int y = 8) {
        mouseTo(id, x, y);
        act({"click", "1"});
        ASSERT_TRUE(loaded());
    }

    CCompEditor* page = nullptr;
};

/// Without an own window each parameter is a line: what a drag shows is what stays, in one step.
TEST_F(PluginWinTest, LinesSetParameters) {
    start();
    CVST* c = open("gain");
    CCtrl* row = find(page->clientGroup, "parameter 0");
    ASSERT_NE(row, nullptr);
    const int middle = row->width / 2;
    mouseTo("parameter 0", middle, 8);
    act({"mousedown", "1"});
    mouseTo("parameter 0", middle + 20, 8);
    mouseTo("parameter 0", middle + 40, 8);
    const float shown = c->param(0);
    act({"mouseup", "1"});
    EXPECT_GT(c->param(0), 0.5f);
    EXPECT_EQ(c->param(0), shown);
    const float set = c->param(0);
    mouseTo("parameter 0", middle - 40, 8); // no double click
    act({"mousedown", "1"});
    mouseTo("parameter 0", middle - 20, 8);
    mouseTo("parameter 0", middle, 8);
    EXPECT_NE(c->param(0), set);
    key("Escape");
    act({"mouseup", "1"});
    EXPECT_EQ(c->param(0), set) << "Escape";
    page->setFocus(true);
    page->setKeyCtrl(row);
    ASSERT_TRUE(pumpUntil([this] { return page->hasFocus(); }));
    for (const char* k : {"2", "5", "Return"}) key(k);
    EXPECT_FLOAT_EQ(c->param(0), 0.25f);
    for (const float former : {set, 0.5f}) {
        host->undoClicked();
        ASSERT_TRUE(loaded());
        EXPECT_EQ(c->param(0), former);
    }
    Description d;
    row->describe(d, Accessible::wholeCtrl);
    EXPECT_EQ(d.role, Role::slider);
    EXPECT_EQ(d.text, "0.50 x");
    // An empty macro takes the line that is touched next, and turns it.
    click("turned");
    click("macro1", 20, 30);
    row = find(page->clientGroup, "parameter 0");
    page->setKeyCtrl(row);
    key("Home");
    ASSERT_TRUE(pumpUntil([&] { return c->getMacroParam(0) == 0; }));
    page->setKeyCtrl(find(page->clientGroup, "macro1"));
    key("End");
    EXPECT_EQ(c->param(0), 1.0f);
    EXPECT_GE(row->win->controlPos(row).y, 100) << "below the macros";
    click("turned");
    EXPECT_EQ(find(page->clientGroup, "macros"), nullptr);
    click("power");
    EXPECT_EQ(c->enabled, 0);
    EXPECT_FALSE(seen("gain")->running);
}

/// A file that a plug-in works with is a line too, which asks for another one.
TEST_F(PluginWinTest, LinesChooseFiles) {
    start();
    CVST* c = open("patched.lv2");
    const std::string chosen = at("one");
    std::ofstream(chosen) << "content";
    const auto shown = [&](const char* text) {
        return pumpUntil([&] {
            auto* row = static_cast<CButton*>(find(page->clientGroup, "file 0"));
            return row && row->text == text;
        });
    };
    click("list");
    ASSERT_TRUE(shown("File: none"));
    keysInDialog("Choose file", {"Escape"});
    click("file 0");
    keysInDialog("Choose file", {"ctrl+a"});
    typeInDialog("Choose file", chosen);
    keysInDialog("Choose file", {"Return"});
    click("file 0");
    ASSERT_TRUE(shown("File: one"));
    EXPECT_EQ(c->loaded()->files()[0].path, chosen.c_str());
    EXPECT_EQ(host->undoList.getCount(), 2); // it was inserted
    host->undoClicked();
    ASSERT_TRUE(shown("File: none"));
}

/// Its own window lies in ours, gets the keys that are not the song's, and is closed before it.
TEST_F(PluginWinTest, ShowsTheWindowOfAPlugin) {
    start();
    CVST* c = open("drawn");
    MadePlugin* p = seen("drawn");
    ASSERT_NE(p->editor, nullptr);
    ASSERT_TRUE(pumpUntil([&] { return find(page->clientGroup, "plug-in")->width == 300; }));
    click("plug-in", 50, 50);
    const auto keysOf = [&](const char* name) {
        const int before = p->editor->keys;
        key(name);
        loaded();
        return p->editor->keys - before;
    };
    EXPECT_EQ(keysOf("x"), 1);
    EXPECT_EQ(keysOf("space"), 0);
    EXPECT_TRUE(pumpUntil([&] { return host->playing != 0; })) << "the song's key";
    host->stop();
    click("keys");
    click("plug-in", 50, 50);
    EXPECT_EQ(keysOf("space"), 1);
    EXPECT_EQ(host->playing, 0);
    p->effect.dispatcher(&p->effect, 50, 5, 500, nullptr, 350.0f);
    ASSERT_TRUE(pumpUntil([&] { return find(page->clientGroup, "plug-in")->width == 500; }));
    EXPECT_TRUE(pumpUntil([&] { return page->clientGroup->height >= 350; }));
    click("list");
    EXPECT_EQ(p->editor, nullptr);
    EXPECT_NE(find(page->clientGroup, "parameter 2"), nullptr);
    click("list");
    ASSERT_NE(p->editor, nullptr);
    removeInsert(strip(), c);
    ASSERT_TRUE(loaded());
    EXPECT_EQ(p->editor, nullptr);
    host->undoClicked();
    ASSERT_TRUE(loaded());
    EXPECT_NE(p->editor, nullptr) << "it was open";
    page = nullptr;
    stop();
    EXPECT_EQ(seen("drawn"), nullptr) << "closed with its project";
}

/// Of other formats too, in the program and in a process of its own: what the user does there is
/// one step.
TEST_F(PluginWinTest, TakesTheHandOfAnyFormat) {
    start();
    for (const std::string name :
         {"drawn.lv2", "drawn.clap", "drawn.vst3", "apart.lv2", "apart.clap", "apart.vst3"}) {
        SCOPED_TRACE(name);
        CVST* c = open(name, name.starts_with("drawn"));
        ASSERT_TRUE(pumpUntil([&] { return find(page->clientGroup, "plug-in")->width == 300; }));
        EXPECT_EQ(c->param(0), 0.5f);
        auto* place = static_cast<CForeign*>(find(page->clientGroup, "plug-in"));
        ASSERT_TRUE(pumpUntil([&] { return place->guest() != 0; }));
        const int before = host->undoList.getCount();
        click("plug-in", 50, 50);
        ASSERT_TRUE(pumpUntil([&] { return c->param(0) == 0.125f; }));
        ASSERT_TRUE(pumpUntil([&] { return host->undoList.getCount() == before + 1; }));
        host->undoClicked();
        EXPECT_TRUE(pumpUntil([&] { return c->param(0) == 0.5f; }));
        click("list");
        ASSERT_NE(find(page->clientGroup, "parameter 2"), nullptr);
        removeInsert(strip(), c);
        ASSERT_TRUE(loaded());
    }
}

/// Of one in a process of its own: its window lies in ours, it is told when the process ends, comes
/// back once with its window, then by a click; and it goes into the program when the user says so.
TEST_F(PluginWinTest, RestartsWhatHasFailed) {
    start();
    CVST* c = open("drawn", false);
    const auto guest = [&] {
        auto* place = static_cast<CForeign*>(find(page->clientGroup, "plug-in"));
        return place ? place->guest() : 0;
    };
    const auto process = [c] { return static_cast<RemotePlugin*>(c->loaded())->helperProcess(); };
    ASSERT_TRUE(pumpUntil([&] { return find(page->clientGroup, "plug-in")->width == 300; }));
    click("list");
    mouseTo("parameter 0", find(page->clientGroup, "parameter 0")->width / 2, 8);
    act({"mousedown", "1"});
    mouseTo("parameter 0", find(page->clientGroup, "parameter 0")->width / 2 + 40, 8);
    act({"mouseup", "1"});
    const float set = c->param(0);
    EXPECT_GT(set, 0.5f);
    click("list");
    for (int ends = 0; ends < 2; ends++) {
        ASSERT_TRUE(pumpUntil([&] { return guest() != 0; }));
        const int before = process();
        kill(before, SIGKILL);
        ASSERT_TRUE(ends == 1 || pumpUntil([&] { return process() != before && !c->failed(); }));
    }
    ASSERT_TRUE(pumpUntil([&] { return c->failed(); }));
    ASSERT_TRUE(pumpUntil([&] { return find(page->clientGroup, "again") != nullptr; }));
    EXPECT_EQ(page->id, "drawn (Audio Out): It crashed (Killed).");
    click("again");
    ASSERT_TRUE(pumpUntil([&] { return guest() != 0; }));
    EXPECT_EQ(c->param(0), set);
    EXPECT_TRUE(pumpUntil([&] { return find(page->clientGroup, "again") == nullptr; }));
    page->setFocus(true);
    page->setKeyCtrl(find(page->clientGroup, "more"));
    ASSERT_TRUE(pumpUntil([this] { return page->hasFocus(); }));
    inMenu({"Down", "Return"});
    key("Return");
    ASSERT_TRUE(pumpUntil([&] { return !c->loaded()->isolated(); }));
    EXPECT_TRUE(win->rooms->plugins.processes->trust.trusted(c->fileName));
    EXPECT_EQ(c->param(0), set);
    EXPECT_NE(seen("drawn")->editor, nullptr);
}

/// A plug-in that was not found is given way to by another format of it, which the user chooses by
/// keys; as a step.
TEST_F(PluginWinTest, OffersAnotherFormat) {
    start();
    PluginShelf& shelf = win->rooms->plugins;
    shelf.scan.helper = shelf.processes->program = builtFile("bin/sondrava-plugins").c_str();
    const std::string gone = file("gain.clap");
    CMemoryStream stream;
    newPlugin(host.get(), gone.c_str())->write(&stream);
    std::filesystem::remove(gone);
    shelf.scan.add({file("gain.lv2").c_str()});
    ASSERT_TRUE(pumpUntil([&] { return !shelf.scan.busy(); }));
    CVST* c = open("gain.lv2", false);
    removeInsert(strip(), c);
    auto lost = std::make_unique<CVST>(host.get());
    lost->init();
    const int bytes = int(stream.getPos());
    stream.seek(0, seekStart);
    keysInDialog("File not found", {"Escape"});
    lost->read(&stream, bytes);
    c = static_cast<CVST*>(addInsert(strip(), std::move(lost), -1));
    win->openEditor(c);
    page = win->pages->editorOf(c);
    ASSERT_TRUE(pumpUntil([this] { return page->mapped && find(page->clientGroup, "instead"); }));
    page->setFocus(true);
    page->setKeyCtrl(find(page->clientGroup, "instead"));
    ASSERT_TRUE(pumpUntil([this] { return page->hasFocus(); }));
    inMenu({"Down", "Return"});
    key("Return");
    ASSERT_TRUE(pumpUntil([&] { return c->opened(); }));
    EXPECT_EQ(PluginFile(c->fileName).file, file("gain.lv2").c_str());
    ASSERT_TRUE(pumpUntil([this] { return !find(page->clientGroup, "instead"); }));
    host->undoClicked();
    EXPECT_TRUE(pumpUntil([&] { return !c->opened() && find(page->clientGroup, "instead"); }));
    EXPECT_EQ(c->fileName, gone.c_str());
}

/// From the menu of an insert, by keys alone; what is chosen comes first the next time.
TEST_F(PluginWinTest, InsertsFromTheMenu) {
    start();
    std::ofstream(at("broken.so")) << "no library";
    PluginShelf& shelf = win->rooms->plugins;
    shelf.scan.helper = shelf.processes->program = builtFile("bin/sondrava-plugins").c_str();
    for (const char* name : {"gain", "drawn", "synth", "broken"})
        shelf.scan.add({file(name).c_str()});
    ASSERT_TRUE(pumpUntil([&] { return !shelf.scan.busy(); }));
    EXPECT_EQ(shelf.list.usable().size(), 3u);
    const auto choose = [&](const std::vector<std::string>& keys) {
        inMenu(keys);
        const int before = strip()->inserts.getCount();
        auto* popup = new CPopup(app.get(), win.get());
        popup->autoDelete = true;
        fillPluginMenu(popup, *win, PluginUse::effect,
                       [this](auto made) { addInsert(strip(), std::move(made), -1); });
        popup->popup(10, 10, true);
        EXPECT_TRUE(loaded());
        return strip()->inserts.getCount() > before ? strip()->inserts.last()->id : CStr();
    };
    EXPECT_EQ(choose({"Right", "Down", "Return"}), "gain"); // "Test makers": drawn, gain
    EXPECT_EQ(choose({"Return"}), "gain") << "the latest first";
}
