#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

#include <functional>

/// Groups of actions. Those below 1 are active in every window, the others in windows of that
/// `CCompEditor::editorType` alone.
enum ActionGroup : int {
    groupFile = -3,
    groupEdit = -2,
    groupTransport = -1,
    groupGlobal = 0,
    groupArrange = 4,
    groupMixer = 5,
    groupModular = 6,
};

/// What an action does.
struct Deed {
    std::function<void()> run;
    std::function<bool()> ready, on; ///< empty: always, never

    bool isReady() const { return run && (!ready || ready()); }
    bool isOn() const { return on && on(); }
};

/// A command that has a name and may have a shortcut. What it does is bound by the room that
/// carries it out, or left to windows, each of which acts for itself (`OwnActions`); until then it
/// is shown nowhere.
class CAction : public CObject {
public:
    CStr name;  ///< key in the settings
    CStr label; ///< in menus and hints
    int key;    ///< as gui/Keys.h; 0 none
    int mods;   ///< of modShift, modControl, modAlt
    int group;  ///< ActionGroup

    CAction(int actionGroup, const CStr& actionName, const CStr& text, int shortcut, int modifiers)
        : name(actionName), label(text), key(shortcut), mods(modifiers), group(actionGroup) {}

    bool bound() const { return deed.run || left; }
    /// Whether the program itself would do something now; menus grey out what nobody would do.
    bool isReady() const { return deed.isReady(); }
    /// Whether it switches something that is on at present; menus tick it, buttons are lit.
    bool isOn() const { return deed.isOn(); }

private:
    friend class Commands;
    Deed deed;
    bool left = false; ///< to windows
};

/// All actions of the program, in the order in which shortcuts are looked for: of two with the same
/// one the first wins. Menus, ribbon, buttons and the page of shortcuts are made from it. Interface
/// thread.
class Commands {
public:
    ListOf<CAction> actions; ///< owned

    Commands(); ///< with all names and their shortcuts by default, none bound
    ~Commands();
    Commands(const Commands&) = delete;
    Commands& operator=(const Commands&) = delete;

    /// Says what an action does, when it can, and whether what it switches is on. The name is
    /// known; what the functions refer to outlives the table's use.
    void bind(const char* name, std::function<void()> run, std::function<bool()> ready = {},
              std::function<bool()> on = {});
    /// Says that windows carry an action out, each where it has the keys. Any number of times.
    void leave(const char* name);
    /// Carries it out if it is ready; false for one that is not bound, or left to windows.
    bool run(const CAction* action) const;
    CAction* getAction(const CStr& name) const; ///< null when unknown
    /// The bound action of a key press in a window of that editor type, null without one. Letters
    /// count in either case. Where no action has exactly these modifiers, Shift is ignored with a
    /// sign such as "+", since keyboards differ in whether they need it; and "_" is "-" with Shift.
    CAction* find(int key, int mods, int editorType) const;

    /// Takes on the changed shortcuts of section "shortcuts" of the settings.
    void readShortcuts();
    /// Gives an action another shortcut, in force at once, and keeps it in the settings.
    static void setShortcut(CAction* action, int key, int mods);
};
