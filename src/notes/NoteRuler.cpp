#include "notes/NoteRuler.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PanZoom.h"
#include "notes/NoteState.h"
#include "sequencer/song/CSeq.h"
#include "ui/GridLines.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int gap = 4, numberWidth = 48, tickHeight = 6, partHeight = 4;

} // namespace

NoteRuler::NoteRuler(CWin* owner, NoteState& shared)
    : CCtrl(owner, "noteruler", 0, 0, 1, int(rulerHeight)), state(shared) {
    hint = "Press to move the position; the wheel zooms";
}

void NoteRuler::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(clMarkers.fillCol, asked);
    if (state.part && state.seq()) {
        const int from = state.axis().xOf(state.part->pos);
        const int to =
            state.axis().xOf(double(state.part->pos) + state.seq()->getTicks(state.part));
        g->fillRect(clEvent.fillCol, intersect(asRect(from, 0, to, partHeight), asked));
        const GridLines lines(state.seq(), state.axis(), asked.left - numberWidth, asked.right);
        lines.numbers([&](int x, int number) {
            g->fillLine(palette.dimText, asRect(x, height - tickHeight, x + 1, height));
            g->drawText(palette.dimText, asStr(number),
                        asRect(x + gap, partHeight, x + numberWidth, height - 1), textLeft);
        });
    }
    g->fillLine(palette.frame, asRect(asked.left, height - 1, asked.right, height));
}

void NoteRuler::jumpTo(int x) {
    if (state.seq()) state.qv->setPos(fLimit(state.axis().ticksAt(x), 0.0, maxTicks));
}

void NoteRuler::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (btn & modLeft) jumpTo(x);
}

void NoteRuler::mouseMove(int x, int, int btn) {
    if (isPushed() && (btn & modLeft)) jumpTo(asMinMax(x, 0, width - 1));
}

bool NoteRuler::mouseWheel(int x, int, int, int dy, int) {
    if (dy == 0) return false;
    const double factor = dy < 0 ? PanZoom::notchFactor : 1 / PanZoom::notchFactor;
    state.zoomAtPos(x, state.axis().zoom() * factor);
    return true;
}

void NoteRuler::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Bars of the editor";
}
