#pragma once

#include "ui/CCompEditor.h"
#include "ui/Commands.h"
#include "ui/NoticeRouter.h"
#include "ui/Options.h"
#include "ui/Skins.h"
#include "ui/Workspace.h"

#include <memory>
#include <vector>

class BrowserSide;
class CQV;
class CUndo;
class MainCommands;
class MainMenu;
class Pages;
class ProjectFlows;
class Rooms;
class ModularPage;
class StartFiles;
class StatusLine;
class Toolbar;
struct CEditorStruct;

/// What stands before the window is made, and before its rooms are.
struct ProgramTables {
    explicit ProgramTables(CQV* host) : qv(host), choices(host), router(host) {}

    CQV* const qv;
    Commands table;
    Options choices;
    NoticeRouter router;
};

/// The one top-level window of the program, the editor of the host, and the interface's link to it:
/// its timer is the heartbeat of the engine's interface side. Interface thread.
class CMainWin : private ProgramTables, public CCompEditor, public Workspace {
public:
    /// Of the window, as far as the screen has room.
    static constexpr int smallestWidth = 900, smallestHeight = 320;

    ListOf<CCompEditor> editors; ///< those open besides this one, by `Pages`; not owned
    const std::unique_ptr<ProjectFlows> flows;
    const std::unique_ptr<Rooms> rooms;
    std::unique_ptr<Pages> pages; ///< null until `init`

    CMainWin(CApp* app, CQV* host);
    ~CMainWin() override;
    CMainWin(const CMainWin&) = delete;
    CMainWin& operator=(const CMainWin&) = delete;

    /// Makes the content, once the engine stands.
    void init();
    /// Opens the project of the start, and these files, which the user has asked for.
    void begin(const std::vector<CStr>& files);

    void onTimer() override;
    /// Turns changes of the engine into repaints. Called by the host's idle.
    void idle() override;
    bool onFrame() override;
    /// The close flow: asks about unsaved changes, and may stay. The program ends when the window
    /// is hidden.
    void hide() override;
    void resized() override;
    bool keyDown(int key, int mods) override;
    bool onAction(CAction* action) override;
    bool playOrStop(); ///< what Space does
    /// For `CApp::onKey`: Space, Home and Escape in every window of the program.
    bool handleKeyDown(CWin* from, int& key, int mods);

    /// The shortcut as a text where pressing it here runs the action; else empty.
    CStr shortcutOf(const CAction* action) const override;
    /// For buttons and menu entries that carry a CAction in `userPtr`.
    void actionClicked(CCtrl* sender);
    CAction* getAction(const char* name) const { return actions->getAction(name); }

    CQV* host() const override { return qv; }
    CWin* mainWindow() override { return this; }
    Commands& commands() override { return table; }
    Options& options() override { return choices; }
    PluginShelf& pluginShelf() override;
    NoticeRouter& notices() override { return router; }
    void setStatus(const CStr& text, bool atOnce = false) override;
    CStr dialogFolder() const override;
    bool hasEditor(const CComp* edited) const override;
    void openEditor(CComp* edited) override;
    bool runAction(CAction* action) override { return onAction(action); }
    bool canRun(const CAction* action) const override;
    bool isOn(const CAction* action) const override;
    bool isOpen(const CComp* edited) const override;
    bool inFront(const CComp* edited) const override;
    bool canOpen(const CPart* part) const override;
    void openPart(CPart* part) override;
    bool takesDrop() override;
    /// Opens a project or a song of another program, puts on a look or a surface; false for files
    /// of other kinds.
    bool opensFile(const CStr& path);
    /// Lets go of the window that `openEditor` has made, as its component is about to die.
    void dropEditor(const CComp* edited);
    /// Another project is open, or it has another name.
    void projectChanged();
    /// A project has come: its song is in front, unless its pages tell otherwise. No step.
    void showSong();
    void forgetSong(); ///< the song is about to be deleted, and with it what has a window
    /// See `Pages::dockWin`.
    void dockWin(CCompEditor* editor, int where, bool maximize, CUndo* undo = nullptr);
    /// Docks or records have changed: makes the windows follow.
    void updateDocker();
    /// The active page is another one: rebuilds the menu bar.
    void mdiChanged();
    void showRecent(int x, int y); ///< the recent projects as a menu at a point of the screen

    /// The place of the window, for files and settings; when maximized the one to go back to.
    void readPlace(CEditorStruct& place);
    void moveTo(const CEditorStruct& place);

private:
    void appHint(CCtrl* ctrl);
    void mainDrop(CObject* sender);
    void deviceClicked(CObject* sender);
    CCompEditor* asked() const;
    CComp* frontComp() const;
    void addGraph();
    bool graphAsked() const;
    void writeSettings();
    void setCaptionText(); ///< nothing while it tells the project already
    void followNotices();
    void reopenEditor();

    CStr captionFile; ///< the project that the caption tells
    bool captionModified = false;
    const ThemeLink theme;
    const std::unique_ptr<MainCommands> mainCommands;
    std::unique_ptr<MainMenu> mainMenu;
    std::unique_ptr<BrowserSide> browser; ///< null until `init`
    Toolbar* bar = nullptr;
    ModularPage* graph = nullptr;           ///< the first page
    std::unique_ptr<StartFiles> startFiles; ///< null until `begin`
    StatusLine* status = nullptr;
    bool hintShown = false; ///< what the status line tells is a hint, which goes with the pointer
    std::vector<NoticeLink> links;
    std::vector<std::unique_ptr<CCompEditor>> made; ///< by the table of editors
};
