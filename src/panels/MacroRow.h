#pragma once

#include "gui/CGroup.h"
#include "ui/CStoredCtrl.h"

#include <vector>

class CComp;
class MacroRow;
class NameField;
class Workspace;

/// How a macro tells the parameter that it turns.
struct MacroLook {
    std::function<std::optional<StoredValue>(int param)> value; ///< 0 to 1; none: it turns nothing
    std::function<CStr(int macro, int param)> name;
};

/// One of the macros of a component: a knob for the parameter that it turns. An empty one is
/// pressed to learn one.
class MacroKnob : public CStoredCtrl {
public:
    MacroKnob(MacroRow& row, int number);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    bool refresh() override;

    const CStr& shownText() const { return shownName; }

    const int number; ///< from 0 on

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
    CStr name() const;
    void addOwnItems(CPopup* popup);
    void addRangeItems(CPopup* popup);
    void takeRange();

    MacroRow& row;
    CStr shownName;
    bool shownLearning = false;
};

/// The eight macros of a component beside each other. One that learns takes the parameter of the
/// control that is touched next. Interface thread.
class MacroRow : public CGroup {
public:
    static constexpr int usualHeight = 64;

    MacroRow(CWin* win, Workspace& workspace, CComp& comp, MacroLook look);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void refresh(); ///< follows the component, and what is touched

    /// The macro that takes what is touched next, -1 none.
    int learning() const { return learner; }
    void learn(int macro); ///< -1 ends it
    int param(int macro) const;
    void empty(int macro);
    void rename(const MacroKnob& knob); ///< by a field in its place

    Workspace& workspace;
    CComp& comp;
    const MacroLook look;

private:
    std::vector<MacroKnob*> knobs; ///< among the controls
    NameField* field = nullptr;    ///< the same, while a name is typed
    int learner = -1;
    unsigned touches = 0; ///< of the door, when it began
};
