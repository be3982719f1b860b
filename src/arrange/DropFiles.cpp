#include "arrange/DropFiles.h"

#include "arrange/ArrangeState.h"
#include "arrange/Hit.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/DrawBatch.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr double rowShare = 0.85, sureShare = 0.45, unsureShare = 0.2;
constexpr int edgeRoom = 24, edgeStep = 12; ///< pixels, of the scrolling
constexpr int textGap = 4;

/// By how much to scroll for a pointer near an end of 0 to `room`.
int pullAt(int at, int room) {
    if (at < 0 || at >= room) return 0;
    if (at < edgeRoom) return -edgeStep;
    return at >= room - edgeRoom ? edgeStep : 0;
}

} // namespace

void DropFiles::begin(const ListOf<CDropItem>& items) {
    const std::vector<CStr> paths = filesAmong(items);
    if (reader && reader->paths == paths) return;
    reader = std::make_unique<FactReader>(paths);
    known = -1;
}

void DropFiles::over(const ListOf<CDropItem>& items, CPoint at, int btn) {
    if (!state.seq()) return;
    begin(items);
    pointer = at;
    held = btn;
    if (shown == target() && known == reader->count()) return;
    replan();
    tell();
}

void DropFiles::leave() {
    if (!reader) return;
    reader.reset();
    plan = {};
    state.workspace.setStatus("");
    state.gridChanged();
}

DropPlan DropFiles::take(const ListOf<CDropItem>& items, CPoint at, int btn) {
    if (!state.seq()) return {};
    begin(items);
    pointer = at;
    held = btn;
    reader->waitFor();
    replan();
    DropPlan result = std::move(plan);
    leave();
    return result;
}

void DropFiles::idle() {
    if (!reader || !state.seq()) return;
    const int dx = pullAt(pointer.x, state.gridWidth());
    const int dy = pullAt(pointer.y, state.gridHeight());
    const int64_t x = state.axis().scroll();
    const int y = state.edit.scrollY;
    if (dx || dy) state.scrollTo(x + dx, y + dy);
    const bool moved = x != state.axis().scroll() || y != state.edit.scrollY;
    if (moved || known != reader->count()) replan();
}

/// Control switches the grid off, as in a drag.
DropTarget DropFiles::target() const {
    DropTarget t;
    const ArrangeRow* row = state.rows.at(pointer.y + state.edit.scrollY);
    t.onto = row ? row->songTrack : nullptr;
    t.stacked = held & modShift;
    if (pointer.x < 0) {
        t.tick = asInt(state.seq()->getPos());
        return t;
    }
    const int here = asMinMax(asInt(state.axis().ticksAt(pointer.x)), 0, maxTicks);
    t.tick = held & modControl ? here : snapped(state.snapTicks(), here, false);
    return t;
}

void DropFiles::replan() {
    std::vector<CSongTrack*> rows;
    for (const ArrangeRow& row : state.rows.all())
        if (row.ofTrack()) rows.push_back(row.songTrack);
    known = reader->count();
    shown = target();
    std::vector<FileFacts> facts;
    for (int i = 0; i < int(reader->paths.size()); i++) facts.push_back(reader->facts(i));
    plan = planDrop(state.seq(), rows, reader->paths, facts, shown);
    state.gridChanged();
}

void DropFiles::tell() const {
    if (!plan.refusal.empty()) return state.workspace.setStatus(plan.refusal);
    if (plan.files.empty()) return state.workspace.setStatus("");
    CStr text = CStr("Drop: ");
    text += shown.onto ? shown.onto->track->id : CStr("new track");
    text += ", " + placeText(state.seq(), shown.tick);
    if (plan.files.size() > 1)
        text +=
            shown.stacked ? "   without Shift: one behind the other" : "   Shift: under each other";
    state.workspace.setStatus(text + "   Ctrl: off the grid");
}

// What is shown.

/// Of the row that it comes to, from one side of the grid to the other.
CRect DropFiles::rowArea(const DropBox& box) const {
    const ArrangeRow* row = box.row ? state.rows.of(box.row) : nullptr;
    if (row && box.below < 0) return rowBox(state, *row);
    int top = state.rows.total();
    if (row)
        for (const ArrangeRow& r : state.rows.all())
            if (r.songTrack == row->songTrack) top = r.bottom();
    top += box.below * CTrack::usualRow - state.edit.scrollY;
    return asRect(0, top, state.gridWidth(), top + CTrack::usualRow - 1);
}

CRect DropFiles::boxArea(const DropBox& box) const {
    CRect area = rowArea(box);
    if (box.ticks == 0) return area;
    area.left = state.axis().xOf(box.tick);
    area.right = asMax(area.left + 2, state.axis().xOf(double(box.tick) + box.ticks));
    return area;
}

void DropFiles::paint(CGraphic* g, CRect asked) const {
    const int colour = clSelection.fillCol;
    for (const DropBox& box : plan.boxes) {
        const CRect row = intersect(rowArea(box), asked);
        if (box.below >= 0 && !row.empty()) fillAlpha(g, row, clGrid.fillCol, rowShare);
    }
    for (const DropBox& box : plan.boxes) {
        const CRect area = boxArea(box), seen = intersect(area, asked);
        if (seen.empty()) continue;
        fillAlpha(g, seen, colour, box.sure && box.ticks > 0 ? sureShare : unsureShare);
        g->frameRect(colour, area);
    }
    DrawBatch batch(g);
    const int text = state.workspace.mainWindow()->app->gui->palette.text;
    for (const DropBox& box : plan.boxes) {
        CRect area = sizeRect(boxArea(box), textGap, 0, -textGap, 0);
        area.left = asMax(area.left, textGap);
        if (!intersect(area, asked).empty()) batch.text(text, box.name, area, textLeft);
    }
}
