#pragma once

#include "base/CIniFile.h"
#include "base/TempFolder.h"
#include "engine/CQV.h"
#include "gui/Keys.h"
#include "gui/TestServer.h"
#include "project/CompTable.h"
#include "sequencer/song/CSeq.h"
#include "shell/AppHooks.h"
#include "shell/CMainWin.h"
#include "shell/ProjectFlows.h"
#include "ui/Song.h"

#include <string>

/// The program without devices: host, main window and timer, with settings in a folder of its own.
/// The clock of the test carries out steps while a dialog's loop runs.
class MainWinTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        inifile = at("settings.ini").c_str();
        set("options", "tempaudiofolder", at("").c_str());
        enterCompTypes();
    }
    void TearDown() override {
        stop();
        GuiTest::TearDown();
    }
    void set(const char* section, const char* key, const CStr& value) {
        CIniFile(inifile).writeString(section, key, value);
    }
    static std::string setting(const char* section, const char* key) {
        return CIniFile(inifile).readString(section, key, "").asChar();
    }
    /// Starts the program; by default with an empty project, without a question.
    void start(const char* with = "1") {
        set("options", "startwith", with);
        host = std::make_unique<CQV>();
        qv = host.get();
        host->editorStruct.width = 900;
        host->editorStruct.height = 500;
        win = std::make_unique<CMainWin>(app.get(), host.get());
        hooks = std::make_unique<AppHooks>(app.get(), win.get());
        win->show(true);
        app->addTimer(win.get(), 40, true);
        host->init();
        win->init();
        clock = new ProbeCtrl(win.get(), "clock", 0, 0, 1, 1);
        win->addControl(clock);
        clock->onTick = [this] { tick(); };
        app->addTimer(clock, 30, true);
        win->begin(calledWith);
        ASSERT_TRUE(pumpUntil([this] { return win->hasFocus(); }));
    }
    /// As a crash does, but for the memory: nothing is asked or written.
    void stop() {
        if (host) host->settingsEnabled = false;
        closeProgram();
    }
    /// What follows when the window has been closed.
    void closeProgram() {
        hooks.reset();
        win.reset();
        host.reset();
        qv = nullptr;
        lastModal = nullptr; // the next one may stand at the same address
    }
    /// Loads what was asked for, and lets the window follow.
    bool load(int kind, const CStr& path = "") {
        win->flows->newProject(kind, path);
        return loaded();
    }
    bool loaded() {
        bool turned = false;
        const int before = ticks;
        return pumpUntil([&] {
            turned = turned || ticks > before + 2;
            return turned && host->tasks->count() == 0 && !win->flows->loading();
        });
    }
    CSeq* seq() { return songOf(host.get()); }
    int tracks() { return seq() ? seq()->tracks.getCount() : -1; }
    /// The path of a file in the test's folder.
    std::string at(const std::string& name) const { return folder.file(name.c_str()).asChar(); }
    /// Notes of two bars, on a track that tells its own tempo.
    std::string midi(const std::string& name) {
        const char bytes[] = "MThd\0\0\0\6\0\0\0\1\3\300MTrk\0\0\0\24"
                             "\0\xff\x51\3\7\241\x21\0\x90\x28\x64\xbc\0\x80\x28\0\0\xff\x2f\0";
        folder.write(name.c_str(), std::string(bytes, sizeof bytes - 1));
        return at(name);
    }
    void key(const std::string& name) { act({"key", name}); }

    /// Presses keys one by one while a menu is open.
    void inMenu(const std::vector<std::string>& keys) { menuKeys = keys; }
    /// Does this at a tick when a modal window of that title is open; in order.
    void inDialog(const std::string& title, const std::function<void()>& step) {
        steps.push_back({title, step});
    }
    void keysInDialog(const std::string& title, const std::vector<std::string>& keys) {
        for (const std::string& k : keys)
            inDialog(title, [k] { runCommand({"xdotool", "key", k}); });
    }
    void typeInDialog(const std::string& title, const std::string& text) {
        inDialog(title, [text] { runCommand({"xdotool", "type", "--delay", "2", text}); });
    }

    const TempFolder folder;
    std::unique_ptr<CQV> host;
    std::unique_ptr<CMainWin> win;
    std::unique_ptr<AppHooks> hooks;
    std::vector<std::string> titles; ///< of the modal windows that opened
    bool refusesDialogs = false;     ///< each is left by Escape
    std::vector<CStr> calledWith;    ///< files that the program is called with

private:
    struct Step {
        std::string title;
        std::function<void()> act;
    };
    void tick() {
        ticks++;
        CWin* modal = app->modalWin;
        if (modal != lastModal && modal) titles.emplace_back(modal->id.asChar());
        lastModal = modal;
        if (refusesDialogs && modal && modal->hasFocus()) runCommand({"xdotool", "key", "Escape"});
        if (!app->menus.empty() && !menuKeys.empty()) {
            const std::string next = menuKeys.front();
            menuKeys.erase(menuKeys.begin());
            runCommand({"xdotool", "key", next});
        }
        if (steps.empty() || !modal || !modal->hasFocus()) return;
        if (steps.front().title != modal->id.asChar()) return;
        const Step step = steps.front();
        steps.erase(steps.begin());
        step.act();
    }
    std::vector<Step> steps;
    std::vector<std::string> menuKeys;
    const CWin* lastModal = nullptr;
    ProbeCtrl* clock = nullptr;
    int ticks = 0;
};
