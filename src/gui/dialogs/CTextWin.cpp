#include "gui/dialogs/CTextWin.h"

#include "gui/CGraphic.h"
#include "gui/CGui.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CTabs.h"

namespace {

constexpr int contentWidth = 400, labelHeight = 20;

int heightFor(const CStr& label) {
    using D = CDialogWin;
    return D::margin + (label.empty() ? 0 : labelHeight) + D::fieldHeight + 2 * D::gap +
           buttonHeight + D::margin;
}

} // namespace

CTextWin::CTextWin(CWin* owner, const CStr& title, const CStr& firstText, const CStr& label)
    : CDialogWin(owner, title, contentWidth, heightFor(label)), text(firstText) {
    int y = margin;
    CLabel* above = nullptr;
    if (!label.empty()) {
        above = new CLabel(this, label, margin, y, contentWidth - 2 * margin, labelHeight);
        above->textFlags = textLeft | textTop;
        addControl(above);
        y += labelHeight;
    }
    edit = new CEdit(this, "text", margin, y, contentWidth - 2 * margin, fieldHeight);
    edit->setAlign(alignWidth, margin, 0);
    edit->spokenName = title;
    if (above) above->field = edit;
    edit->selectOnFocus = true;
    edit->setText(text);
    wire(edit->onKeyDown, new _COnKey<CTextWin>(this, &CTextWin::editKey));
    addControl(edit);
    addOkCancel("OK");
}

bool CTextWin::editKey(CObject*, int& key, int mods) {
    if (key != keyReturn || mods) return false;
    accept();
    return true;
}

void CTextWin::accept() {
    if (!mayBeEmpty && edit->text.trim().empty()) {
        setKeyCtrl(edit);
        return;
    }
    text = edit->text;
    CDialogWin::accept();
}
