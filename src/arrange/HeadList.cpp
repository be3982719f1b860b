#include "arrange/HeadList.h"

#include "arrange/ArrangeState.h"
#include "arrange/PartPainter.h"
#include "arrange/TrackHead.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "sequencer/CSeq.h"

#include <algorithm>

namespace {

constexpr int notchPixels = 44;

} // namespace

HeadList::HeadList(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "heads", 0, 0, TrackHead::headWidth, 1), state(shared) {
}

HeadList::~HeadList() {
    delete onHeadMenu;
}

void HeadList::forgetSong() {
    heads.clear();
    clear();
    redraw();
}

void HeadList::songChanged() {
    const Place focus = focusPlace();
    forgetSong();
    for (const ArrangeRow& row : state.rows.all()) {
        if (row.lane) continue;
        heads.push_back(
            new TrackHead(win, state.qv, row.songTrack, row.height, trackColourOf(row)));
        addControl(heads.back());
    }
    place();
    focusOn(focus);
}

void HeadList::cablesChanged() {
    for (TrackHead* head : heads) head->findSound();
}

void HeadList::place() {
    for (TrackHead* head : heads) {
        const ArrangeRow* row = state.rows.of(head->songTrack());
        if (!row) continue;
        const int y = row->top - state.edit.scrollY;
        head->visible = y < height && y + row->height > 0;
        head->setBounds(0, y, TrackHead::headWidth, row->height);
    }
    redraw();
}

bool HeadList::refresh() {
    bool changed = false;
    for (TrackHead* head : heads)
        if (head->visible) changed = head->refresh() || changed;
    markStops();
    return changed;
}

void HeadList::paint(CGraphic* g, CRect rect) {
    g->fillRect(win->app->gui->palette.panel, clientRect());
    CGroup::paint(g, rect);
}

// The keys.

HeadList::Place HeadList::focusPlace() const {
    for (size_t i = 0; i < heads.size(); i++) {
        const auto stops = heads[i]->stops();
        const auto found = std::find(stops.begin(), stops.end(), win->keyCtrl);
        if (found != stops.end()) return {int(i), int(found - stops.begin())};
    }
    return {};
}

void HeadList::focusOn(Place place) {
    if (place.row < 0 || heads.empty()) return;
    TrackHead* head = heads[size_t(asMin(place.row, int(heads.size()) - 1))];
    win->setKeyCtrl(head->stops()[size_t(place.stop)]);
    markStops();
}

/// Of the head with the focus, else of the first one selected, else of the first one shown.
void HeadList::markStops() {
    const Place focus = focusPlace();
    const TrackHead* current = focus.row >= 0 ? heads[size_t(focus.row)] : nullptr;
    for (const bool any : {false, true})
        for (const TrackHead* head : heads)
            if (!current && head->visible && (any || head->songTrack()->track->selected()))
                current = head;
    for (TrackHead* head : heads)
        for (CCtrl* stop : head->stops()) stop->tabStop = head == current;
}

bool HeadList::keyInside(int key, int mods) {
    const Place focus = focusPlace();
    if (focus.row < 0 || (mods & ~modShift)) return false;
    if (key == ::keyUp || key == ::keyDown) {
        const int by = key == ::keyUp ? -1 : 1, next = focus.row + by;
        if (next < 0 || next >= int(heads.size())) return true;
        selectRow(next, mods & modShift);
        focusOn({next, focus.stop});
        return true;
    }
    if (mods || (key != keyLeft && key != keyRight)) return false;
    const int stop = focus.stop + (key == keyLeft ? -1 : 1);
    focusOn({focus.row, asMinMax(stop, 0, TrackHead::stopCount - 1)});
    return true;
}

bool HeadList::contextMenu() {
    if (onHeadMenu) (*onHeadMenu)(this);
    return onHeadMenu;
}

bool HeadList::mouseWheel(int, int, int, int dy, int) {
    if (!dy) return false;
    state.scrollTo(state.axis().scroll(), state.edit.scrollY + (dy > 0 ? -1 : 1) * notchPixels);
    return true;
}

bool HeadList::stepTrack(int by) {
    const int count = int(heads.size());
    int chosen = -1;
    for (int i = 0; i < count; i++)
        if (heads[size_t(i)]->songTrack()->track->selected() && (chosen < 0 || by > 0)) chosen = i;
    const int next = chosen < 0 ? 0 : chosen + by;
    if (next < 0 || next >= count) return false;
    selectRow(next, false);
    return true;
}

/// `besides`: those that are selected stay so.
void HeadList::selectRow(int index, bool besides) {
    CSongTrack* track = heads[size_t(index)]->songTrack();
    CSeq* seq = track->track->seq;
    if (!besides) seq->unselectTracks();
    seq->selectTrack(track, true);
    const ArrangeRow* row = state.rows.of(track);
    const int room = state.gridHeight();
    if (row)
        state.scrollTo(state.axis().scroll(),
                       asMinMax(state.edit.scrollY, row->bottom() - room, row->top));
}

void HeadList::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Tracks";
}
