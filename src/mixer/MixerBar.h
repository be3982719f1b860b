#pragma once

#include "gui/CGroup.h"

#include <vector>

class CButton;
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
    void refresh();

private:
    CButton* add(const char* name, const CStr& text, const CStr& hint, int width,
                 void (MixerBar::*clicked)(CObject*));
    void sectionClicked(CObject* sender);
    void rowsClicked(CObject* sender);
    void programsClicked(CObject* sender);
    void soloClicked(CObject* sender);
    void progChanged(CObject* sender);
    void addProgClicked(CObject*);
    void duplicateProgClicked(CObject*);
    void renameProgClicked(CObject*);
    void deleteProgClicked(CObject*);

    CMixerPanel& panel;
    std::vector<CButton*> sections, rows;
    CButton *programs, *solo;
    int nextX = 6;
};
