#include "ArrangeFixture.h"

#include "audiofiles/CSample.h"
#include "gui/access/LiveTree.h"

#include <cctype>
#include <filesystem>

namespace {

constexpr const char *exportTitle = "Export Project (wav, aif, mp3)", *saveTitle = "Save as";

/// One small song, made by the mouse, by the keys, and by what assistive technology asks for: a
/// recording is brought in, copied behind itself, the copy is reversed, and all is exported.
class ThreeWaysTest : public ArrangeFixture {
protected:
    using Act = void (ThreeWaysTest::*)(AccessId);

    /// With these words, whole ones.
    static bool begins(const std::string& text, const std::string& words) {
        return text.rfind(words, 0) == 0 && !std::isalnum(text.c_str()[words.size()]);
    }
    /// The first that shows and whose name begins so; 0 without one.
    AccessId find(const std::string& name, AccessId under) {
        LiveTree& tree = *app->access;
        for (const AccessId id : tree.children(under)) {
            const Description d = tree.describe(id);
            if (begins(d.name, name) && !d.bounds.empty()) return id;
            if (const AccessId inner = find(name, id)) return inner;
        }
        return 0;
    }
    void press(AccessId id) { EXPECT_TRUE(app->access->press(id)); }
    void click(AccessId id) {
        const CRect box = app->access->describe(id).bounds;
        runCommand({"xdotool", "mousemove", std::to_string((box.left + box.right) / 2),
                    std::to_string((box.top + box.bottom) / 2), "click", "1"});
    }
    void on(Act by, const std::string& name) {
        AccessId id = 0;
        ASSERT_TRUE(pumpUntil([&] { return (id = find(name, 0)) != 0; })) << name;
        (this->*by)(id);
        settle();
    }
    /// Once a menu is open; it has a loop of its own.
    void inMenuOn(Act by, const char* name) {
        menuStep = [this, by, name] {
            const auto* popup = app->menus.last();
            const AccessId id = find(name, app->access->idOf(popup));
            if (id) (this->*by)(id);
            return id != 0;
        };
    }
    void choose(Act by, const char* menu, const char* entry) {
        inMenuOn(by, entry);
        on(by, menu);
    }
    void watchMenus() {
        watch = new ProbeCtrl(win.get(), "watch", 0, 0, 1, 1);
        win->addControl(watch);
        watch->onTick = [this] {
            if (app->menus.empty()) {
                if (acted) menuStep = nullptr;
                acted = false;
                wait = 0;
            } else if (menuStep && wait-- <= 0) {
                acted = menuStep();
                wait = acted ? again : 0; // a press before the menu is on the screen is lost
            }
        };
        app->addTimer(watch, 30, true);
    }
    void inDialogOn(const char* title, Act by, const char* name) {
        inDialog(title,
                 [this, by, name] { (this->*by)(find(name, app->access->idOf(app->modalWin))); });
    }
    AccessId nameField() {
        for (auto* c : app->modalWin->clientGroup->controls)
            if (c->id == "name") return app->access->idOf(c);
        return 0;
    }

    void begin(const char* name) {
        ASSERT_TRUE(load(kindEmpty));
        host->projectFile = at(std::string(name) + ".qv").c_str();
    }
    bool imported() {
        return pumpUntil([&] { return tracks() == 1 && parts(0) == 1; }) && loaded();
    }
    bool done(const char* step) {
        return pumpUntil([&] { return host->undoText() == step; }) && loaded();
    }
    void exportBy(Act by) {
        inDialogOn(exportTitle, by, "Save");
        inDialogOn(saveTitle, by, "Save");
        choose(by, "File", "Export Project");
    }
    std::string exported(const char* name) {
        const std::string file = std::string(name) + ".wav";
        EXPECT_TRUE(pumpUntil([&] { return std::filesystem::exists(at(file)) && !app->modalWin; }))
            << file;
        return folder.read(file.c_str());
    }

    std::string byMouse(const std::string& sound) {
        begin("mouse");
        drop(sound, song(), song()->width / 2, song()->height / 2);
        EXPECT_TRUE(imported());
        CPart* made = part(0, 0);
        EXPECT_TRUE(made->pos == 0 || (drag(point(made->pos + 400, 0), point(400, 0)), loaded()));
        drag(point(400, 0), point(400 + 1920, 0), "ctrl");
        EXPECT_TRUE(done("Copy"));
        inMenuOn(&ThreeWaysTest::click, "Reverse");
        clickAt(point(1920 + 400, 0), "3");
        EXPECT_TRUE(done("Reverse"));
        exportBy(&ThreeWaysTest::click);
        return exported("mouse");
    }
    std::string byKeys(const std::string& sound) {
        begin("keys");
        const auto inMenuOf = [&](int menu, const std::vector<std::string>& keys) {
            inMenu(keys);
            key("F10");
            for (int i = 0; i < menu; i++) key("Right");
            key("Down");
        };
        inDialog("Import audio", [this] { runCommand({"xdotool", "key", "ctrl+a"}); });
        typeInDialog("Import audio", sound);
        keysInDialog("Import audio", {"Return"});
        inMenuOf(0, {"i", "Return"});
        EXPECT_TRUE(imported());
        key("ctrl+a");
        key("ctrl+d");
        EXPECT_TRUE(done("Duplicate"));
        inMenuOf(5, {"r", "Return"});
        EXPECT_TRUE(done("Reverse"));
        keysInDialog(exportTitle, {"Return"});
        keysInDialog(saveTitle, {"Return"});
        key("F5");
        return exported("keys");
    }
    std::string byTree(const std::string& sound) {
        begin("tree");
        inDialog("Import audio", [this, sound] {
            EXPECT_TRUE(app->access->setText(nameField(), sound));
            press(find("Open", app->access->idOf(app->modalWin)));
        });
        choose(&ThreeWaysTest::press, "File", "Import audio");
        EXPECT_TRUE(imported());
        on(&ThreeWaysTest::press, "a, a, bar 1");
        choose(&ThreeWaysTest::press, "Edit", "Duplicate");
        EXPECT_TRUE(done("Duplicate"));
        choose(&ThreeWaysTest::press, "Part", "Reverse");
        EXPECT_TRUE(done("Reverse"));
        exportBy(&ThreeWaysTest::press);
        return exported("tree");
    }

private:
    static constexpr int again = 30; ///< ticks
    ProbeCtrl* watch = nullptr;
    int wait = 0; ///< ticks
    bool acted = false;
    std::function<bool()> menuStep;
};

} // namespace

TEST_F(ThreeWaysTest, LeadToTheSameSong) {
    set("options", "savePrompt", "0");
    start();
    win->move(0, 0, 800, 560);
    watchMenus();
    app->access = std::make_unique<LiveTree>(app.get());
    const std::string path = at("a.wav");
    ASSERT_EQ(
        runCommand({"sox", "-n", "-r", "44100", "-c", "1", path, "synth", "1", "sine", "200:2000"}),
        0);
    const std::string mouse = byMouse(path), keys = byKeys(path), tree = byTree(path);
    EXPECT_TRUE(mouse == keys && keys == tree)
        << mouse.size() << " " << keys.size() << " " << tree.size();
    CSample out;
    ASSERT_TRUE(out.open(at("keys.wav").c_str()));
    EXPECT_GE(out.frames, 88200) << "the recording and its copy";
}
