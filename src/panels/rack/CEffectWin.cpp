#include "panels/rack/CEffectWin.h"

#include "effects/CEffect.h"
#include "effects/RackEdits.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "gui/CApp.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "panels/PanelBody.h"
#include "panels/rack/EffectBox.h"
#include "project/PresetFiles.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, addWidth = 120, addHeight = 26;
const CRect usualPlace = asRect(120, 120, 120 + 720, 120 + 520);

int chosenKind(CObject* sender) {
    return static_cast<CMenuItem*>(static_cast<CCtrl*>(sender))->tag;
}

} // namespace

CEffectWin::CEffectWin(Workspace& space, CEffect& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited), look(edited)), rack(edited) {
    follow();
}

ProgramBar::Deeds CEffectWin::deeds(CEffect& of) {
    ProgramBar::Deeds can;
    can.addKinds = [this](CPopup* popup) { addKinds(popup, &CEffectWin::programChosen); };
    can.open = [&of](const CStr& path) { of.openProg(path); };
    can.save = [&of](const CStr& path) { saveProgram(&of, path); };
    can.extension = ".qve";
    return can;
}

MacroLook CEffectWin::look(CEffect& of) {
    return {[&of](int param) { return parameterOf(&of, param); },
            [&of](int, int param) { return of.paramName(param); }};
}

PanelWin::Shape CEffectWin::shape() const {
    CEffectProg* prog = rack.getProg();
    Shape now{{prog}, {}};
    if (prog)
        for (const auto* fx : each<CFX>(prog->effects)) now.objects.push_back(fx);
    return now;
}

void CEffectWin::build() {
    boxes.clear();
    CEffectProg* prog = rack.getProg();
    for (int i = 0; prog && i < prog->effects.getCount(); i++) addBox(prog, i);
    add = new CButton(this, "add", "Add effect", 0, 0, addWidth, addHeight);
    add->skin = &clTrackControls;
    add->tabStop = true;
    add->visible = prog != nullptr;
    add->onChange = new _COnChange<CEffectWin>(this, &CEffectWin::addClicked);
    body->inner->addControl(add);
}

void CEffectWin::addBox(CEffectProg* prog, int index) {
    auto* fx = static_cast<CFX*>(prog->effects.items(index));
    const auto alive = [this, prog, fx] {
        return rack.progs.contains(prog) && prog->effects.contains(fx);
    };
    auto* box = new EffectBox(this, workspace, rack, fx, alive);
    box->onMove = [this, prog, fx](int by) {
        const int at = prog->effects.indexed(fx), to = by < 0 ? at - 1 : at + 2;
        if (to >= 0 && to <= prog->effects.getCount()) moveEffect(&rack, prog, fx, to);
        follow();
    };
    box->onRemove = [this, prog, fx] {
        removeEffect(&rack, prog, fx);
        follow();
    };
    boxes.push_back(box);
    body->inner->addControl(box);
}

void CEffectWin::arrange(int wide) {
    int y = gap;
    for (EffectBox* box : boxes) {
        box->setBounds(gap, y, box->width, box->height);
        box->fit(wide - 2 * gap);
        y += box->height + gap;
    }
    if (add) add->setBounds(gap, y, addWidth, addHeight);
}

void CEffectWin::refresh() {
    for (EffectBox* box : boxes) box->refresh();
}

void CEffectWin::addKinds(CPopup* popup, void (CEffectWin::*chosen)(CObject*)) {
    for (int kind = 0; kind < effectKindCount; kind++)
        popup->add(effectName(kind), new _COnChange<CEffectWin>(this, chosen))->tag = kind;
}

void CEffectWin::addClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    addKinds(popup, &CEffectWin::effectChosen);
    popup->popupBelow(add);
}

void CEffectWin::effectChosen(CObject* sender) {
    if (CEffectProg* prog = rack.getProg()) insertEffect(&rack, prog, chosenKind(sender), -1);
    follow();
}

void CEffectWin::programChosen(CObject* sender) {
    addRackProgram(&rack, chosenKind(sender));
    follow();
}
