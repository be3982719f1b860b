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
#include "sequencer/edit/EventActions.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/GridLines.h"
#include "ui/NoteDrawing.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr int margin = 3; ///< pixels above the highest value
constexpr int stem = 3, head = 5, reach = 4;

int colourOf(bool chosen) {
    return chosen ? clEventSelected.fillCol : clEvent.fillCol;
}

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

void LaneView::scrolled(int dx) {
    if (std::abs(dx) >= width) return redraw();
    scrollArea(clientRect(), dx, 0);
}

CPart* LaneView::shownPart(const CPart* of) const {
    return gesture && win->app->drag.of(this) ? gesture->draft(of) : nullptr;
}

bool LaneView::dragStands() const {
    return gesture && gesture->stands();
}

int LaneView::yOf(double value) const {
    return margin + int((1.0 - value) * (height - 1 - margin) + 0.5);
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
    drawGridLines(
        g, GridLines(state.seq(), state.axis(), asked.left, asked.right, state.shownGrid()), asked);
    {
        PixelPaper paper(g, asked);
        for (CPart* part : state.parts())
            paintValues(paper, state.placeOf(part), state.shownPart(part), asked);
    }
    if (gesture && win->app->drag.of(this)) gesture->paintOverlay(g, asked);
}

/// Where the stems of each column of pixels begin, from the left of what is painted on.
struct LaneView::Skyline {
    int from;                       ///< x of the first column
    std::vector<int> plain, chosen; ///< the lane's height where there is none

    int column(int x) const { return asMinMax(x - from, 0, int(plain.size()) - 1); }
    std::vector<int>& tops(const Head& h) { return h.chosen ? chosen : plain; }
    void add(const Head& h) {
        for (int x = column(h.x); x < column(h.x + stem); x++)
            tops(h)[size_t(x)] = asMin(tops(h)[size_t(x)], h.y);
    }
    /// Whether stems cover the head.
    bool covers(const Head& h) {
        if (tops(h)[size_t(column(h.x))] > h.y) return false;
        const auto first = tops(h).begin();
        return std::all_of(first + column(h.x), first + column(h.x + head),
                           [&h](int y) { return y <= h.y; });
    }
};

/// A stem with a head for each value. Where many share a place, it is painted once.
void LaneView::paintValues(PixelPaper& paper, const NotePlace& place, CPart* shown,
                           CRect asked) const {
    const auto columns = size_t(asked.width() + head);
    Skyline sky{asked.left, std::vector<int>(columns, height), std::vector<int>(columns, height)};
    std::vector<Head> heads;
    const EventIndex& events = state.eventsOf(place, shown);
    int x = 0;
    double from = 0.0, to = 0.0; // ticks of the column of pixels, which many share
    place.eachNear(events, state.axis(), asked, [&](const EventIndex::Entry& e) {
        if (!onLane(lane, shown->type, e.event)) return;
        if (e.tick < from || e.tick >= to) {
            x = place.xOf(state.axis(), e.tick);
            from = e.tick;
            to = place.ticksOf(state.axis(), x + 0.5);
        }
        if (x + head <= asked.left || x >= asked.right) return;
        const Head h{x, yOf(double(laneValue(lane, shown->type, e.event))), isSelected(e.event)};
        if (sky.covers(h)) return;
        sky.add(h);
        heads.push_back(h);
    });
    paintStems(paper, sky, asked);
    for (const bool chosen : {false, true})
        for (const Head& h : heads)
            if (h.chosen == chosen && !sky.covers(h))
                paper.fill(colourOf(chosen), asRect(h.x, h.y, h.x + head, h.y + 2));
}

void LaneView::paintStems(PixelPaper& paper, const Skyline& sky, CRect asked) const {
    const auto same = [&](size_t a, size_t b) {
        return sky.plain[a] == sky.plain[b] && sky.chosen[a] == sky.chosen[b];
    };
    const auto columns = size_t(asked.width());
    for (size_t x = 0, next; x < columns; x = next) {
        for (next = x + 1; next < columns && same(x, next);) next++;
        const int x0 = sky.from + int(x), x1 = sky.from + int(next);
        if (sky.plain[x] < sky.chosen[x])
            paper.fill(colourOf(false), asRect(x0, sky.plain[x], x1, sky.chosen[x]));
        if (sky.chosen[x] < height)
            paper.fill(colourOf(true), asRect(x0, sky.chosen[x], x1, height));
    }
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
        gesture = std::make_unique<NoteBand>(state, [this](CRect band) { selectWithin(band); });
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

void LaneView::selectWithin(CRect band) {
    for (CPart* part : state.parts()) {
        const NotePlace place = state.placeOf(part);
        place.eachNear(*place.events, state.axis(), band, [&](const EventIndex::Entry& e) {
            const int x0 = place.xOf(state.axis(), e.tick);
            const bool within = x0 + head > band.left && x0 < band.right;
            if (within && onLane(lane, part->type, e.event)) select(e.event, true);
        });
    }
}

/// A message under the pointer is deleted at the release; else the lane is chosen.
NoteGesture* LaneView::pressRight(CPoint at) {
    CBaseEvent* found = nullptr;
    for (CPart* part : state.parts()) {
        const NotePlace place = state.placeOf(part);
        if (lane.ofNotes()) break;
        place.eachNear(*place.events, state.axis(), asRect(at.x - head, 0, at.x + head, height),
                       [&](const EventIndex::Entry& e) {
                           const int away = at.x - place.xOf(state.axis(), e.tick);
                           const bool near = away >= -reach && away <= head + reach;
                           if (near && onLane(lane, part->type, e.event)) found = e.event;
                       });
    }
    if (!found) return new NoteHand(state, [this] { contextMenu(); });
    for (CPart* part : state.parts()) NoteMouse::unselect(part);
    select(found, true);
    return new NoteHand(state, [&s = state] { deleteEvents(s.seq(), s.parts()); });
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
