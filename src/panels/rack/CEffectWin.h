#pragma once

#include "panels/PanelWin.h"

class CButton;
class CEffect;
class CEffectProg;
class CFX;
class ChainView;
class EffectBox;

/// The window of a rack: the way of the sound, and the effects of its current program below each
/// other, in the order in which they sound; one is dragged to another place by its head. Interface
/// thread.
class CEffectWin : public PanelWin {
public:
    CEffectWin(Workspace& workspace, CEffect& rack);

private:
    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    ProgramBar::Deeds deeds(CEffect& of);
    static MacroLook look(CEffect& of);
    std::vector<SettingValue> settingsOfChain();
    void addKinds(CPopup* popup, void (CEffectWin::*chosen)(CObject*));
    void addClicked(CObject*);
    void effectChosen(CObject* sender);
    void programChosen(CObject* sender);
    void addBox(CEffectProg* prog, int index);
    void drag(CEffectProg* prog, CFX* fx, int y, bool drop);
    int placeAt(int y) const; ///< between the boxes, of an effect that is dropped there
    void paintMark(CObject*, CGraphic* g, CRect rect);
    void switchPower(CFX* fx);

    CEffect& rack;
    std::vector<EffectBox*> boxes; ///< among the controls, as the next
    CButton* add = nullptr;
    ChainView* chain = nullptr;
    CCtrl* mark = nullptr; ///< where a drag leads to
};
