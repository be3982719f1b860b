#pragma once

#include "gui/controls/CEdit.h"
#include "modular/FindGraph.h"

class ModularView;

/// Finds boxes and ports by typing, and joins two: what it would do is shown in the view and told
/// while it is typed. Return goes there or joins, Down and Up step through what is found, Escape
/// goes back to the view. Interface thread.
class FindField : public CEdit {
public:
    CStr told; ///< what Return would do

    FindField(CWin* win, ModularView& view);
    void paint(CGraphic* g, CRect rect) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool enterText(const std::string& to) override; ///< carries it out
    void begin();                                   ///< takes the keys, for a new text
    void forget();                                  ///< what was found may be gone
    std::function<void()> onTold;

private:
    void look();
    void show();
    bool accept();

    ModularView& view;
    FoundItems found;
    size_t at = 0; ///< of those that are found
};
