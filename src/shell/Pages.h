#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

class CCompEditor;
class CComp;
class CCtrl;
class CDocker;
class CMainWin;
class CQV;
class CUndo;
class DockBar;
struct CEditorStruct;
struct WindowRecords;

/// The editors that are open, and the pages of the main window that they are docked on. Interface
/// thread.
///
/// What counts is the list of docks and the number of the page in the record of each editor: an
/// edit changes these, as a step that can be undone, and `update` makes the windows follow. An
/// editor that is closed keeps its place for when it opens again.
class Pages : public CObject {
public:
    const std::unique_ptr<CDocker> docker;

    /// `first` is the page that is no editor's window, from `top` in the window's content on, down
    /// to `below` pixels from the bottom. It is in front at first.
    Pages(CMainWin* window, CQV* host, CCtrl* first, int top, int below);
    ~Pages() override;
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;

    /// Leaves so many pixels at the left of the window to others.
    void leaveRoom(int wide);
    /// Gives an editor that has no place yet a page of its own, for `open`. No step.
    void addPage(CCompEditor* editor);
    /// Shows an editor that its component owns, where its record tells: on its page, in front, or
    /// as a window of its own. It is listed until it is hidden.
    void open(CCompEditor* editor);
    /// Moves an editor to page `where`, from 1 on, to a new one for -1, or off its page for -2. A
    /// page that no editor belongs to any more goes. `undo` is an open step about the host that
    /// takes the change; null makes a step of its own, which is carried out at once.
    void dockWin(CCompEditor* editor, int where, bool maximize, CUndo* undo = nullptr);
    /// Makes the windows follow the docks and the records.
    void update();
    void showFirst();
    bool firstInFront() const;
    void nextDock(int by);
    void showTabs(bool always);                     ///< else only with more than one page
    bool canTurn() const;                           ///< there is more than one page to turn to
    bool waits() const { return wantedPage >= 0; }  ///< for the page that a project had in front
    CCompEditor* current() const;                   ///< the editor in front on a page, or null
    CCompEditor* editorOf(const CComp* comp) const; ///< that is open; null without one
    void bringToFront(CCompEditor* editor);
    /// A page that was called as a window on it is called as that is now. Interface tick.
    void followNames();
    void closeDocked(); ///< all editors on pages
    void closeAll();    ///< all editors

    /// For projects: the pages and the records of the open editors, as they are stored.
    void write(WindowRecords& records);
    /// Makes the stored pages. Which is in front is settled by the next `update`, when the editors
    /// have been opened. Numbers that no page has are reset.
    void read(const WindowRecords& records);
    void clear(); ///< the project goes: closes all editors, and only the first page stays

    /// Fits docker and bar into the window's content.
    void layout();

private:
    void eachRecord(const std::function<void(CEditorStruct&)>& visit) const;
    std::vector<CCompEditor*> inOrder() const;
    int lastPlace(int page) const;
    bool deserted(int page, const CEditorStruct* leaver) const;
    void removeDock(CUndo* undo, int page);
    void follow(CCompEditor* editor, int order);
    void placeInside(CCompEditor* editor);
    void placeFloating(CCompEditor* editor);
    void store(CCompEditor* editor);
    void editorHidden(CCompEditor* editor);
    void docksChanged(CObject* sender);

    CMainWin* window;
    CQV* qv;
    CCtrl* first;
    DockBar* bar;
    const int top, below;
    int left = 0;                             ///< pixels at the left that belong to others
    int wantedPage = -1;                      ///< of a project that was read, -1 none
    std::map<const CCompEditor*, CStr> names; ///< of the open editors, as they were last
};
