#include "surfaces/CMapPanel.h"

#include "base/Numbers.h"
#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/MapEdits.h"
#include "engine/StoredValue.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "surfaces/CSourceValue.h"
#include "surfaces/TakeOverNames.h"

namespace {

constexpr int margin = 8, gap = 4, fieldHeight = 20, numberWide = 52, modeWide = 108,
              learnWide = 52, delWide = 20;
constexpr int ledSize = 8, ledTicks = 5, highest = 127;

/// What an object is called in front of its parameters.
CStr ownerText(const CMap* map) {
    CObject* target = map->target;
    COutputChannel* strip = map->owner;
    CStr text;
    if (strip && strip->comp) text = strip->comp->getName(strip) + ", ";
    if (target->category == categoryComp) return text + target->id;
    if (target->asType(categoryChannel, channelOutput)) {
        auto* ch = static_cast<COutputChannel*>(target);
        return ch->comp ? ch->comp->getName(ch) : CStr();
    }
    return text + "Send";
}

} // namespace

CStr mapTargetText(const CMap* map) {
    CObject* target = map->target;
    if (!target) return "Nothing yet: with MIDI learn on, move a control";
    return ownerText(map) + ", " + paramTitle(target, map->param);
}

CMapPanel::CMapPanel(CWin* owner, CQV* root, CMap* of, int t, int w,
                     std::function<void(const CStr&)> told)
    : CGroup(owner, "map", 0, t, w, rowHeight), host(root), map(of), tell(std::move(told)),
      controller(addValue(new CSourceValue(owner, "cc", 0, 0, numberWide, fieldHeight),
                          "Controller number, key, pressure, bend, or what else Learn finds",
                          "Controller", &CMapPanel::ccChanged)),
      low(addValue("min", "Range: where the parameter is with the controller at its lowest", "Min",
                   &CMapPanel::minChanged)),
      high(addValue("max", "Range: where the parameter is with the controller at its highest",
                    "Max", &CMapPanel::maxChanged)),
      mode(new CDropdown(owner, "mode", 0, 0, modeWide, fieldHeight)),
      learn(new CButton(owner, "learn", "Learn", 0, 0, learnWide, fieldHeight)),
      del(new CButton(owner, "delete", "x", 0, 0, delWide, fieldHeight)) {
    for (const char* name : takeOverNames) mode->add(name);
    mode->hint = takeOverHint;
    mode->spokenName = "Mode";
    mode->tabStop = true;
    wire(mode->onChange, new _COnChange<CMapPanel>(this, &CMapPanel::modeChanged));
    addControl(mode);
    controller->max = mostSource;
    learn->hint = "The next controller that moves leads here";
    del->hint = "Delete";
    wire(learn->onChange, new _COnChange<CMapPanel>(this, &CMapPanel::learnClicked));
    wire(del->onChange, new _COnChange<CMapPanel>(this, &CMapPanel::deleteMapClicked));
    for (CButton* button : {learn, del}) {
        button->tabStop = button->hooverable = true;
        addControl(button);
    }
    CMapPanel::resized();
    refresh();
}

CValue* CMapPanel::addValue(const char* key, const char* told, const char* spoken,
                            void (CMapPanel::*changed)(CObject*)) {
    return addValue(new CValue(win, key, 0, 0, numberWide, fieldHeight), told, spoken, changed);
}

CValue* CMapPanel::addValue(CValue* value, const char* told, const char* spoken,
                            void (CMapPanel::*changed)(CObject*)) {
    value->max = highest;
    value->hint = told;
    value->spokenName = spoken;
    value->liveUpdate = false;
    value->tabStop = true;
    wire(value->onChange, new _COnChange<CMapPanel>(this, changed));
    addControl(value);
    return value;
}

void CMapPanel::resized() {
    const int y = (rowHeight - fieldHeight) / 2;
    const auto place = [&](CCtrl* ctrl, int fromRight) {
        ctrl->setBounds(width - fromRight, y, ctrl->width, fieldHeight);
    };
    place(controller, Columns::controller);
    place(low, Columns::low);
    place(high, Columns::high);
    place(mode, Columns::mode);
    place(learn, Columns::learn);
    place(del, Columns::del);
}

void CMapPanel::refresh() {
    target = mapTargetText(map);
    controller->showValue(map->cc);
    low->showValue(map->min);
    high->showValue(map->max);
    if (mode->index != map->mode) mode->setIndex(map->mode);
    learn->setLit(map->learning);
    redraw();
}

void CMapPanel::updateLed() {
    const bool before = light > 0, waited = waits;
    if (map->changed.exchange(false))
        light = ledTicks;
    else if (light > 0)
        light--;
    waits = map->mode == mapPickup && map->waiting;
    if (learn->lit != map->learning.load() || controller->value != map->cc.load()) refresh();
    if (before != (light > 0) || waited != waits) redraw();
}

void CMapPanel::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame, asRect(0, rowHeight - 1, width, rowHeight));
    const int y = (rowHeight - ledSize) / 2;
    const int lamp = light > 0 ? colours.accent : waits ? colours.solo : colours.frame;
    g->fillRound(lamp, asRect(margin, y, margin + ledSize, y + ledSize));
    const int x = margin + ledSize + margin;
    g->drawText(map->target ? colours.text : colours.dimText, target,
                asRect(x, 0, width - Columns::controller - gap, rowHeight), textLeft);
    CGroup::paint(g, rect);
}

void CMapPanel::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = target.asChar();
    if (waits) d.help = "Waits to be picked up";
}

// What the user changes.

void CMapPanel::ccChanged(CObject*) {
    host->values->set(mapValue(map, MapField::controller), controller->value);
    refresh();
}

void CMapPanel::minChanged(CObject*) {
    host->values->set(mapValue(map, MapField::min), low->value);
}

void CMapPanel::maxChanged(CObject*) {
    host->values->set(mapValue(map, MapField::max), high->value);
}

void CMapPanel::modeChanged(CObject*) {
    host->values->set(mapValue(map, MapField::mode), mode->index);
}

void CMapPanel::learnClicked(CObject*) {
    map->learning = !map->learning;
    if (map->learning)
        tell("Move a controller of a MIDI device, or press a key: it leads here from then on");
    refresh();
}

void CMapPanel::deleteMapClicked(CObject*) {
    deleteMap(host, map);
}
