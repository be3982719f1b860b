#include "ui/SettingButton.h"

#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "ui/MenuDeed.h"
#include "ui/ProgramItems.h"
#include "ui/SettingName.h"

#include <algorithm>

namespace {

constexpr int faceHeight = 22;

} // namespace

SettingButton::SettingButton(CWin* owner, ValueDoor* through, const SettingPlace& what)
    : CButton(owner, what.setting->name(), "", 0, 0,
              what.setting->form == Setting::choice ? choiceWidth : switchWidth, usualHeight),
      door(through), place(what) {
    skin = &clTrackControls;
    litSkin = &clTrackControlsPushed;
    spokenName = place.spoken();
    tabStop = true;
    refresh();
}

bool SettingButton::refresh() {
    if (!place.there()) return false;
    const CStr now = place.text();
    const bool on = !choice() && place.number() != 0.0;
    if (now == text && on == lit) return false;
    text = now;
    lit = on;
    redraw();
    return true;
}

void SettingButton::paint(CGraphic* g, CRect rect) {
    paintSettingName(g, win->app->gui->palette, place.setting->name(), width);
    const int faceTop = (height - faceHeight) / 2 + 2;
    const CPoint corner = asPoint(rect.left, rect.top + faceTop);
    CButton::paint(g, asRect(corner.x, corner.y, corner.x + width, corner.y + faceHeight));
}

void SettingButton::set(double to) {
    if (!place.there()) return;
    const std::vector<StoredValue> along = place.along();
    StoredValue::Numbers numbers = place.value().get();
    numbers[0] = to;
    door->begin();
    door->set(place.value(), numbers);
    for (const StoredValue& other : along) {
        numbers = other.get();
        numbers[0] = to;
        door->set(other, numbers);
    }
    door->end();
    if (onSet) onSet();
    refresh();
}

void SettingButton::mouseUp(int x, int y, int btn) {
    CButton::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) contextMenu();
}

bool SettingButton::contextMenu() {
    if (!menu || !place.there()) return false;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    addDeed(popup, "Default", [this] { set(place.setting->usual); });
    menu(popup);
    popup->popupBelow(this);
    return true;
}

void SettingButton::click() {
    if (!place.there()) return;
    if (choice())
        openMenu();
    else
        set(place.number() == 0.0 ? 1.0 : 0.0);
}

void SettingButton::openMenu() {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    const int now = asRound(place.number() - place.setting->least);
    for (int i = 0; i < int(place.setting->words.size()); i++) {
        CMenuItem* item = popup->add(place.setting->words[size_t(i)],
                                     new _COnChange<SettingButton>(this, &SettingButton::chosen));
        item->tag = i;
        item->checked = i == now;
    }
    popup->popupBelow(this);
}

void SettingButton::chosen(CObject* sender) {
    set(place.setting->least + tagOf(sender));
}

bool SettingButton::keyDown(int key, int mods) {
    const bool steps = key == keyPageUp || key == keyPageDown;
    if (steps && !mods && choice() && place.there()) {
        const double to = place.number() + (key == keyPageUp ? -1.0 : 1.0);
        set(std::clamp(to, place.setting->least, place.setting->most));
        return true;
    }
    if (key == keyDelete && !mods) {
        set(place.setting->usual);
        return true;
    }
    return CButton::keyDown(key, mods);
}

void SettingButton::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.text = text.asChar();
    d.role = choice() ? Role::comboBox : Role::toggle;
}
