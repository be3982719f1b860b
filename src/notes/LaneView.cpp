#include "notes/LaneView.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PixelPaper.h"
#include "notes/LaneDraw.h"
#include "notes/NoteState.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartEdits.h"
#include "ui/GridLines.h"
#include "ui/NoteDrawing.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int margin = 3; ///< pixels above the highest value
constexpr int stem = 3, head = 5, reach = 4;

} // namespace

CStr laneTitle(const EventLane& lane) {
    return lane.kind == lanePitchBend ? CStr("Pitch bend")
                                      : controllerAsText(lane.kind, lane.number);
}

LaneView::LaneView(CWin* owner, NoteState& shared)
    : CCtrl(owner, "lane", 0, 0, 1, 1), state(shared) {
    hint = "Drag draws, with Ctrl a line, with Shift it selects; right click chooses the lane";
}

LaneView::~LaneView() {
    delete onMenu;
}

CPart* LaneView::shownPart() const {
    return gesture && win->app->drag.of(this) ? gesture->draft() : nullptr;
}

int LaneView::yOf(double value) const {
    return margin + asRound((1.0 - value) * (height - 1 - margin));
}

double LaneView::valueAt(int y) const {
    return fLimit(1.0 - double(y - margin) / asMax(1, height - 1 - margin), 0.0, 1.0);
}

void LaneView::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(clGrid.fillCol, asked);
    g->fillLine(palette.frame, asRect(asked.left, 0, asked.right, 1));
    if (!state.part || !state.seq()) return;
    const NotePlace place = state.place();
    const GridLines lines(place.seq, state.axis(), asked.left, asked.right);
    lines.visit([&](int x, GridLines::Weight weight) {
        g->fillLine(weight == GridLines::bar ? clGridBeats.fillCol : clGridSnap.fillCol,
                    asRect(x, asked.top, x + 1, asked.bottom));
    });
    CPart* shown = state.shownPart();
    {
        PixelPaper paper(g, asked);
        eachEvent(shown->getEvents(), [&](CBaseEvent* e, int tick) {
            if (!onLane(lane, shown->type, e)) return;
            const int x = place.xOf(state.axis(), tick);
            if (x + head < asked.left || x >= asked.right) return;
            const int y = yOf(double(laneValue(lane, shown->type, e)));
            const int colour = isSelected(e) ? clEventSelected.fillCol : clEvent.fillCol;
            paper.fill(colour, asRect(x, y, x + stem, height));
            paper.fill(colour, asRect(x, y, x + head, y + 2));
        });
    }
    if (gesture && win->app->drag.of(this)) gesture->paintOverlay(g, asked);
}

void LaneView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!state.part || !state.seq() || state.seq()->isLocked(state.part)) return;
    const CPoint at = asPoint(x, y);
    int mode = editDraw;
    if (btn & modRight) {
        gesture.reset(pressRight(at));
        mode = editErase;
    } else if (!(btn & modLeft)) {
        return;
    } else if (btn & modShift) {
        gesture = std::make_unique<NoteBand>(state, [this](CRect band) {
            const NotePlace place = state.place();
            eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
                const int x0 = place.xOf(state.axis(), tick);
                const bool within = x0 + head > band.left && x0 < band.right;
                if (within && onLane(lane, state.part->type, e)) select(e, true);
            });
        });
        mode = editLasso;
    } else if (btn & modControl) {
        gesture = std::make_unique<LaneLine>(state, *this);
        mode = editLine;
    } else {
        gesture = std::make_unique<LaneDraw>(state, *this);
    }
    gesture->alongOnly = true;
    state.edit.kind = lane.kind;
    state.edit.editEvents = state.part->getEvents();
    state.edit.setMode(mode, x, y, btn);
    const int room = mode == editErase ? int(NoteHand::handRoom) : 0;
    win->app->drag.start(this, gesture.get(), at, btn, room);
}

/// A message under the pointer is deleted at the release; else the lane is chosen.
NoteGesture* LaneView::pressRight(CPoint at) {
    const NotePlace place = state.place();
    CBaseEvent* found = nullptr;
    if (lane.kind != laneVelocity)
        eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
            const int away = at.x - place.xOf(state.axis(), tick);
            if (away >= -reach && away <= head + reach && onLane(lane, state.part->type, e))
                found = e;
        });
    if (!found) return new NoteHand(state, [this] { contextMenu(); });
    NoteMouse::unselect(state.part);
    select(found, true);
    return new NoteHand(state, [&s = state] { deleteEvents(s.seq(), s.part); });
}

bool LaneView::mouseWheel(int, int, int, int dy, int dx) {
    const int by = dx ? dx : dy;
    state.scrollTo(state.axis().scroll() + by * PanZoom::notchPixels / PanZoom::notch,
                   state.edit.scrollY);
    return true;
}

bool LaneView::contextMenu() {
    if (onMenu) (*onMenu)(this);
    return onMenu;
}

void LaneView::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = laneTitle(lane).asChar();
}
