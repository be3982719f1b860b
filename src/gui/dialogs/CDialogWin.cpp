#include "gui/dialogs/CDialogWin.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Keys.h"
#include "gui/Monitors.h"
#include "gui/controls/CButton.h"

#include <algorithm>

namespace {

constexpr int textPadding = 12; // at each side of a button's text
constexpr int keyF4 = keyF1 - 3;

} // namespace

CDialogWin::CDialogWin(CApp* dialogApp, CWin* owner, const CStr& title, int contentWidth,
                       int contentHeight, int bits)
    : CWin(dialogApp, owner, title, 0, 0,
           asMin(contentWidth + 2 * borderSize, monitorOf(owner).width()),
           asMin(contentHeight + 2 * borderSize + captionHeight, monitorOf(owner).height()), bits),
      buttons(new CGroup(this, "buttons", 0, clientGroup->height - margin - buttonHeight,
                         clientGroup->width, buttonHeight)) {
    minWidth = width;
    minHeight = height;
    buttons->arrowsWalk = true;
    buttons->setAlign(alignWidth | alignBottom, 0, margin);
    addControl(buttons);
}

int CDialogWin::contentBottom() const {
    return clientGroup->height - margin - buttonHeight - gap;
}

CButton* CDialogWin::addButton(const CStr& text, COnChange* clicked) {
    const int wide = asMax(buttonWidth, graphic->textWidth(text) + 2 * textPadding);
    for (CCtrl* c : buttons->controls) c->alignX += wide + gap;
    auto* button = new CButton(this, text, text, 0, 0, wide, buttonHeight);
    button->tabStop = true;
    button->setAlign(alignRight, margin, 0);
    wire(button->onChange,
         clicked ? clicked : new _COnChange<CDialogWin>(this, &CDialogWin::acceptClicked));
    buttons->addControl(button);
    buttons->resized();
    if (!firstButton) {
        firstButton = button;
        button->lit = true;
    }
    return button;
}

void CDialogWin::addOkCancel(const CStr& okText) {
    addButton(okText);
    addButton("Cancel", new _COnChange<CDialogWin>(this, &CDialogWin::cancelClicked));
}

void CDialogWin::acceptClicked(CObject*) {
    accept();
}

void CDialogWin::cancelClicked(CObject*) {
    hide();
}

void CDialogWin::accept() {
    result = true;
    hide();
}

void CDialogWin::showModal() {
    app->killMenu(nullptr);
    result = false;
    CWin::showModal();
}

void CDialogWin::setFocus(bool on) {
    if (!on && keyCtrl) startCtrl = keyCtrl;
    CWin::setFocus(on);
    if (!on || keyCtrl) return;
    if (startCtrl)
        setKeyCtrl(startCtrl);
    else
        nextCtrl();
}

/// The buttons come first in the tree, but last on the way.
std::vector<CCtrl*> CDialogWin::tabStops() {
    std::vector<CCtrl*> stops = CWin::tabStops();
    std::stable_partition(stops.begin(), stops.end(),
                          [this](const CCtrl* c) { return c->parent != buttons; });
    return stops;
}

bool CDialogWin::keyDown(int key, int mods) {
    if (key == keyEscape || (key == keyF4 && (mods & modAlt))) {
        hide();
        return true;
    }
    CCtrl* const field = keyCtrl;
    if (offerFocus(key, mods)) {
        // A field that Return has ended keeps the focus, so that Tab goes on from it.
        if (visible && !keyCtrl && field) setKeyCtrl(field);
        return true;
    }
    if (key == keyReturn && !mods && firstButton && firstButton->enabled)
        firstButton->click();
    else
        ownKey(key, mods);
    return true;
}

void CDialogWin::describe(Description& d, int part) const {
    CWin::describe(d, part);
    d.role = Role::dialog;
}
