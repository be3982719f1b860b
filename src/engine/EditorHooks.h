#pragma once

class CComp;
class CWin;

/// What the engine asks of the windows above it. The program puts in its own; until then every
/// call does nothing. Interface thread only.
class EditorHooks {
public:
    virtual ~EditorHooks() = default;
    virtual void showEditor(CComp*, bool) {}
    virtual void hideEditors(CComp*) {} ///< all windows of a component that leaves the graph
    virtual bool editorVisible(CComp*) { return false; }
    virtual void deleteEditors(CComp*) {} ///< of a component that is about to die
    virtual void saveEditor(CComp*) {}    ///< write window state into the component's records
    virtual void nameChanged(CComp*) {}
    virtual void editMap(CComp*) {} ///< show or hide the map window
    virtual void refreshMap(CComp*) {}
    virtual void deleteMap(CComp*) {} ///< the map window, of a project that goes
    virtual void idle(CComp*) {}      ///< tick of a component's open windows
    virtual void mainIdle() {}        ///< tick of the main window
};

/// Never null.
EditorHooks* editorHooks();
/// Not owned; null restores the one that does nothing.
void setEditorHooks(EditorHooks* hooks);
