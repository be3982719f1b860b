#include "panels/sampler/LfoView.h"

#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "instruments/Modulators.h"
#include "instruments/SoundSettings.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double seconds = 2.0; ///< that show
constexpr int margin = 10, reach = 5, textHeight = 14;
constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr double lineWidth = 2.0, thinWidth = 1.0, fillAlphaShare = 0.14;
constexpr double doubling = 80.0; ///< pixels that make a cycle twice as long
constexpr double keyPixels = 8.0, keySeconds = 0.02;
constexpr double msPerSecond = 1000.0;
constexpr int dotRadius = 4;
constexpr double slowest = 0.01; ///< Hz
constexpr CPoint nowhere{-100, -100};
constexpr double mostShown = 120.0; ///< cycles; more are a smear

/// A turn of a wave, -1 to 1, at 0 to 1; of the random one something that looks like it.
double waveAt(int wave, double turn) {
    constexpr double half = 0.5, quarter = 0.25;
    switch (wave) {
    case lfoSin:
        return std::sin(2.0 * std::numbers::pi * turn);
    case lfoTri:
        return turn < quarter         ? 4.0 * turn
               : turn < 1.0 - quarter ? 2.0 - 4.0 * turn
                                      : 4.0 * turn - 4.0;
    case lfoSaw:
        return turn < half ? 2.0 * turn : 2.0 * turn - 2.0;
    case lfoPulse:
        return turn < half ? 1.0 : -1.0;
    default:
        return 0.0;
    }
}

double randomStep(int cycle) {
    const unsigned mixed = unsigned(cycle + 1) * 2654435761u;
    return double(mixed >> 16) / 32768.0 - 1.0;
}

} // namespace

LfoView::LfoView(CWin* owner, ValueDoor* through, CLFO* of, std::function<bool()> lives,
                 std::function<std::vector<CObject*>()> along, std::function<double()> beats,
                 std::function<bool()> sounds)
    : CCtrl(owner, "lfo", 0, 0, 1, usualHeight), door(through), lfo(of), alive(std::move(lives)),
      others(std::move(along)), tempo(std::move(beats)), sounding(std::move(sounds)) {
    dot = nowhere;
    hooverable = tabStop = true;
    hint = "Drag across for the rate, the line at the start for the delay";
    refresh();
}

LfoView::Shape LfoView::present() const {
    return {lfo->wave, lfo->frequency(float(tempo())), lfo->delay / msPerSecond, lfo->sync != 0};
}

CRect LfoView::dotArea() const {
    return asRect(dot.x - dotRadius - 1, dot.y - dotRadius - 1, dot.x + dotRadius + 2,
                  dot.y + dotRadius + 2);
}

/// Within the first cycle, which may reach further than what shows.
bool LfoView::followDot() {
    CPoint now = nowhere;
    const double begin = std::min(shape.delay, seconds);
    const double at = begin + double(lfo->shownPhase) / std::max(shape.hertz, slowest);
    if (sounding() && at <= seconds) {
        const double swing = 2.0 * double(lfo->shownValue) - 1.0;
        now = asPoint(asRound(xOf(at)), asRound(height / 2.0 - swing * (height / 2.0 - margin)));
    }
    if (now == dot) return false;
    redraw(dotArea());
    dot = now;
    redraw(dotArea());
    return true;
}

bool LfoView::refresh() {
    if (!alive()) return false;
    const Shape now = present();
    if (now == shape) return followDot();
    shape = now;
    redraw();
    return true;
}

double LfoView::xOf(double at) const {
    return margin + at / seconds * (width - 2 * margin);
}

double LfoView::secondsAt(double x) const {
    return (x - margin) * seconds / std::max(1, width - 2 * margin);
}

bool LfoView::onDelay(int x) const {
    return std::abs(xOf(std::min(shape.delay, seconds)) - x) <= reach;
}

void LfoView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.raised, clientRect());
    const double middle = height / 2.0, high = height / 2.0 - margin;
    const double begin = std::min(shape.delay, seconds);
    CPath curve;
    curve.moveTo(xOf(0.0), middle);
    curve.lineTo(xOf(begin), middle);
    const double cycles = std::min((seconds - begin) * shape.hertz, mostShown);
    const int steps = std::max(2, width * 2);
    int before = -1;
    for (int i = 0; i <= steps && begin < seconds; i++) {
        const double turn = cycles * i / steps;
        const int cycle = int(turn);
        const double v =
            shape.wave == lfoRandom ? randomStep(cycle) : waveAt(shape.wave, turn - cycle);
        const double x = xOf(begin + (seconds - begin) * i / steps);
        if (shape.wave == lfoRandom && before >= 0 && cycle != before)
            curve.lineTo(x, middle - randomStep(before) * high);
        curve.lineTo(x, middle - v * high);
        before = cycle;
    }
    CPath area = curve;
    area.lineTo(xOf(seconds), middle);
    area.close();
    fillPath(g, area, colours.accent, fillAlphaShare);
    strokePath(g, curve, lineWidth, colours.accent);
    CPath start;
    start.moveTo(xOf(begin), margin);
    start.lineTo(xOf(begin), height - margin);
    strokePath(g, start, thinWidth, colours.text);
    if (dot.x >= 0) {
        CPath mark;
        mark.arc(dot.x + 0.5, dot.y + 0.5, dotRadius, 0, 2.0 * std::numbers::pi);
        mark.close();
        fillPath(g, mark, colours.text);
    }
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(colours.dimText, "2 s",
                asRect(0, height - textHeight - 2, width - margin, height - 2), textRight);
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}

void LfoView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft) || !alive()) return;
    delaying = onDelay(x);
    held = shape.synced ? double(lfo->mul) : double(lfo->rate);
    win->app->drag.start(this, this, asPoint(x, y), btn, 1);
}

void LfoView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    cursor = onDelay(x) ? cursorSideways : cursorPlain;
}

void LfoView::set(const char* setting, double to) {
    const Setting* s = findSetting(lfoSettings(), setting);
    to = std::clamp(to, s->least, s->most);
    door->set(s->of(lfo), to);
    if (!others) return;
    for (CObject* other : others()) door->set(s->of(other), to);
}

void LfoView::stretch(double factor, double from) {
    if (shape.synced)
        set("Beats", std::round(from * factor));
    else
        set("Rate", from / factor);
}

void LfoView::dragBegin(const DragPoint&) {
    door->begin();
}

void LfoView::dragMove(const DragPoint& point) {
    if (!door->dragging() || !alive()) return; // undone meanwhile
    if (delaying)
        set("Delay", std::round(secondsAt(point.at.x) * msPerSecond));
    else
        stretch(std::exp2((point.at.x - point.anchor.x) / doubling), held);
    refresh();
}

void LfoView::dragEnd(const DragPoint&) {
    door->end();
}

void LfoView::dragCancel() {
    door->cancel();
    refresh();
}

bool LfoView::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    const int by = (key == keyRight) - (key == keyLeft);
    if (by == 0 || (mods & ~modShift) || !alive()) return false;
    door->begin();
    if (mods & modShift)
        set("Delay", std::round((shape.delay + by * keySeconds) * msPerSecond));
    else if (shape.synced)
        set("Beats", lfo->mul + by);
    else
        stretch(std::exp2(by * keyPixels / doubling), double(lfo->rate));
    door->end();
    refresh();
    return true;
}

void LfoView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Low oscillator";
}
