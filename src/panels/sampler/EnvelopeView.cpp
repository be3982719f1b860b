#include "panels/sampler/EnvelopeView.h"

#include "common/Curves.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "instruments/Modulators.h"
#include "instruments/SoundSettings.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double margin = 10.0, cornerRadius = 4.0, reach = 9.0;
constexpr int curveSteps = 24;
constexpr double fillAlphaShare = 0.18;
constexpr double keyShare = 0.02; ///< of a stage or of full, for a key

void addStage(CPath& path, double x1, double y1, double x2, double y2, float curve) {
    for (int i = 1; i <= curveSteps; i++) {
        const float t = float(i) / curveSteps;
        path.lineTo(x1 + (x2 - x1) * double(t),
                    double(envelopePoint(float(y1), float(y2), t, curve)));
    }
}

} // namespace

EnvelopeView::EnvelopeView(CWin* owner, ValueDoor* through)
    : CCtrl(owner, "envelope", 0, 0, 1, usualHeight), door(through) {
    hooverable = tabStop = true;
    hint = "Drag the corners of the envelope";
}

void EnvelopeView::show(CEnv* of, std::function<bool()> lives,
                        std::function<std::vector<CObject*>()> along) {
    envelope = of;
    alive = std::move(lives);
    others = std::move(along);
    shape = {};
    refresh();
    redraw();
}

bool EnvelopeView::there() const {
    return envelope && (!alive || alive());
}

EnvelopeView::Shape EnvelopeView::present() const {
    if (!there()) return {};
    return {envelope->initial, envelope->attack, envelope->decay, envelope->sustain,
            envelope->release, envelope->ac,     envelope->dc,    envelope->rc};
}

bool EnvelopeView::refresh() {
    const Shape now = present();
    if (now == shape) return false;
    shape = now;
    redraw();
    return true;
}

double EnvelopeView::room() const {
    return (width - 2 * margin) / 4.0;
}

double EnvelopeView::yOf(double level) const {
    return height - margin - level * (height - 2 * margin);
}

EnvelopeView::Place EnvelopeView::placeOf(Corner corner) const {
    const double from = margin, full = margin + double(shape.attack) * room();
    const double down = full + double(shape.decay) * room(), off = down + room();
    switch (corner) {
    case start:
        return {from, yOf(double(shape.initial))};
    case peak:
        return {full, yOf(1.0)};
    case sustained:
        return {down, yOf(double(shape.sustain))};
    default:
        return {off + double(shape.release) * room(), yOf(0.0)};
    }
}

void EnvelopeView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.raised, clientRect());
    if (!envelope) return;
    const Place from = placeOf(start), full = placeOf(peak), down = placeOf(sustained),
                off = placeOf(end);
    const double release = down.x + room();
    CPath curve;
    curve.moveTo(from.x, from.y);
    addStage(curve, from.x, from.y, full.x, full.y, shape.ac);
    addStage(curve, full.x, full.y, down.x, down.y, shape.dc);
    curve.lineTo(release, down.y);
    addStage(curve, release, down.y, off.x, off.y, shape.rc);
    CPath area = curve;
    area.lineTo(off.x, yOf(0.0));
    area.lineTo(from.x, yOf(0.0));
    area.close();
    fillPath(g, area, colours.accent, fillAlphaShare);
    CPath note; // while the key is held
    for (const double x : {down.x, release}) {
        note.moveTo(x, yOf(1.0));
        note.lineTo(x, yOf(0.0));
    }
    strokePath(g, note, 1.0, colours.frame);
    strokePath(g, curve, 2.0, colours.accent);
    for (int i = start; i < corners; i++) {
        const Place at = placeOf(Corner(i));
        CPath dot;
        dot.arc(at.x, at.y, cornerRadius, 0.0, 2.0 * std::numbers::pi);
        dot.close();
        const bool marked = i == over || i == held || (hasKeyFocus() && i == current);
        fillPath(g, dot, marked ? colours.text : colours.accent);
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

EnvelopeView::Corner EnvelopeView::cornerAt(int x, int y) const {
    Corner nearest = none;
    double least = reach;
    for (int i = end; i >= start; i--) {
        const Place at = placeOf(Corner(i));
        const double way = std::hypot(at.x - x, at.y - y);
        if (way > least) continue;
        least = way;
        nearest = Corner(i);
    }
    return nearest;
}

void EnvelopeView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    held = there() && (btn & modLeft) ? cornerAt(x, y) : none;
    if (held != none) win->app->drag.start(this, this, asPoint(x, y), btn, 1);
    redraw();
}

void EnvelopeView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    const Corner now = cornerAt(x, y);
    if (now == over) return;
    over = now;
    redraw();
}

void EnvelopeView::mouseOver(bool enter, int x, int y) {
    CCtrl::mouseOver(enter, x, y);
    over = enter ? cornerAt(x, y) : none;
    redraw();
}

bool EnvelopeView::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || !there()) return false;
    if (key >= '1' && key < '1' + corners) {
        current = Corner(key - '1');
        redraw();
        return true;
    }
    const double across = keyShare * ((key == keyRight) - (key == keyLeft));
    const double up = keyShare * ((key == ::keyUp) - (key == ::keyDown));
    if (across == 0.0 && up == 0.0) return false;
    moveBy(across, up);
    return true;
}

void EnvelopeView::moveBy(double across, double up) {
    door->begin();
    if (current == start) set("Start", double(shape.initial) + up);
    if (current == peak) set("Attack", double(shape.attack) + across);
    if (current == sustained && across != 0.0) set("Decay", double(shape.decay) + across);
    if (current == sustained && up != 0.0) set("Sustain", double(shape.sustain) + up);
    if (current == end) set("Release", double(shape.release) + across);
    door->end();
    refresh();
}

void EnvelopeView::dragBegin(const DragPoint&) {
    door->begin();
}

void EnvelopeView::set(const char* setting, double to) {
    const Setting* s = findSetting(envelopeSettings(), setting);
    to = std::clamp(to, s->least, s->most);
    door->set(s->of(envelope), to);
    if (!others) return;
    for (CObject* other : others()) door->set(s->of(other), to);
}

void EnvelopeView::dragMove(const DragPoint& point) {
    if (!door->dragging() || !there()) return; // undone meanwhile
    const double level = (height - margin - point.at.y) / (height - 2 * margin);
    const double x = point.at.x - margin;
    if (held == start) set("Start", level);
    if (held == peak) set("Attack", x / room());
    if (held == sustained) {
        set("Decay", x / room() - double(shape.attack));
        set("Sustain", level);
    }
    if (held == end) set("Release", x / room() - double(shape.attack) - double(shape.decay) - 1.0);
    refresh();
}

void EnvelopeView::dragEnd(const DragPoint&) {
    door->end();
    held = none;
    redraw();
}

void EnvelopeView::dragCancel() {
    door->cancel();
    held = none;
    refresh();
    redraw();
}

void EnvelopeView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Envelope";
}
