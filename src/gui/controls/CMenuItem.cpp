#include "gui/controls/CMenuItem.h"

#include "gui/controls/CPopup.h"

CMenuItem::CMenuItem(CPopup* owner, int itemKind, const CStr& label)
    : CCtrl(owner, label, 0, 0, 0, 0), text(label), kind(itemKind) {
}

CMenuItem::~CMenuItem() {
    delete subMenu;
    delete onGetText;
}

CStr CMenuItem::label() const {
    return text.sub(0, text.pos("\t"));
}

CStr CMenuItem::shortcut() const {
    const int tab = text.pos("\t");
    return tab < 0 ? CStr() : text.sub(tab + 1, -1);
}

CStr CMenuItem::rowText(int row) {
    CStr shown;
    if (onGetText) (*onGetText)(this, shown, row);
    return shown;
}
