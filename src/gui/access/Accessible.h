#pragma once

#include "base/Geometry.h"

#include <optional>
#include <string>

/// What a thing is to somebody who cannot see it.
enum class Role {
    none, ///< no thing of its own: what lies in it belongs to what is around
    application,
    window,
    dialog,
    alert,
    page, ///< a window inside another one
    toolBar,
    menuBar,
    menu,
    menuEntry,
    menuCheck, ///< an entry with a tick
    separator,
    button,
    toggle, ///< a button that stays lit
    checkBox,
    comboBox,
    textField,
    passwordField,
    number, ///< a value that is typed or stepped
    slider,
    scrollBar,
    splitter,
    progress,
    meter,
    label,
    status, ///< a line that tells what goes on
    tabs,
    tab,
    list,
    listRow,
    tree,
    treeRow,
    table,
    group,  ///< things that belong together, such as the head of a track
    canvas, ///< a drawing with things on it
    item,   ///< a thing on a canvas
    picture,
};

/// Bits of `Description::states`.
enum AccessState : unsigned {
    stateEnabled = 0x1,
    stateShowing = 0x2,
    stateFocusable = 0x4,
    stateFocused = 0x8,
    stateActive = 0x10, ///< of a window: it has the keys
    stateModal = 0x20,
    stateChecked = 0x40,
    statePressed = 0x80, ///< of a toggle
    stateSelectable = 0x100,
    stateSelected = 0x200,
    stateExpandable = 0x400,
    stateExpanded = 0x800,
    stateEditable = 0x1000,
    stateVertical = 0x2000,
};

/// A control, or one thing that a control paints, in words and numbers.
struct Description {
    struct Range {
        double now = 0.0, least = 0.0, most = 0.0;
        double step = 0.0; ///< the smallest change that shows; 0 unknown
        bool operator==(const Range&) const = default;
    };
    /// Of a text field, in characters.
    struct Caret {
        int at = 0, selectionFrom = 0, selectionTo = 0;
        bool operator==(const Caret&) const = default;
    };

    Role role = Role::none;
    std::string name; ///< what a person calls it, such as "Volume, Bass"
    std::string help;
    std::string text; ///< what it holds or shows of its value
    unsigned states = 0;
    CRect bounds;       ///< from the control's corner; of the tree: device pixels of the screen
    std::string action; ///< what pressing does, such as "press"; empty: nothing
    std::optional<Range> range;
    std::optional<Caret> caret;

    bool has(AccessState state) const { return (states & state) != 0; }
    void set(AccessState state, bool on) {
        states = on ? states | state : states & ~unsigned(state);
    }
};

/// What every control tells of itself and of the things that it paints: its parts, such as rows,
/// tabs and nodes, which are counted from 0; `wholeCtrl` is the control. Interface thread.
class Accessible {
public:
    static constexpr int wholeCtrl = -1;

    /// Fills in what it knows better than `AccessTree`, which has filled in name, help, bounds and
    /// states as far as these are the same for all controls. A role of none hides it.
    virtual void describe(Description&, int part) const { static_cast<void>(part); }
    virtual int accessParts() const { return 0; }
    virtual int partAround(int part) const { return static_cast<void>(part), wholeCtrl; }
    virtual int focusedPart() const { return wholeCtrl; } ///< that the keys act on

    // As the user would do it, undo step, report and all. False where that does nothing.
    virtual bool pressPart(int part) { return static_cast<void>(part), false; }
    virtual bool enterNumber(int part, double to) {
        return static_cast<void>(part), static_cast<void>(to), false;
    }
    virtual bool enterText(const std::string& to) { return static_cast<void>(to), false; }

protected:
    ~Accessible() = default;
};
