#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

/// Groups of actions. Those below 1 are active in every window, the others in windows of that
/// `CCompEditor::editorType` alone.
enum ActionGroup : int {
    groupFile = -3,
    groupEdit = -2,
    groupTransport = -1,
    groupGlobal = 0,
    groupArrange = 4,
};

/// A command that has a name and may have a shortcut.
class CAction : public CObject {
public:
    CStr name;  ///< key in the settings
    CStr label; ///< in menus and hints
    int key;    ///< as gui/Keys.h; 0 none
    int mods;   ///< of modShift, modControl, modAlt
    int group;  ///< ActionGroup

    CAction(int actionGroup, const CStr& actionName, const CStr& text, int shortcut, int modifiers)
        : name(actionName), label(text), key(shortcut), mods(modifiers), group(actionGroup) {}
};

/// All actions of the program, in the order in which shortcuts are looked for: of two with the same
/// one the first wins. Interface thread.
class ActionTable {
public:
    CList actions; ///< of CAction, owned

    ActionTable() = default;
    ~ActionTable();
    ActionTable(const ActionTable&) = delete;
    ActionTable& operator=(const ActionTable&) = delete;

    void addAction(int group, const CStr& name, const CStr& label, int key = 0, int mods = 0);
    CAction* getAction(const CStr& name) const; ///< null when unknown
    /// The action of a key press in a window of that editor type, null without one. Letters count
    /// in either case. Where no action has exactly these modifiers, Shift is ignored with a sign
    /// such as "+", since keyboards differ in whether they need it.
    CAction* find(int key, int mods, int editorType) const;

    /// Takes on the changed shortcuts of section "shortcuts" of the settings.
    void readShortcuts();
    /// Gives an action another shortcut, in force at once, and keeps it in the settings.
    static void setShortcut(CAction* action, int key, int mods);
};

/// Enters the actions of the program with their shortcuts by default.
void setupActions(ActionTable& table);
