#pragma once

#include "gui/CGroup.h"

#include <functional>

class CButton;
class CEffect;
class CFX;
class SettingButton;
class SettingPanel;
class ValueDoor;
class Workspace;

/// One effect of a chain: a line with its name, its power and its place, and its settings below.
/// Interface thread.
class EffectBox : public CGroup {
public:
    CFX* const fx;                      ///< not owned: the box goes before it
    std::function<void(int by)> onMove; ///< up, -1, or down
    std::function<void()> onRemove;

    EffectBox(CWin* win, Workspace& workspace, CEffect& rack, CFX* fx,
              std::function<bool()> alive);

    void paint(CGraphic* g, CRect rect) override;
    bool keyInside(int key, int mods) override; ///< Delete removes it, Control with arrows moves it
    void describe(Description& d, int part) const override;

    void fit(int width); ///< takes the height that this needs
    void refresh();

private:
    CButton* addButton(const char* what, void (EffectBox::*clicked)(CObject*));
    void powerClicked(CObject*);
    void placeClicked(CObject* sender);
    void removeClicked(CObject*);
    void paintSign(CObject* sender, CGraphic* g, CRect rect);

    ValueDoor* door;
    std::function<bool()> alive;
    CButton *power, *up, *down, *remove;
    SettingPanel* settings;
};
