#pragma once

#include "gui/controls/CMenu.h"

#include <memory>

#include <initializer_list>

class CMainWin;
class CMenuItem;
class CQV;
class CStringList;
class MainRibbon;

/// The menu bar of the main window: fills each menu when it is opened. Interface thread.
class MainMenu : public CObject {
public:
    MainMenu(CMainWin* mainWin, CQV* host);
    ~MainMenu() override;
    MainMenu(const MainMenu&) = delete;
    MainMenu& operator=(const MainMenu&) = delete;

    /// Entries of the fixed menus, with those of the active page between.
    void rebuild();
    /// Gives the keys to the bar.
    void focus();
    void refresh();                ///< interface tick
    void showRecent(int x, int y); ///< the recent projects as a menu of their own, on the screen

private:
    void menuClicked(CObject* sender);
    void fillFile(CPopup* popup);
    void fillNew(CPopup* popup);
    void fillDemos(CPopup* popup);
    void fillRecent(CPopup* popup);
    void fillEdit(CPopup* popup);
    void fillView(CPopup* popup);
    void fillHelp(CPopup* popup);

    void addAction(CPopup* popup, const char* name, const CStr& text = CStr());
    /// Groups of actions with lines between.
    void addGroups(CPopup* popup, std::initializer_list<std::initializer_list<const char*>> groups);
    CMenuItem* add(CPopup* popup, const CStr& text, void (MainMenu::*chosen)(CObject*),
                   int entryTag = 0);
    void addUndo(CPopup* popup, const char* name, const CStr& what);

    void kindClicked(CObject* sender);
    void recentClicked(CObject* sender);

    CMainWin* window;
    CQV* qv;
    CMenu* bar; ///< owned by the window
    std::unique_ptr<MainRibbon> ribbon;
};
