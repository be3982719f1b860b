#pragma once

#include "base/CStr.h"
#include "gui/CGroup.h"

#include <vector>

class ArrangeState;
class CButton;
class CPart;
class NameField;

/// Tells what is selected, a single note, hit or clip of a part before the part, and its length,
/// which can be typed; of audio parts how they play: forward or reversed, and whether they follow
/// the tempo; and cuts them into beats. What has no room is in a menu. Interface thread.
class ObjectBar : public CGroup {
public:
    ObjectBar(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;
    bool refresh(); ///< follows the selection; whether that shows

private:
    CButton* add(const char* name, const char* text, const char* hint, int wide);
    bool fits(const CCtrl* button) const;
    void clicked(CObject* sender);
    void choose(int which);
    void moreClicked(CObject*);
    void entryClicked(CObject* sender);
    void lengthClicked(CObject*);
    void sliceClicked(CObject*);
    void lengthTyped(const CStr& text);

    ArrangeState& state;
    std::vector<CButton*> buttons; ///< as the table in the source; shown for audio alone
    CButton *length, *slice, *more;
    NameField* field = nullptr; ///< while a length is typed
    CStr shown;
};
