#pragma once

#include "gui/CWin.h"

class Commands;
class CAction;
class CComp;
struct CEditorStruct;
class CMenu;
class CRibbonItem;

/// Base of every window that edits a component. A key that none of its controls takes is looked up
/// among the actions. Interface thread.
class CCompEditor : public CWin {
public:
    CComp* comp;             ///< what is edited; not owned
    int editorType = 0;      ///< group of actions that is active here beside those of all windows
    const Commands* actions; ///< of the program
    /// Holds its place and its page: the component's own record, unless the maker sets another. Not
    /// owned.
    CEditorStruct* dock;
    COnChange* onHide = nullptr; ///< owned; it is about to be hidden

    /// As `CWin`; `table` outlives the window.
    CCompEditor(CApp* app, CWin* owner, const CStr& title, int left, int top, int width, int height,
                int style, CComp* edited, const Commands* table);

    ~CCompEditor() override;

    void hide() override;
    bool keyDown(int key, int mods) override;
    /// Runs the action that a key stands for here; false when there is none or it does not act.
    bool doAction(int key, int mods);

    /// Turns changes of the component into repaints. Called every 40 ms while the window is open.
    virtual void idle() {}
    /// Adds the window's own entries to the menu bar, each with a tag of its own (`MenuTag`).
    virtual void mergeMenu(CMenu*) {}
    /// Adds the window's own commands to the menu of its tab on the ribbon.
    virtual void mergeRibbon(CRibbonItem*) {}
    /// Whether the window would carry out the action now by itself.
    virtual bool canRun(const CAction*) const { return false; }
    /// Whether the action switches something of the window that is on.
    virtual bool isOn(const CAction*) const { return false; }
    /// True when the window knows the action, and has carried it out.
    virtual bool onAction(CAction*) { return false; }
};
