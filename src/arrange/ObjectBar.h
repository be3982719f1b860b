#pragma once

#include "base/CStr.h"
#include "gui/CGroup.h"

#include <vector>

class ArrangeState;
class CButton;
class CPart;

/// Tells what is selected, and of audio parts how they play: forward or reversed, and whether they
/// follow the tempo. Interface thread.
class ObjectBar : public CGroup {
public:
    ObjectBar(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< follows the selection; whether that shows

private:
    CButton* add(const char* name, const char* text, const char* hint, int wide);
    void clicked(CObject* sender);

    ArrangeState& state;
    std::vector<CButton*> buttons; ///< as the table in the source; shown for audio alone
    CStr shown;
};
