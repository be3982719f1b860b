#pragma once

#include "gui/CGroup.h"
#include "ui/SettingPlace.h"

#include <vector>

class CPopup;
class SettingButton;
class SettingKnob;
class Workspace;

/// Settings of objects as knobs and buttons, in frames with a title that stand beside each other
/// and below: one frame for each group of a table. Interface thread.
class SettingPanel : public CGroup {
public:
    /// The settings of a table for one object.
    struct Section {
        Settings table;
        CObject* object; ///< not owned; once it is not alive any more it is not touched
        int index = -1;  ///< of its values; below 0 that of each setting
        CStr title;      ///< of its frames, before the groups of the table; empty: these alone
        std::function<std::vector<CObject*>()> others; ///< set along with it
        std::function<bool()> alive; ///< the object is still there; empty: it always is
        /// The parameter behind a setting; with `assign` one is made where there can be one.
        std::function<ParamRef(const Setting&, bool assign)> param = {};
        /// The component that has it, or may get one; null where there can be none.
        std::function<CComp*(const Setting&)> paramComp = {};
        std::function<ModulatedValue(const Setting&)> modulation = {};
    };

    SettingPanel(CWin* win, const CStr& name, Workspace& workspace);

    void paint(CGraphic* g, CRect rect) override;

    void show(const std::vector<Section>& sections); ///< in place of what it shows
    /// Lays the frames out in that width and takes the height that this needs.
    void fit(int width);
    bool refresh(); ///< takes the present values; whether that shows

private:
    struct Frame {
        CStr title;
        std::vector<CCtrl*> controls; ///< owned by the group
        CRect bounds;
        bool first = false; ///< of a section with a title, which begins a line
    };

    Frame& frameOf(const CStr& title, bool first);
    void add(const Section& section, const Setting& setting, bool first);
    SettingPlace placeOf(const Section& section, const Setting& setting) const;
    std::function<void(CPopup*)> menuOf(const SettingPlace& place) const;
    std::function<void()> tellerOf(const SettingPlace& place) const;
    int widthOf(const Frame& frame, int most) const;

    Workspace& workspace;
    std::vector<Frame> frames;
    std::vector<SettingKnob*> knobs;
    std::vector<SettingButton*> buttons;
};
