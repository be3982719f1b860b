#include "mixer/InsertSlot.h"

#include "base/Numbers.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "engine/KeyInput.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/Shapes.h"
#include "mixer/CMixerStrip.h"
#include "mixer/MixerState.h"
#include "plugins/CVST.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cstdlib>
#include <numbers>

namespace {

constexpr int lightReach = 14, nameLeft = 14, margin = 4, typedRoom = 4;
constexpr double keyStep = 0.05, wheelStep = 0.02;

} // namespace

InsertSlot::InsertSlot(CMixerStrip& strip, int at)
    : RoundButton(strip.win, "insert", "", 0, 0, 1, 1), index(at), owner(strip),
      typed(this, "0123456789", typedRoom) {
    skin = &clFXs;
    typed.onTyped = [this](const CStr& entered) {
        setWet(std::atof(entered.asChar()) / 100, false);
    };
    wire(onDrag, new _COnChange<InsertSlot>(this, &InsertSlot::dragAway));
    wire(onDragOver, new _COnMouse<InsertSlot>(this, &InsertSlot::dragOver));
    wire(onDrop, new _COnMouse<InsertSlot>(this, &InsertSlot::dropped));
}

CComp* InsertSlot::insert() const {
    return owner.strip().channel->inserts.items(index);
}

bool InsertSlot::refresh() {
    Shown now;
    now.mark = shown.mark;
    if (CComp* in = insert()) {
        now.name = in->id;
        now.on = in->enabled != 0;
        now.failed = isFailedPlugin(in);
        now.percent = asRound(double(in->wet) * 100);
        now.lowered = loweredWidth(gainReductionDb(in));
        const CKeyInput* key = keyInputOf(in);
        now.key = key ? key->source() : nullptr;
    }
    if (now == shown && !hint.empty()) {
        const CStr was = hint;
        if (isHovered()) tellHint(); // what it costs is another with every pass
        if (!(hint == was)) win->app->updateHint(this);
        return false;
    }
    shown = now;
    tellHint();
    redraw();
    return true;
}

void InsertSlot::tellHint() {
    hint = shown.name.empty()
               ? "Press to choose an effect"
               : "Press for its window or menu, on the light to switch it; drag it to "
                 "another place, with Control a copy";
    if (shown.failed) hint = "It has failed: its window has Restart";
    followed = shown.key ? nameOfStrip(owner.strip().comp->host, shown.key) : CStr();
    if (shown.key) hint += ". It follows " + followed;
    const CStr health = insert() ? pluginHealth(insert()) : CStr();
    if (!health.empty()) hint += ". " + health;
}

/// So that 24 dB fill the slot.
int InsertSlot::loweredWidth(float db) const {
    constexpr double most = 24.0;
    return asRound(std::clamp(double(db) / most, 0.0, 1.0) * (width - 4));
}

void InsertSlot::showMark(bool on) {
    if (shown.mark == on) return;
    shown.mark = on;
    redraw();
}

void InsertSlot::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const TextScope small(g, {.size = TextSize::small});
    if (shown.name.empty()) {
        const int ground = fadeCol(colours.panel, colours.window, 0.5);
        g->fillRound(isHovered() || isPushed() ? fadeCol(ground, colours.accent, 0.2) : ground,
                     rect);
        if (isHovered() || hasKeyFocus()) g->drawText(colours.dimText, "+", rect, 0);
        if (hasKeyFocus()) g->frameRect(colours.accent, rect);
    } else if (paintRound(g, rect)) {
        CPath light;
        light.arc(margin + 3.5, rect.bottom / 2.0, 3, 0, 2 * std::numbers::pi);
        light.close();
        fillPath(g, light,
                 shown.failed ? colours.record
                 : shown.on   ? colours.accent
                              : colours.frame);
        if (shown.failed) g->frameRound(colours.record, rect);
        const CRect box = asRect(nameLeft, 0, rect.right - margin, rect.bottom);
        g->drawText(shown.on ? faceColour() : colours.dimText,
                    textFace({.size = TextSize::small})->shortened(shown.name, box.width()), box,
                    textLeft);
        const int wet = asRound((rect.right - 4) * shown.percent / 100.0);
        if (shown.percent < 100)
            g->fillRect(shown.on ? colours.accent : colours.dimText,
                        asRect(2, rect.bottom - 3, 2 + wet, rect.bottom - 1));
        if (shown.lowered > 0)
            g->fillRect(colours.mute, asRect(rect.right - 2 - shown.lowered, 1, rect.right - 2, 3));
        paintFocus(g, rect, fillColour());
    }
    if (shown.mark) g->fillRect(colours.accent, asRect(0, 0, rect.right, 2));
    if (!typed.typing()) return;
    g->fillRect(colours.window, rect);
    g->drawText(colours.text, typed.shown() + "%", rect, 0);
}

// The mouse.

void InsertSlot::mouseDown(int x, int y, int btn) {
    if (btn & modRight) return;
    CButton::mouseDown(x, y, btn);
}

void InsertSlot::mouseUp(int x, int y, int btn) {
    if ((btn & modRight) && inside(x, y)) {
        owner.offerEffects(this);
        return;
    }
    if ((btn & modLeft) && inside(x, y) && x < lightReach && insert()) {
        redraw();
        return togglePower();
    }
    CButton::mouseUp(x, y, btn);
}

void InsertSlot::click() {
    if (!insert() || !owner.openInsert(insert())) owner.offerEffects(this);
}

bool InsertSlot::contextMenu() {
    owner.offerEffects(this);
    return true;
}

void InsertSlot::togglePower() {
    const StoredValue power = parameterOf(insert(), paramPower);
    owner.door()->set(power, power.get()[0] > 0.0 ? 0.0 : 1.0);
    refresh();
}

/// `run`: turns that follow each other are one step.
void InsertSlot::setWet(double share, bool run) {
    CComp* in = insert();
    if (!in) return;
    const StoredValue wet = parameterOf(in, paramWet);
    const double to = std::clamp(share, 0.0, 1.0);
    if (run)
        owner.door()->nudge(wet, to);
    else
        owner.door()->set(wet, to);
    refresh();
    owner.tell(in->id + ": " + asStr(shown.percent) + "% of the effect");
}

bool InsertSlot::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl) || !insert()) return false;
    const double fine = btn & modShift ? 0.5 : 1.0;
    setWet(double(insert()->wet) + ((dy ? dy : dx) > 0 ? wheelStep : -wheelStep) * fine, true);
    return true;
}

bool InsertSlot::keyDown(int key, int mods) {
    if (insert() && typed.keyDown(key, mods)) return true;
    if (insert() && !mods) {
        if (key == keyPageUp || key == keyPageDown) {
            setWet(double(insert()->wet) + (key == keyPageUp ? keyStep : -keyStep), true);
            return true;
        }
        if (key == keyDelete) {
            owner.removeInsertOf(this);
            return true;
        }
    }
    if (insert() && mods == modControl && key == keyReturn) {
        togglePower();
        return true;
    }
    if (insert() && (mods & modAlt) && (key == ::keyUp || key == ::keyDown)) {
        owner.stepInsert(this, key == ::keyUp ? -1 : 1);
        return true;
    }
    return CButton::keyDown(key, mods);
}

void InsertSlot::setFocus(bool on) {
    CButton::setFocus(on);
    if (!on) typed.finish();
}

// Drag and drop.

void InsertSlot::dragAway(CObject*) {
    CComp* in = insert();
    if (!in) return;
    win->app->startDrag(this);
    auto* item = new CDropItem(in->id, dropInsert);
    item->object = in;
    item->list = &owner.strip().channel->inserts;
    win->app->dragList->add(item);
}

/// Told with a point outside when the pointer has left.
void InsertSlot::dragOver(CObject*, int x, int y, int) {
    showMark(inside(x, y) && owner.takesInsertDrop());
}

void InsertSlot::dropped(CObject*, int, int, int btn) {
    showMark(false);
    owner.dropInserts(index, btn);
}

void InsertSlot::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.role = Role::button;
    if (shown.name.empty()) {
        d.text = "empty";
        return;
    }
    const CStr key = followed.empty() ? CStr() : ", follows " + followed;
    d.text = (shown.name +
              (shown.failed ? ", failed"
               : shown.on   ? ", on"
                            : ", off") +
              key)
                 .asChar();
    d.range = Description::Range{double(shown.percent), 0.0, 100.0, 1.0};
    d.set(statePressed, shown.on);
}

bool InsertSlot::enterNumber(int, double to) {
    if (!insert()) return false;
    setWet(to / 100, false);
    return true;
}
