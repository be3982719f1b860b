#include "arrange/TimeRuler.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TempoMap.h"
#include "ui/GridLines.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int gap = 4;
constexpr int numberWidth = 48, tickHeight = 6, loopHeight = 6, bandHeight = 8, endReach = 5;
constexpr int clockRoom = 72; ///< pixels from one time to the next
constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr double clockSteps[] = {0.1, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1800, 3600};

CStr clockText(double seconds, double step) {
    char text[32];
    const int minutes = int(seconds / 60);
    const double rest = seconds - minutes * 60.0;
    if (step < 1)
        std::snprintf(text, sizeof text, "%d:%04.1f", minutes, rest);
    else
        std::snprintf(text, sizeof text, "%d:%02d", minutes, int(std::lround(rest)));
    return text;
}

} // namespace

TimeRuler::TimeRuler(CWin* owner, ArrangeState& shared)
    : CCtrl(owner, "ruler", 0, 0, 1, int(barHeight)), state(shared) {
    tabStop = true;
    hint =
        "Press to move the position, Alt or a double click adds a marker; in the band above drag "
        "the loop or its ends, a click on it switches it";
}

TimeRuler::Loop TimeRuler::loopNow() const {
    Loop now;
    if (CSeq* seq = state.seq()) {
        seq->getLoopSection(now.from, now.to);
        now.on = seq->getLoop();
    }
    return now;
}

bool TimeRuler::refresh() {
    const Loop now = loopNow();
    if (now == loop) return false;
    loop = now;
    redraw();
    return true;
}

void TimeRuler::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(clMarkers.fillCol, asked);
    if (CSeq* seq = state.seq()) {
        if (clock)
            paintClock(g, seq, asked);
        else
            paintBars(g, seq, asked);
        paintLoop(g);
    }
    g->fillLine(palette.frame, asRect(asked.left, height - 1, asked.right, height));
    if (hasKeyFocus()) g->frameRect(palette.accent, clientRect());
}

void TimeRuler::paintNumber(CGraphic* g, int x, const CStr& text) {
    const CPalette& palette = win->app->gui->palette;
    g->fillLine(palette.dimText, asRect(x, height - tickHeight, x + 1, height));
    g->drawText(palette.dimText, text, asRect(x + gap, loopHeight, x + clockRoom, height - 1),
                textLeft);
}

void TimeRuler::paintBars(CGraphic* g, CSeq* seq, CRect asked) {
    const GridLines lines(seq, state.axis(), asked.left - numberWidth, asked.right);
    lines.numbers([&](int x, int number) { paintNumber(g, x, asStr(number)); });
}

void TimeRuler::paintClock(CGraphic* g, CSeq* seq, CRect asked) {
    const int rate = asMax(1, state.qv->rate);
    const auto secondsAt = [&](int x) {
        const int tick = limitTicks(asInt64(asMax(0.0, state.axis().ticksAt(x))));
        return seq->ticksToFrames(0, tick, rate) / rate;
    };
    const double from = secondsAt(asked.left - clockRoom), to = secondsAt(asked.right);
    const double wide = secondsAt(clockRoom) - secondsAt(0);
    double step = clockSteps[0];
    for (const double s : clockSteps)
        if (step < wide) step = s;
    for (double at = std::floor(from / step) * step; at <= to; at += step) {
        const int x = state.axis().xOf(seq->framesToTicks(0, at * rate, rate));
        if (x >= asked.right) break;
        paintNumber(g, x, clockText(at, step));
    }
}

void TimeRuler::paintLoop(CGraphic* g) {
    if (loop.to <= loop.from) return;
    const CPalette& palette = win->app->gui->palette;
    const CRect band =
        asRect(state.axis().xOf(loop.from), 0, state.axis().xOf(loop.to), loopHeight);
    if (loop.on)
        g->fillRect(fadeCol(palette.panel, clLoop.fillCol, 0.7), band);
    else
        g->frameRect(palette.dimText, band);
    const int end = loop.on ? clLoop.fillCol : palette.dimText;
    g->fillRect(end, asRect(band.left, 0, band.left + 2, bandHeight + 2));
    g->fillRect(end, asRect(band.right - 2, 0, band.right, bandHeight + 2));
}

// The mouse.

TimeRuler::Zone TimeRuler::zoneAt(int x, int y) const {
    if (y >= bandHeight || !state.seq()) return Zone::none;
    const Loop now = loopNow();
    if (now.to <= now.from) return Zone::fresh;
    const int from = state.axis().xOf(now.from), to = state.axis().xOf(now.to);
    const bool nearFrom = std::abs(x - from) <= endReach, nearTo = std::abs(x - to) <= endReach;
    if (nearTo && (!nearFrom || x >= to)) return Zone::end;
    if (nearFrom) return Zone::start;
    return x > from && x < to ? Zone::body : Zone::fresh;
}

/// On the grid, but with Control.
int TimeRuler::tickAt(int x, int btn) const {
    const int tick = asMinMax(asInt(state.axis().ticksAt(x)), 0, maxTicks);
    return snapped(dragGrid(state, btn), tick, true);
}

void TimeRuler::jumpTo(int x) {
    state.qv->setPos(fLimit(state.axis().ticksAt(asMinMax(x, 0, width - 1)), 0.0, maxTicks));
}

void TimeRuler::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    CSeq* seq = state.seq();
    if (!(btn & modLeft) || !seq) return;
    state.edit.startBtn = btn & ~modControl;
    held = zoneAt(x, y);
    if (held != Zone::none) {
        win->app->drag.start(this, this, asPoint(x, y), btn);
        return;
    }
    if (btn & (modAlt | modDouble))
        addMarker(seq, tickAt(x, 0));
    else
        jumpTo(x);
}

void TimeRuler::mouseMove(int x, int y, int btn) {
    if (!isPushed()) {
        const Zone zone = zoneAt(x, y);
        cursor = zone == Zone::start || zone == Zone::end ? cursorSideways : cursorPlain;
    } else if ((btn & modLeft) && state.seq() && !(btn & (modAlt | modDouble))) {
        jumpTo(x);
    }
}

void TimeRuler::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) contextMenu();
}

void TimeRuler::dragBegin(const DragPoint&) {
    before = loopNow();
    state.qv->values->begin();
}

void TimeRuler::dragMove(const DragPoint& point) {
    ValueDoor& door = *state.qv->values;
    CSeq* seq = state.seq();
    if (!seq || !door.dragging()) return;
    const int tick = tickAt(point.at.x, point.btn);
    int from = before.from, to = before.to;
    if (held == Zone::start) from = tick;
    if (held == Zone::end) to = tick;
    if (held == Zone::body) {
        const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
        const int by = asMax(-from, state.snappedBy(dragGrid(state, point.btn), from, dragged));
        from = limitTicks(int64_t(from) + by);
        to = limitTicks(int64_t(to) + by);
    }
    if (held == Zone::fresh) {
        from = tickAt(point.anchor.x, point.btn);
        to = tick;
    }
    if (from > to) std::swap(from, to);
    door.set(locatorsOf(seq->getProg()), {double(from), double(to)});
    state.workspace.setStatus("Loop from " + placeText(seq, from) + " to " + placeText(seq, to));
    refresh();
}

void TimeRuler::dragEnd(const DragPoint&) {
    state.qv->values->end();
}

void TimeRuler::dragCancel() {
    state.qv->values->cancel();
    refresh();
}

void TimeRuler::dragClick(const DragPoint& point) {
    CSeq* seq = state.seq();
    if (!seq) return;
    if (held == Zone::fresh) return jumpTo(point.at.x);
    const double to = loopNow().on ? 0.0 : 1.0;
    state.qv->values->set(loopOf(seq->getProg()), {to, to});
}

// The keys.

bool TimeRuler::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    CSeq* seq = state.seq();
    if (mods || !seq) return false;
    BarPlace at = barPlace(seq, asInt(seq->getPos()));
    const bool within = at.ticks > 0, late = within || at.beat > 1;
    const int beats = (key == keyRight) - (key == keyLeft && !within);
    const int bars = (key == keyPageDown) - (key == keyPageUp && !late);
    if (key == keyLeft || key == keyRight)
        at = {at.bar, at.beat + beats, 0};
    else if (key == keyPageUp || key == keyPageDown)
        at = {at.bar + bars, 1, 0};
    else if (key != keyHome && key != keyEnd)
        return false;
    state.qv->setPos(key == keyHome ? 0 : key == keyEnd ? seq->renderDuration() : tickOf(seq, at));
    return true;
}

bool TimeRuler::contextMenu() {
    if (!fillMenu || !state.seq()) return false;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    fillMenu(popup);
    const CPoint at = win->app->menuPoint();
    popup->popup(at.x, at.y, win->app->menuCtrl);
    return true;
}

void TimeRuler::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Ruler";
}
