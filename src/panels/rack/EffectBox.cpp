#include "panels/rack/EffectBox.h"

#include "common/fx/CFX.h"
#include "effects/CEffect.h"
#include "effects/EffectKinds.h"
#include "effects/RackParams.h"
#include "engine/CQV.h"
#include "engine/EffectSettings.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "panels/rack/EffectPicture.h"
#include "panels/rack/EffectPresets.h"
#include "ui/KeyMenu.h"
#include "ui/ProgramItems.h"
#include "ui/SettingPanel.h"

namespace {

constexpr int gap = 8, headHeight = 32, side = 20, powerWidth = 44, keyWidth = 180;
constexpr int presetsWidth = 64;
constexpr int leastBeside = 560; ///< so wide that the picture stands beside the settings
constexpr int cursorPlain = 1, cursorUpDown = 11;

} // namespace

EffectBox::EffectBox(CWin* owner, Workspace& space, CEffect& whole, CFX* of,
                     std::function<bool()> lives)
    : CGroup(owner, effectName(of->type), 0, 0, 1, 1), fx(of), door(whole.host->values.get()),
      alive(std::move(lives)), rack(whole), workspace(space),
      power(addButton("Power", &EffectBox::powerClicked)),
      up(addButton("Move up", &EffectBox::placeClicked)),
      down(addButton("Move down", &EffectBox::placeClicked)),
      remove(addButton("Remove", &EffectBox::removeClicked)),
      presets(addButton("Presets", &EffectBox::presetsClicked)),
      picture(new EffectPicture(owner, of, alive,
                                [host = rack.host] { return double(host->tempoNow); })),
      settings(new SettingPanel(owner, "settings", space)) {
    arrowsWalk = true;
    for (CButton* b : {up, down, remove}) b->onPaint = new _COnPaint(this, &EffectBox::paintSign);
    presets->setText("Presets");
    presets->hint = "Other settings for this effect alone, or these as a preset";
    if (fx->type == fxCompressor || fx->type == fxGate) addKeyButton();
    addControl(picture);
    addControl(settings);
    const Settings all = settingsOf(*fx);
    if (!all.empty()) {
        SettingPanel::Section section{all.subspan(1), fx, -1, "", {}, alive};
        section.param = [&whole, of](const Setting& s, bool) { return rackParamOf(whole, *of, s); };
        section.paramComp = [&whole](const Setting&) { return &whole; };
        settings->show({section});
    }
    refresh();
}

CButton* EffectBox::addButton(const char* what, void (EffectBox::*clicked)(CObject*)) {
    auto* made = new CButton(win, what, "", 0, (headHeight - side) / 2, side, side);
    made->hint = what;
    made->spokenName = CStr(what) + ", " + effectName(fx->type);
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->tabStop = true;
    made->onChange = new _COnChange<EffectBox>(this, clicked);
    addControl(made);
    return made;
}

void EffectBox::addKeyButton() {
    follow = addButton("Follow", &EffectBox::keyClicked);
    follow->hint = "Choose the strip that it follows in place of its own sound (side chain)";
}

void EffectBox::keyClicked(CObject*) {
    if (!alive()) return;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    fillKeyMenu(popup, [this]() -> CComp* { return alive() ? &rack : nullptr; });
    popup->popupBelow(follow);
}

void EffectBox::presetsClicked(CObject*) {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    fillEffectPresets(popup, workspace, rack, fx, alive);
    popup->popupBelow(presets);
}

void EffectBox::fit(int wide) {
    picture->visible = !picture->empty();
    const bool beside = picture->visible && wide >= leastBeside;
    const int from = beside ? picture->width + gap : 0;
    const int below = picture->visible && !beside ? picture->height : 0;
    picture->setBounds(gap, headHeight + gap, picture->width, picture->height);
    settings->setBounds(from, headHeight + below, 1, 1);
    settings->fit(wide - from);
    setBounds(left, top, wide, headHeight + below + settings->height);
    int x = wide - gap;
    for (CButton* b : {remove, down, up}) {
        x -= side;
        b->setBounds(x, b->top, side, side);
        x -= gap / 2;
    }
    power->setBounds(gap, power->top, powerWidth, side);
    x -= presetsWidth;
    presets->setBounds(x, presets->top, presetsWidth, side);
    x -= gap / 2;
    if (follow) follow->setBounds(x - keyWidth, follow->top, keyWidth, side);
}

void EffectBox::refresh() {
    if (!alive()) return;
    settings->refresh();
    picture->refresh();
    if (follow) {
        follow->setText("Follows " + keyText(&rack));
        follow->setLit(rack.keyInput().source() != nullptr);
    }
    const bool on = fx->enabled != 0;
    if (on == power->lit && !power->text.empty()) return;
    power->setLit(on);
    power->setText(on ? "On" : "Off");
}

void EffectBox::powerClicked(CObject*) {
    if (!alive()) return;
    door->set(effectPower().of(fx), fx->enabled ? 0.0 : 1.0);
    refresh();
}

void EffectBox::placeClicked(CObject* sender) {
    if (alive()) onMove(sender == up ? -1 : 1);
}

void EffectBox::removeClicked(CObject*) {
    if (alive()) onRemove();
}

void EffectBox::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if ((btn & modLeft) && y < headHeight && alive())
        win->app->drag.start(this, this, asPoint(x, y), btn);
}

void EffectBox::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    cursor = y < headHeight ? cursorUpDown : cursorPlain;
}

void EffectBox::dragMove(const DragPoint& point) {
    if (alive()) onDragged(top + point.at.y, false);
}

void EffectBox::dragEnd(const DragPoint& point) {
    onDragLeft();
    if (alive()) onDragged(top + point.at.y, true);
}

void EffectBox::dragCancel() {
    onDragLeft();
}

bool EffectBox::keyInside(int key, int mods) {
    if (!alive()) return false;
    if (mods == modControl && (key == ::keyUp || key == ::keyDown)) {
        onMove(key == ::keyUp ? -1 : 1);
        return true;
    }
    if (mods == modControl && key == keyDelete) {
        onRemove();
        return true;
    }
    return CGroup::keyInside(key, mods);
}

void EffectBox::paintSign(CButton* b, CGraphic* g, CRect rect) {
    if (b == remove)
        drawCloseButton(g, rect, b->faceColour());
    else
        drawArrow(g, b->faceColour(), rect, b == up ? dirUp : dirDown, 3);
}

void EffectBox::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.panel, clientRect());
    g->frameRound(colours.frame, clientRect());
    {
        const TextScope bold(g, {.bold = true});
        const int from = gap + powerWidth + gap;
        g->drawText(power->lit ? colours.text : colours.dimText, effectName(fx->type),
                    asRect(from, 0, (follow ? follow : presets)->left - gap, headHeight), textLeft);
    }
    CGroup::paint(g, rect);
}

void EffectBox::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = effectName(fx->type).asChar();
}
