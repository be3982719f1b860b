#include "arrange/RulerBars.h"

#include "arrange/ArrangeState.h"
#include "arrange/GridLines.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"
#include "sequencer/Points.h"
#include "ui/ProgramItems.h"

#include <cstdlib>

namespace {

constexpr int gap = 4;
constexpr int pointerReach = 4; ///< of the head of the play position to each side
constexpr int numberWidth = 48, tickHeight = 6, loopHeight = 4;

} // namespace

RulerBars::RulerBars(CWin* owner, ArrangeState& shared)
    : CCtrl(owner, "ruler", 0, 0, 1, int(barsHeight)), state(shared) {
    tabStop = true;
    hint = "Press to move the position";
}

RulerBars::Loop RulerBars::loopNow() const {
    Loop now;
    if (CSeq* seq = state.seq()) {
        seq->getLoopSection(now.from, now.to);
        now.on = seq->getLoop();
    }
    return now;
}

int RulerBars::playX() const {
    CSeq* seq = state.seq();
    return seq ? state.axis().xOf(seq->getPos()) : -1;
}

/// All that the pointer touches, with a pixel to spare where its edges lie between two.
CRect RulerBars::pointerRect(int x) const {
    constexpr int reach = pointerReach + 1;
    return asRect(x - reach, 0, x + reach + 1, height);
}

bool RulerBars::refresh() {
    const Loop now = loopNow();
    const bool changed = now != loop;
    loop = now;
    if (changed) redraw();
    const int before = shownX;
    shownX = playX();
    if (shownX == before) return changed;
    redraw(pointerRect(before));
    redraw(pointerRect(shownX));
    return true;
}

void RulerBars::scrolled(int dx) {
    if (std::abs(dx) >= width) return redraw();
    shownX += dx;
    scrollArea(clientRect(), dx, 0);
}

void RulerBars::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    drawGuiItem(g, clientRect(), &clMarkers);
    if (CSeq* seq = state.seq()) {
        paintBars(g, seq, asked);
        paintLoop(g);
        paintSections(g, seq);
        paintPointer(g);
    }
    const CPalette& palette = win->app->gui->palette;
    for (int y = barHeight; y <= barsHeight; y += barHeight)
        g->fillLine(palette.frame, asRect(asked.left, y - 1, asked.right, y));
    if (hasKeyFocus()) g->frameRect(palette.accent, clientRect());
}

void RulerBars::paintBars(CGraphic* g, CSeq* seq, CRect asked) {
    const CPalette& palette = win->app->gui->palette;
    const GridLines lines(seq, state.axis(), asked.left - numberWidth, asked.right);
    lines.numbers([&](int x, int number) {
        g->fillLine(palette.dimText, asRect(x, barHeight - tickHeight, x + 1, barHeight));
        g->drawText(palette.dimText, asStr(number),
                    asRect(x + gap, 0, x + numberWidth, barHeight - 1), textLeft);
    });
}

void RulerBars::paintLoop(CGraphic* g) {
    if (loop.to <= loop.from) return;
    const CPalette& palette = win->app->gui->palette;
    const CRect band =
        asRect(state.axis().xOf(loop.from), 0, state.axis().xOf(loop.to), loopHeight);
    if (loop.on)
        g->fillRect(fadeCol(palette.panel, clLoop.fillCol, 0.7), band);
    else
        g->frameRect(palette.dimText, band);
}

/// The name of a section has the room up to the next one, as sections may be shorter than it.
void RulerBars::paintSections(CGraphic* g, CSeq* seq) {
    const CList& markers = seq->getProg()->markers;
    for (const auto* m : each<CMarkerPart>(markers)) {
        const int from = state.axis().xOf(m->pos.load()), textFrom = from + 6;
        if (from >= width) continue;
        int room = width - textFrom;
        for (const auto* other : each<CMarkerPart>(markers))
            if (other->pos > m->pos)
                room = asMin(room, state.axis().xOf(other->pos.load()) - textFrom);
        const int wide = asMin(g->textWidth(m->id), room) + 2;
        const CRect flag = asRect(from, barHeight + 1, textFrom + wide + gap, barsHeight - 1);
        drawGuiItem(g, flag, &clMarker);
        g->drawText(clMarker.textCol, m->id,
                    asRect(textFrom, flag.top, textFrom + wide, flag.bottom), textLeft);
    }
}

void RulerBars::paintPointer(CGraphic* g) const {
    const int accent = win->app->gui->palette.accent;
    g->fillLine(accent, asRect(shownX, 0, shownX + 1, height));
    drawArrow(g, accent, asRect(shownX - pointerReach, -1, shownX + pointerReach + 1, 5), dirDown,
              pointerReach);
}

void RulerBars::jumpTo(int x) {
    state.qv->setPos(fLimit(state.axis().ticksAt(asMinMax(x, 0, width - 1)), 0.0, maxTicks));
}

void RulerBars::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if ((btn & modLeft) && state.seq()) jumpTo(x);
}

void RulerBars::mouseMove(int x, int, int btn) {
    if ((btn & modLeft) && isPushed() && state.seq()) jumpTo(x);
}

bool RulerBars::keyDown(int key, int mods) {
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

void RulerBars::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Ruler";
}
