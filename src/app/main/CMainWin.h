#pragma once

#include "app/CAction.h"
#include "app/CCompEditor.h"
#include "app/main/Skins.h"

#include <memory>

class CQV;
class CSetupWin;
class CUndo;
class MainActions;
class MainMenu;
class Pages;
class ProjectFlows;
class RenderActions;
class SongActions;
class SongImports;
class SongView;
class StatusLine;
class Toolbar;
struct CEditorStruct;

/// The table of actions, as a base that exists before the window which looks keys up in it.
struct ProgramActions {
    ActionTable actionTable;
};

/// The one top-level window of the program, the editor of the host, and the interface's link to it:
/// its timer is the heartbeat of the engine's interface side. Interface thread.
class CMainWin : private ProgramActions, public CCompEditor {
public:
    CStr projectFolder; ///< last used in a file dialog; empty none yet
    CList editors;      ///< of CCompEditor, those open besides this one, by `Pages`; not owned
    int pumping = 0;    ///< loops that wait for an edit: no project is loaded inside
    const std::unique_ptr<ProjectFlows> flows;
    const std::unique_ptr<SongImports> imports;
    std::unique_ptr<Pages> pages; ///< null until `init`

    CMainWin(CApp* app, CQV* host);
    ~CMainWin() override;
    CMainWin(const CMainWin&) = delete;
    CMainWin& operator=(const CMainWin&) = delete;

    /// Makes the content, once the engine stands.
    void init();

    void onTimer() override;
    /// Turns changes of the engine into repaints. Called by the host's idle.
    void idle() override;
    /// The close flow: asks about unsaved changes, and may stay. The program ends when the window
    /// is hidden.
    void hide() override;
    void resized() override;
    bool keyDown(int key, int mods) override;
    bool onAction(CAction* action) override;
    bool playOrStop(); ///< what Space does
    /// For `CApp::onKey`: Space, Home and Escape in every window of the program.
    bool handleKeyDown(CObject* sender, int& key, int mods);

    /// Whether an action does something at present; menus leave out the others.
    /// The shortcut as a text where pressing it here runs the action; else empty.
    CStr shortcutOf(const CAction* action) const;
    bool knows(const CAction* action) const;
    /// For buttons and menu entries that carry a CAction in `userPtr`.
    void actionClicked(CObject* sender);
    CAction* getAction(const char* name) const { return actions->getAction(name); }

    void setStatus(const CStr& text, bool atOnce = false);
    CStr dialogFolder() const; ///< where a file dialog for projects begins
    /// Another project is open, or it has another name.
    void projectChanged();
    void forgetSong(); ///< the song is about to be deleted
    /// See `Pages::dockWin`.
    void dockWin(CCompEditor* editor, int where, bool maximize, CUndo* undo = nullptr);
    void nextDockClicked(CObject*);
    void priorDockClicked(CObject*);
    /// Docks or records have changed: makes the windows follow.
    void updateDocker();
    /// The active page is another one: rebuilds the menu bar.
    void mdiChanged();
    void openSetup();
    void showRecent(int x, int y); ///< the recent projects as a menu at a point of the screen
    void setHints(bool on);
    bool hintsShown() const { return showHints; }

    /// The place of the window, for files and settings; when maximized the one to go back to.
    void readPlace(CEditorStruct& place);
    void moveTo(const CEditorStruct& place);

    /// Calls `update(bits)` on the component of each open editor, whose idle serves it.
    void updateEditors(unsigned bits);

private:
    friend class MainMenu;

    void appHint(CObject* sender);
    void mainDrop(CObject* sender);
    void songDrop(CObject* sender, int x, int y, int btn);
    bool takesDrop();
    bool arrowKey(int key, int mods);
    void writeSettings();
    void serveUpdates();
    void serveSong();
    void graphChanged();
    void peaksChanged();
    void devicesChanged();
    void flatsChanged();
    void setCaptionText(); ///< nothing while it tells the project already
    void showDevice();
    CStr deviceText() const;

    /// What the status line tells of the device; -1 none.
    struct DeviceState {
        int device = -1, frames = 0;
        float rate = 0.0f;
        bool operator==(const DeviceState&) const = default;
    };

    CQV* qv;
    static constexpr DeviceState nothingTold{-2, 0, 0.0f};
    DeviceState shownDevice = nothingTold;
    CStr captionFile; ///< the project that the caption tells
    bool captionModified = false, showHints = true;
    const ThemeLink theme;
    const std::unique_ptr<MainActions> mainActions;
    const std::unique_ptr<SongActions> songActions;
    const std::unique_ptr<RenderActions> renderActions;
    std::unique_ptr<MainMenu> mainMenu;
    Toolbar* bar = nullptr;
    SongView* song = nullptr;
    StatusLine* status = nullptr;
    std::unique_ptr<CSetupWin> setup; ///< null until it is opened first
};
