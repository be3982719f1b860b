#include "panels/rack/CEffectWin.h"

#include "effects/CEffect.h"
#include "effects/RackEdits.h"
#include "engine/CQV.h"
#include "engine/EffectSettings.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "panels/PanelBody.h"
#include "panels/rack/ChainView.h"
#include "panels/rack/EffectBox.h"
#include "project/PresetFiles.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 8, addWidth = 120, addHeight = 26, markHeight = 4;
const CRect usualPlace = asRect(120, 120, 120 + 720, 120 + 520);

} // namespace

CEffectWin::CEffectWin(Workspace& space, CEffect& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited), look(edited)), rack(edited) {
    compare([this] { return settingsOfChain(); }, [this] { return rack.getProg(); });
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

std::vector<SettingValue> CEffectWin::settingsOfChain() {
    std::vector<SettingValue> all;
    if (CEffectProg* prog = rack.getProg())
        for (auto* fx : prog->effects)
            for (const Setting& s : settingsOf(*fx)) all.push_back({&s, s.of(fx)});
    return all;
}

PanelWin::Shape CEffectWin::shape() const {
    CEffectProg* prog = rack.getProg();
    Shape now{{prog}, {}};
    if (prog)
        for (const auto* fx : prog->effects) now.objects.push_back(fx);
    return now;
}

void CEffectWin::build() {
    boxes.clear();
    CEffectProg* prog = rack.getProg();
    chain = new ChainView(this, rack);
    chain->visible = prog != nullptr;
    chain->onChosen = [this](const CFX* fx) {
        for (EffectBox* box : boxes)
            if (box->fx == fx) body->reveal(box);
    };
    chain->onSwitched = [this](CFX* fx) { switchPower(fx); };
    body->inner->addControl(chain);
    mark = new CCtrl(this, "mark", 0, 0, 1, markHeight);
    mark->visible = false;
    mark->onPaint = new _COnPaint<CEffectWin>(this, &CEffectWin::paintMark);
    body->inner->addControl(mark);
    for (int i = 0; prog && i < prog->effects.getCount(); i++) addBox(prog, i);
    add = new CButton(this, "add", "Add effect", 0, 0, addWidth, addHeight);
    add->skin = &clTrackControls;
    add->tabStop = true;
    add->visible = prog != nullptr;
    add->onChange = new _COnChange<CEffectWin>(this, &CEffectWin::addClicked);
    body->inner->addControl(add);
}

void CEffectWin::addBox(CEffectProg* prog, int index) {
    auto* fx = prog->effects.items(index);
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
    box->onDragged = [this, prog, fx](int y, bool drop) { drag(prog, fx, y, drop); };
    box->onDragLeft = [this] {
        mark->visible = false;
        body->redraw();
    };
    boxes.push_back(box);
    body->inner->addControl(box);
}

int CEffectWin::placeAt(int y) const {
    const auto below = [y](const EffectBox* box) { return y < box->top + box->height / 2; };
    return int(std::ranges::find_if(boxes, below) - boxes.begin());
}

void CEffectWin::drag(CEffectProg* prog, CFX* fx, int y, bool drop) {
    const int to = placeAt(y);
    if (drop) {
        moveEffect(&rack, prog, fx, to);
        return follow();
    }
    const int above = to > 0 ? boxes[size_t(to - 1)]->top + boxes[size_t(to - 1)]->height : 0;
    const int at = to > 0 ? above + (gap - markHeight) / 2 : boxes.front()->top - markHeight - 2;
    if (mark->visible && mark->top == at) return;
    mark->setBounds(gap, at, boxes.front()->width, markHeight);
    mark->visible = true;
    body->redraw();
}

void CEffectWin::paintMark(CObject*, CGraphic* g, CRect rect) {
    g->fillRect(app->gui->palette.accent, rect);
}

void CEffectWin::switchPower(CFX* fx) {
    rack.host->values->set(effectPower().of(fx), fx->enabled ? 0.0 : 1.0);
    refresh();
}

void CEffectWin::arrange(int wide) {
    if (!chain) return;
    chain->setBounds(gap, gap, wide - 2 * gap, ChainView::usualHeight);
    int y = gap + ChainView::usualHeight + gap;
    for (EffectBox* box : boxes) {
        box->setBounds(gap, y, box->width, box->height);
        box->fit(wide - 2 * gap);
        y += box->height + gap;
    }
    if (add) add->setBounds(gap, y, addWidth, addHeight);
}

void CEffectWin::refresh() {
    if (chain) chain->refresh();
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
    if (CEffectProg* prog = rack.getProg()) insertEffect(&rack, prog, tagOf(sender), -1);
    follow();
}

void CEffectWin::programChosen(CObject* sender) {
    addRackProgram(&rack, tagOf(sender));
    follow();
}
