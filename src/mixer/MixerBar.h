#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
class CEdit;
class CMixerPanel;
class CPopup;

/// The bar over the strips: which sections and rows show, by programs that keep the choice of
/// sections, and the end of all solos. Interface thread.
class MixerBar : public CGroup {
public:
    static constexpr int barHeight = 28;

    MixerBar(CWin* win, CMixerPanel& panel);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void resized() override; ///< what has no room, and stands in a menu too, is left out
    void refresh();
    void find(); ///< the keys go to the field for a name

private:
    using Clicked = void (MixerBar::*)(CObject*);
    using Group = std::vector<CCtrl*>;

    void enter(Group& group, CCtrl* made);
    CButton* addSwitch(Group& group, const char* name, const CStr& text, const CStr& hint, int tag,
                       Clicked clicked);
    CButton* addButton(Group& group, const char* name, const CStr& text, const CStr& hint,
                       int width, Clicked clicked);
    static int widthOf(const Group& group);

    void paintChoice(CButton* button, CGraphic* g, CRect rect);
    void sectionClicked(CObject* sender);
    void rowsClicked(CObject* sender);
    void programsClicked(CObject* sender);
    void scenesClicked(CObject* sender);
    void stateClicked(CObject* sender);
    void filterClicked(CObject* sender);
    void filterChosen(CObject* sender);
    void soloClicked(CObject* sender);
    void progChanged(CObject* sender);
    void addProgClicked(CObject*);
    void duplicateProgClicked(CObject*);
    void renameProgClicked(CObject*);
    void deleteProgClicked(CObject*);

    CMixerPanel& panel;
    Group sections, rows, choices, search, ends; ///< from left to right, among `controls`
    CButton *programs, *scenes, *filter, *solo;
    CButton* states[2]; ///< A and B
    CEdit* part;        ///< of names
};
