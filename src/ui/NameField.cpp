#include "ui/NameField.h"

#include "gui/CApp.h"
#include "gui/CGroup.h"
#include "gui/CWin.h"

NameField::NameField(CGroup* in, CRect box, const CStr& name, const CStr& spoken, CCtrl* former)
    : CEdit(in->win, "name", box.left, box.top, box.width(), box.height()),
      back(former              ? former
           : in->hasKeyFocus() ? in
                               : nullptr) {
    spokenName = spoken;
    hint = "Type a name; Return takes it, Escape leaves the former one";
    setText(name);
    in->addControl(this);
    win->setKeyCtrl(this);
    selectAll();
}

bool NameField::keyDown(int key, int mods) {
    const bool taken = CEdit::keyDown(key, mods);
    if (!visible && back && !win->keyCtrl) win->setKeyCtrl(back);
    return taken;
}

void NameField::setFocus(bool on) {
    CEdit::setFocus(on);
    if (on || !visible) return;
    visible = false;
    parent->redraw();
    const CStr typed = text.trim();
    if (!cancelled && !typed.empty() && onName) onName(typed);
}

void NameField::dropLeft(NameField*& field) {
    if (!field || field->visible) return;
    field->parent->controls.remove(field);
    field->win->app->deleteLater(field);
    field = nullptr;
}
