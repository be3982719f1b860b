#pragma once

#include "base/CStr.h"

class CAction;
class CComp;
class CPart;
class CQV;
class CWin;
class Commands;
class NoticeRouter;
class Options;
class PluginShelf;

/// What a window needs of the program that it is part of; the main window fills it in. Interface
/// thread.
class Workspace {
public:
    CStr projectFolder; ///< last used in a file dialog; empty none yet
    int pumping = 0;    ///< loops that wait inside a handler: no project is loaded meanwhile

    virtual CQV* host() const = 0;
    virtual CWin* mainWindow() = 0; ///< the owner of dialogs
    virtual Commands& commands() = 0;
    virtual Options& options() = 0;
    virtual NoticeRouter& notices() = 0;
    virtual PluginShelf& pluginShelf() = 0;
    /// Carries an action out as its shortcut would: the window is asked first that has the keys.
    virtual bool runAction(CAction* action) = 0;
    virtual bool canRun(const CAction* action) const = 0; ///< it would do something now
    virtual bool isOn(const CAction* action) const = 0;   ///< it switches something that is on
    virtual void setStatus(const CStr& text, bool atOnce = false) = 0;
    /// The key that runs an action, as a menu tells it; empty where none does.
    virtual CStr shortcutOf(const CAction* action) const = 0;
    virtual CStr dialogFolder() const = 0; ///< where a file dialog begins

    /// Whether there is a window to edit a component in.
    virtual bool hasEditor(const CComp* comp) const = 0;
    /// Opens it, or brings it to the front.
    virtual void openEditor(CComp* comp) = 0;
    virtual bool isOpen(const CComp* comp) const = 0;  ///< its editor, in front or not
    virtual bool inFront(const CComp* comp) const = 0; ///< its editor is the page that shows
    /// Whether there is an editor for what lies inside a part of its class, and shows the part
    /// there; nothing for others.
    virtual bool canOpen(const CPart* part) const = 0;
    virtual void openPart(CPart* part) = 0;
    /// Opens the project or theme among what is dropped, and takes all beside a dialog; false for
    /// what is left to the window that it was dropped on.
    virtual bool takesDrop() = 0;

protected:
    ~Workspace() = default;
};
