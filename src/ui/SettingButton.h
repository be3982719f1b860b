#pragma once

#include "gui/controls/CButton.h"
#include "ui/SettingPlace.h"

class CPopup;
class ValueDoor;

/// A setting as a button, its name above: a switch is pressed, of a choice the words are offered in
/// a menu, and the arrows go from one to the next. The right button and the keys for menus open
/// another one, where it has that.
class SettingButton : public CButton {
public:
    static constexpr int switchWidth = 56, choiceWidth = 88, usualHeight = 64;

    SettingButton(CWin* win, ValueDoor* door, const SettingPlace& place);

    std::function<void()> onSet;             ///< it has been set
    std::function<void(CPopup* popup)> menu; ///< adds entries to its own; empty: it has no menu

    void paint(CGraphic* g, CRect rect) override;
    void mouseUp(int x, int y, int btn) override;
    bool contextMenu() override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    void click() override;
    bool refresh(); ///< takes the present value; whether that shows

private:
    bool choice() const { return place.setting->form == Setting::choice; }
    void set(double to);
    void openMenu();
    void chosen(CObject* sender);

    ValueDoor* door;
    SettingPlace place;
};
