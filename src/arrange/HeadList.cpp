#include "arrange/HeadList.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadDrags.h"
#include "arrange/HeadSwitch.h"
#include "arrange/LaneHead.h"
#include "arrange/NotesHead.h"
#include "arrange/PartPainter.h"
#include "arrange/TakeHead.h"
#include "arrange/TrackHead.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CDrag.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CColourWin.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/TrackValues.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int markWidth = 2;

} // namespace

HeadList::HeadList(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "heads", 0, 0, TrackHead::headWidth, 1), state(shared) {
}

HeadList::~HeadList() {
    delete onHeadMenu;
}

void HeadList::songChanged() {
    const Place focus = focusPlace();
    place();
    if (focus.row >= 0 && focusPlace().row < 0) focusOn(focus);
}

void HeadList::cablesChanged() {
    for (RowHead* head : heads) head->findSound();
}

// The heads that there are.

RowHead* HeadList::headOf(const ArrangeRow& row) const {
    const auto found =
        std::find_if(heads.begin(), heads.end(), [&](RowHead* h) { return h->isOf(row); });
    return found == heads.end() ? nullptr : *found;
}

RowHead* HeadList::makeHead(const ArrangeRow& row) {
    if (row.lane)
        heads.push_back(new LaneHead(*this, row));
    else if (row.notes)
        heads.push_back(new NotesHead(*this, row));
    else if (row.take >= 0)
        heads.push_back(new TakeHead(*this, row));
    else
        heads.push_back(new TrackHead(*this, row));
    addControl(heads.back());
    heads.back()->refresh();
    return heads.back();
}

void HeadList::dropHead(RowHead* head) {
    controls.remove(head);
    win->app->deleteLater(head);
}

void HeadList::place() {
    std::vector<RowHead*> shown;
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = topOf(row);
        if (y >= height) break;
        if (y + row.height <= 0) continue;
        RowHead* head = headOf(row);
        if (!head) head = makeHead(row);
        head->setBounds(0, y, TrackHead::headWidth, row.height);
        head->show(row);
        shown.push_back(head);
    }
    for (RowHead* head : heads)
        if (std::find(shown.begin(), shown.end(), head) == shown.end()) dropHead(head);
    heads = std::move(shown);
    redraw();
}

void HeadList::refresh() {
    anySolo = state.anySolo();
    for (RowHead* head : heads) head->refresh();
    markStops();
}

bool HeadList::followSound() {
    bool changed = false;
    for (RowHead* head : heads) changed = head->followSound() || changed;
    return changed;
}

void HeadList::paint(CGraphic* g, CRect rect) {
    g->fillRect(palette().panel, clientRect());
    CGroup::paint(g, rect);
    if (mark < 0) return;
    const ArrangeRow* row = markInside ? rowAt(mark) : nullptr;
    if (row)
        g->frameRect(palette().accent, asRect(0, mark, width, mark + row->height));
    else
        g->fillRect(palette().accent, asRect(0, mark - markWidth, width, mark));
}

void HeadList::showMark(int y, bool inside) {
    if (mark == y && markInside == inside) return;
    mark = y;
    markInside = inside;
    redraw();
}

// What the heads ask.

const CPalette& HeadList::palette() const {
    return win->app->gui->palette;
}

ValueDoor* HeadList::door() const {
    return state.qv->values.get();
}

void HeadList::tell(const CStr& text) {
    state.workspace.setStatus(text);
}

std::vector<CSongTrack*> HeadList::together(const CSongTrack* track) const {
    std::vector<CSongTrack*> all;
    for (auto* t : state.seq()->getProg()->tracks)
        if (t == track || (track->track->selected() && t->track->selected())) all.push_back(t);
    return all;
}

bool HeadList::heard(const CSongTrack* track) const {
    return heardAmong(track, anySolo);
}

bool HeadList::folds(const CSongTrack* track) {
    if (track->track->kind == trackFolder) return true;
    for (const auto* lane : track->track->subTracks)
        if (lane->visible && lane->automation()) return true;
    return false;
}

void HeadList::fold(CSongTrack* track) {
    track->track->setOpen(!track->track->open());
    state.rowsChanged();
}

void HeadList::choose(CSongTrack* track, int btn) {
    CSeq* seq = state.seq();
    const auto& rows = state.rows.all();
    const auto indexOf = [&](const CSongTrack* t) {
        return int(std::find_if(rows.begin(), rows.end(),
                                [t](const ArrangeRow& r) { return r.songTrack == t; }) -
                   rows.begin());
    };
    const bool add = btn & modControl;
    const int here = indexOf(track), from = indexOf(anchor), count = int(rows.size());
    if (!add) seq->unselectTracks();
    if ((btn & modShift) && from < count && here < count) {
        for (int i = asMin(here, from); i <= asMax(here, from); i++)
            seq->selectTrack(rows[size_t(i)].songTrack, true);
        return;
    }
    anchor = track;
    seq->selectTrack(track, !add || !track->track->selected());
}

void HeadList::toggle(TrackSwitch which, CSongTrack* track) {
    const double to = switchOf(which, track).get()[0] != 0.0 ? 0.0 : 1.0;
    const bool everywhere = which == TrackSwitch::mute || which == TrackSwitch::solo;
    door()->begin();
    for (CSongTrack* t : together(track))
        if (everywhere || t->track->kind != trackFolder) door()->set(switchOf(which, t), to);
    door()->end();
}

/// The list has the mouse from here on: heads may come and go during a drag.
void HeadList::startDrag(std::unique_ptr<DragHandler> handler, const PressAt& at, int shape) {
    win->app->drag.cancel();
    drag = std::move(handler);
    cursor = shape;
    const CPoint in = win->controlPos(at.ctrl), corner = win->controlPos(this);
    win->setMouseCtrl(this);
    win->app->drag.start(this, drag.get(), asPoint(in.x - corner.x + at.x, in.y - corner.y + at.y),
                         at.btn);
}

void HeadList::swipe(TrackSwitch which, CSongTrack* track, const PressAt& at) {
    startDrag(switchDrag(*this, which, track), at);
}

void HeadList::size(const RowHead& head, const PressAt& at) {
    startDrag(sizeDrag(*this, head), at, RowHead::cursorUpDown);
}

void HeadList::pressed(CSongTrack* track, bool onStripe, const PressAt& at) {
    const bool plain = !(at.btn & (modShift | modControl));
    if (!plain || !track->track->selected()) choose(track, at.btn);
    if (plain) startDrag(moveDrag(*this, track, onStripe), at);
}

const ArrangeRow* HeadList::rowAt(int y) const {
    return state.rows.at(y + state.edit.scrollY);
}

int HeadList::topOf(const ArrangeRow& row) const {
    return row.top - state.edit.scrollY;
}

bool HeadList::renameSelected() {
    for (const ArrangeRow& row : state.rows.all()) {
        if (!row.ofTrack() || !row.songTrack->track->selected()) continue;
        showRow(row);
        static_cast<TrackHead*>(headOf(row))->rename();
        return true;
    }
    return false;
}

void HeadList::addTargets(CPopup* popup) {
    std::vector<CTrack*> chosen;
    for (auto* t : state.seq()->tracks)
        if (t->selected() && *TargetMenu::nameFor(t)) chosen.push_back(t);
    if (chosen.empty()) return;
    targets.fill(popup->addSub(TargetMenu::nameFor(chosen.front())), state.workspace, state.seq(),
                 chosen);
}

void HeadList::askColour() {
    std::vector<CTrack*> chosen;
    int present = palette().accent;
    for (const ArrangeRow& row : state.rows.all()) {
        if (!row.ofTrack() || !row.songTrack->track->selected()) continue;
        if (chosen.empty()) present = trackColourOf(row);
        chosen.push_back(row.songTrack->track);
    }
    if (chosen.empty()) return;
    CColourWin dialog(win, "Track colour", present);
    dialog.showModal();
    if (!dialog.result || !state.seq()) return;
    int r = 0, green = 0, b = 0;
    asRGB(dialog.colour, &r, &green, &b);
    door()->begin();
    for (CTrack* t : chosen)
        if (state.seq()->tracks.contains(t)) door()->set(colourOf(t), r << 16 | green << 8 | b);
    door()->end();
}

// The keys.

HeadList::Place HeadList::focusPlace() const {
    for (RowHead* head : heads)
        for (const CCtrl* stop : head->stops()) {
            if (stop != win->keyCtrl) continue;
            const auto& rows = state.rows.all();
            for (size_t i = 0; i < rows.size(); i++)
                if (head->isOf(rows[i])) return {int(i), stop->id};
        }
    return {};
}

void HeadList::focusOn(const Place& at) {
    const auto& rows = state.rows.all();
    if (at.row < 0 || rows.empty()) return;
    const ArrangeRow& row = rows[size_t(asMin(at.row, int(rows.size()) - 1))];
    showRow(row);
    RowHead* head = headOf(row);
    if (!head) return;
    CCtrl* found = head;
    for (CCtrl* stop : head->stops())
        if (stop->id == at.stop) found = stop;
    win->setKeyCtrl(found);
    markStops();
}

/// Of the head with the focus, else of the first one selected, else of the first one shown.
void HeadList::markStops() {
    RowHead* current = nullptr;
    const CCtrl* const focus = win->keyCtrl;
    for (RowHead* head : heads)
        if (focus && (focus == head || focus->parent == head)) current = head;
    for (RowHead* head : heads)
        if (!current && head->songTrack()->track->selected() && head->ofTrack()) current = head;
    if (!current && !heads.empty()) current = heads.front();
    for (RowHead* head : heads)
        for (CCtrl* stop : head->stops()) stop->tabStop = head == current;
}

bool HeadList::keyInside(int key, int mods) {
    const Place focus = focusPlace();
    if (focus.row < 0 || (mods & ~modShift)) return false;
    const int count = int(state.rows.all().size());
    if (key == ::keyUp || key == ::keyDown) {
        const int next = focus.row + (key == ::keyUp ? -1 : 1);
        if (next < 0 || next >= count) return true;
        selectRow(next, mods & modShift);
        focusOn({next, focus.stop});
        return true;
    }
    if (mods || (key != keyLeft && key != keyRight)) return false;
    const auto stops = headOf(state.rows.all()[size_t(focus.row)])->stops();
    const int at = int(std::find(stops.begin(), stops.end(), win->keyCtrl) - stops.begin());
    const int to = asMinMax(at + (key == keyLeft ? -1 : 1), 0, int(stops.size()) - 1);
    win->setKeyCtrl(stops[size_t(to)]);
    return true;
}

bool HeadList::contextMenu() {
    if (onHeadMenu) (*onHeadMenu)(this);
    return onHeadMenu;
}

bool HeadList::stepTrack(int by) {
    const auto& rows = state.rows.all();
    const int count = int(rows.size());
    int chosen = -1;
    for (int i = 0; i < count; i++)
        if (rows[size_t(i)].songTrack->track->selected() && rows[size_t(i)].ofTrack() &&
            (chosen < 0 || by > 0))
            chosen = i;
    int next = chosen < 0 ? 0 : chosen + by;
    while (next >= 0 && next < count && !rows[size_t(next)].ofTrack()) next += by;
    if (next < 0 || next >= count) return false;
    selectRow(next, false);
    return true;
}

void HeadList::showRow(const ArrangeRow& row) {
    state.scrollTo(state.axis().scroll(),
                   asMinMax(state.edit.scrollY, row.bottom() - state.gridHeight(), row.top));
}

/// `besides`: those that are selected stay so.
void HeadList::selectRow(int index, bool besides) {
    const ArrangeRow& row = state.rows.all()[size_t(index)];
    CSeq* seq = state.seq();
    if (!besides) {
        seq->unselectTracks();
        anchor = row.songTrack;
    }
    seq->selectTrack(row.songTrack, true);
    showRow(row);
}

void HeadList::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Tracks";
}
