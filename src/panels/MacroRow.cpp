#include "panels/MacroRow.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Macros.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "ui/KnobFace.h"
#include "ui/MenuDeed.h"
#include "ui/NameField.h"
#include "ui/ParamMenu.h"
#include "ui/SettingName.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, mostWidth = 80, noParam = -1;
constexpr double radius = 12.0, wholeTravel = 160.0, percent = 100.0;
constexpr int textHeight = 14, fieldHeight = 22;

} // namespace

// A knob.

MacroKnob::MacroKnob(MacroRow& in, int which)
    : CStoredCtrl(in.win, "macro" + asStr(which + 1), in.comp.host->values.get(), 0, 0, 1, 1),
      number(which), row(in) {
    usual = 0.0;
    enabled = true;
    value = [this]() -> std::optional<StoredValue> {
        const int param = row.param(number);
        if (param == noParam) return std::nullopt;
        return row.look.value(param);
    };
    text = [this] { return asStr(asRound(value()->get()[0] * percent)) + " %"; };
    typedValue = [](double entered) { return entered / percent; };
    menu = [this](CPopup* popup) { addOwnItems(popup); };
    refresh();
}

CStr MacroKnob::name() const {
    const int param = row.param(number);
    if (param == noParam) return "Macro " + asStr(number + 1);
    const std::optional<MacroStyle> style = macroStyleOf(row.comp, number);
    return style && !style->name->empty() ? *style->name : row.look.name(number, param);
}

bool MacroKnob::refresh() {
    const bool learns = row.learning() == number;
    const CStr now = name();
    const bool other = learns != shownLearning || now != shownName;
    shownLearning = learns;
    shownName = now;
    spokenName = "Macro " + asStr(number + 1);
    hint = empty() ? CStr("Press, then touch a control: this turns it from then on") : now;
    if (other) redraw();
    takeRange();
    const bool changed = CStoredCtrl::refresh();
    enabled = true; // to be pressed
    return changed || other;
}

void MacroKnob::takeRange() {
    const std::optional<MacroStyle> style = macroStyleOf(row.comp, number);
    const double from = style ? double(*style->low) : 0.0, to = style ? double(*style->high) : 1.0;
    if (from == least && to == most) return;
    least = from;
    most = to;
    redraw();
}

void MacroKnob::mouseDown(int x, int y, int btn) {
    if ((btn & modLeft) && (empty() || shownLearning))
        row.learn(shownLearning ? -1 : number);
    else
        CStoredCtrl::mouseDown(x, y, btn);
}

bool MacroKnob::keyDown(int key, int mods) {
    if (CStoredCtrl::keyDown(key, mods)) return true;
    if (mods || key != keyReturn) return false;
    row.learn(shownLearning ? -1 : number);
    return true;
}

bool MacroKnob::pressPart(int) {
    row.learn(shownLearning ? -1 : number);
    return true;
}

bool MacroKnob::contextMenu() {
    if (CStoredCtrl::contextMenu()) return true;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    addOwnItems(popup);
    popup->popupBelow(this);
    return true;
}

void MacroKnob::addOwnItems(CPopup* popup) {
    popup->addSeparator();
    addDeed(popup, "Learn what it turns", [this] { row.learn(number); })->checked = shownLearning;
    addDeed(popup, "Turn nothing", [this] { row.empty(number); })->enabled =
        row.param(number) != noParam;
    if (empty()) return;
    addRangeItems(popup);
    const ParamRef turned{&row.comp, row.param(number)};
    addParamItems(
        popup, row.workspace, [turned](bool) { return turned; }, &row.comp);
}

void MacroKnob::addRangeItems(CPopup* popup) {
    const std::optional<MacroStyle> style = macroStyleOf(row.comp, number);
    if (!style) return;
    const auto limit = [this, name = *style->name](float low, float high) {
        setMacroStyle(row.comp, number, name, low, high);
        row.refresh();
    };
    const float low = *style->low, high = *style->high, now = float(value()->get()[0]);
    addDeed(popup, "Rename...", [this] { row.rename(*this); });
    addDeed(popup, "Begin its range here", [=] { limit(now, high); })->enabled = now < high;
    addDeed(popup, "End its range here", [=] { limit(low, now); })->enabled = low < now;
    addDeed(popup, "Whole range", [=] { limit(0.0f, 1.0f); })->enabled = low > 0.0f || high < 1.0f;
    popup->addSeparator();
}

double MacroKnob::along(const DragPoint& point) const {
    return (point.at.x - point.anchor.x) + (point.anchor.y - point.at.y);
}

double MacroKnob::travel() const {
    return wholeTravel;
}

void MacroKnob::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    if (shownLearning) g->fillRound(colours.raised, clientRect());
    paintSettingName(g, colours, shownName, width);
    const int middle = (height - textHeight + settingNameHeight) / 2;
    KnobFace{width / 2.0, double(middle),     radius,  empty() ? 0.0 : shareOf(shownValue()),
             0.0,         held() && !empty(), !empty()}
        .paint(g, colours);
    const CRect below = asRect(0, height - textHeight, width, height);
    if (typing()) {
        paintTyping(g, below);
    } else {
        const TextScope small(g, {.size = TextSize::small});
        g->drawText(shownLearning ? colours.accent : colours.text,
                    shownLearning ? CStr("Touch...") : told(), below, 0);
    }
    if (hasKeyFocus() || shownLearning) g->frameRect(colours.accent, clientRect());
}

void MacroKnob::describe(Description& d, int part) const {
    CStoredCtrl::describe(d, part);
    d.text = shownLearning ? "touch a control" : (shownName + " " + told()).asChar();
}

// The row.

MacroRow::MacroRow(CWin* owner, Workspace& space, CComp& of, MacroLook how)
    : CGroup(owner, "macros", 0, 0, 1, usualHeight), workspace(space), comp(of),
      look(std::move(how)) {
    arrowsWalk = true;
    for (int i = 0; i < CComp::macroCount; i++)
        addControl(knobs.emplace_back(new MacroKnob(*this, i)));
}

int MacroRow::param(int macro) const {
    return comp.getMacroParam(macro);
}

void MacroRow::empty(int macro) {
    setMacro(comp, macro, noParam);
    refresh();
}

void MacroRow::rename(const MacroKnob& knob) {
    NameField::dropLeft(field);
    const std::optional<MacroStyle> style = macroStyleOf(comp, knob.number);
    if (!style) return;
    const CRect over = asRect(knob.left, knob.top, knob.left + knob.width, knob.top + fieldHeight);
    field = new NameField(this, over, knob.shownText(), "Name of the macro");
    field->onName = [this, macro = knob.number](const CStr& name) {
        const std::optional<MacroStyle> now = macroStyleOf(comp, macro);
        if (now) setMacroStyle(comp, macro, name, *now->low, *now->high);
        refresh();
    };
}

void MacroRow::learn(int macro) {
    learner = macro;
    touches = comp.host->values->touches();
    if (macro >= 0) workspace.setStatus("Touch the control that the macro is to turn");
    refresh();
}

void MacroRow::refresh() {
    ValueDoor& door = *comp.host->values;
    if (learner >= 0 && door.touches() != touches && !door.dragging()) {
        const ParamRef& by = door.touched();
        touches = door.touches();
        if (by.object == &comp && by.param != noParam) {
            setMacro(comp, learner, by.param);
            learner = -1;
        }
    }
    for (MacroKnob* k : knobs) k->refresh();
    NameField::dropLeft(field);
}

void MacroRow::resized() {
    const int each = std::min(mostWidth, (width - 2 * gap) / CComp::macroCount);
    int x = gap;
    for (MacroKnob* k : knobs) {
        k->setBounds(x, gap / 2, each - gap / 2, usualHeight - gap);
        x += each;
    }
}

void MacroRow::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
}
