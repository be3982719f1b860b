#pragma once

#include "gui/CDrag.h"
#include "gui/CGroup.h"

#include <functional>

class CButton;
class CEffect;
class CFX;
class EffectPicture;
class SettingButton;
class SettingPanel;
class ValueDoor;
class Workspace;

/// One effect of a chain: a line with its name, its power and its place, by which it is dragged,
/// and below a picture of what it does, and its settings. Interface thread.
class EffectBox : public CGroup, private DragHandler {
public:
    CFX* const fx;                      ///< not owned: the box goes before it
    std::function<void(int by)> onMove; ///< up, -1, or down
    std::function<void()> onRemove;
    /// It is dragged, to a height in the group around; `drop`: it is let go there.
    std::function<void(int y, bool drop)> onDragged;
    std::function<void()> onDragLeft; ///< the drag is over

    EffectBox(CWin* win, Workspace& workspace, CEffect& rack, CFX* fx, std::function<bool()> alive);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyInside(int key, int mods) override; ///< Delete removes it, Control with arrows moves it
    void describe(Description& d, int part) const override;

    void fit(int width); ///< takes the height that this needs
    void refresh();

private:
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    CButton* addButton(const char* what, void (EffectBox::*clicked)(CObject*));
    void addKeyButton();
    void keyClicked(CObject*);
    void presetsClicked(CObject*);
    void powerClicked(CObject*);
    void placeClicked(CObject* sender);
    void removeClicked(CObject*);
    void paintSign(CButton* b, CGraphic* g, CRect rect);

    ValueDoor* door;
    std::function<bool()> alive;
    CEffect& rack;
    Workspace& workspace;
    CButton *power, *up, *down, *remove, *presets;
    CButton* follow =
        nullptr;            ///< chooses what the effect follows; null for one that follows nothing
    EffectPicture* picture; ///< among the controls, as the settings
    SettingPanel* settings;
};
