#include "arrange/PointLane.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/edit/PointEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TempoMap.h"
#include "ui/NameField.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr int tagType = 100, tagDelete = 101, tagAdd = 102;
constexpr int leastField = 64;

} // namespace

PointLane::PointLane(CWin* owner, ArrangeState& shared, const char* name, int h)
    : CGroup(owner, name, 0, 0, 1, h), state(shared) {
    tabStop = true;
}

PointLane::~PointLane() = default;

int PointLane::xOf(double tick) const {
    return state.axis().xOf(tick);
}

bool PointLane::stands() const {
    CSeq* seq = state.seq();
    return seq && current && points(seq).contains(current);
}

const PointLane::Shift& PointLane::shiftOf(const CPart* point) const {
    static constexpr Shift none;
    return point == current ? moved : none;
}

bool PointLane::refresh() {
    NameField::dropLeft(field);
    std::vector<double> now;
    if (CSeq* seq = state.seq())
        for (auto* point : points(seq)) {
            const auto values = look(point);
            now.insert(now.end(), values.begin(), values.end());
            now.push_back(point->pos);
        }
    if (now == shown) return false;
    shown = std::move(now);
    redraw();
    return true;
}

void PointLane::paint(CGraphic* g, CRect rect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    paintGround(g, asked);
    if (CSeq* seq = state.seq())
        for (auto* point : points(seq)) paintPoint(g, point, shiftOf(point), point == current);
    g->fillLine(palette.frame, asRect(asked.left, height - 1, asked.right, height));
    if (hasKeyFocus()) g->frameRect(palette.accent, clientRect());
    CGroup::paint(g, rect);
}

// The mouse.

/// Of several the last one, which is drawn over the others.
CPart* PointLane::pointAt(int x, int y) const {
    CPart* found = nullptr;
    CSeq* seq = state.seq();
    if (!seq) return nullptr;
    for (auto* point : points(seq))
        if (boxOf(point, {}).contains(x, y) || onEnd(point, x)) found = point;
    return found;
}

void PointLane::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    const CPart* point = pointAt(x, y);
    cursor = point && onEnd(point, x) ? cursorSideways : cursorPlain;
}

void PointLane::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    CSeq* seq = state.seq();
    if (!seq || (btn & modRight)) return;
    current = pointAt(x, y);
    moved = {};
    redraw();
    if (!(btn & modLeft)) return;
    const int tick = asMinMax(asInt(state.axis().ticksAt(x)), 0, maxTicks);
    if (!current) {
        if (btn & (modAlt | modDouble))
            add(snapped(state.snapTicks(), tick, true), y);
        else
            state.qv->setPos(tick);
        return;
    }
    if (btn & modDouble) return type(current);
    sizing = onEnd(current, x);
    first = sizing ? current->pos + current->length : current->pos.load();
    state.edit.startBtn = btn;
    win->app->drag.start(this, this, asPoint(x, y), btn);
}

void PointLane::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y) && state.seq()) openMenu(pointAt(x, y));
}

void PointLane::add(int tick, int y) {
    current = addPoint(state.seq(), tick, y);
}

void PointLane::dragMove(const DragPoint& point) {
    if (!stands()) return;
    const int dragged = asRound(state.axis().ticksIn(point.at.x - point.anchor.x));
    const int by = state.snappedBy(dragGrid(state, point.btn), first, dragged);
    Shift now;
    if (sizing)
        now.longer = asMax(by, 1 - current->length);
    else
        now.ticks = asMinMax(by, -current->pos, maxTicks - current->pos);
    now.y = sizing ? 0 : point.at.y - point.anchor.y;
    if (now == moved) return;
    moved = now;
    state.workspace.setStatus(shownText(current, moved) + ", " +
                              placeText(state.seq(), first + (sizing ? now.longer : now.ticks)));
    redraw();
}

void PointLane::dragEnd(const DragPoint&) {
    const Shift done = moved;
    moved = {};
    if (stands()) apply(state.seq(), current, done);
    redraw();
}

void PointLane::dragCancel() {
    moved = {};
    redraw();
}

void PointLane::type(CPart* point) {
    NameField::dropLeft(field);
    if (field) return;
    current = point;
    CRect box = boxOf(point, {});
    box = asRect(asMax(0, box.left), 0, asMax(box.right, asMax(0, box.left) + leastField),
                 height - 1);
    field = new NameField(this, box, typedText(point), shownText(point, {}));
    field->onName = [this](const CStr& text) {
        if (stands()) typed(state.seq(), current, text);
    };
    redraw();
}

// The keys.

bool PointLane::walk(int by) {
    CSeq* seq = state.seq();
    std::vector<CPart*> all;
    for (auto* point : points(seq)) all.push_back(point);
    if (all.empty()) return true;
    std::ranges::stable_sort(all, {}, [](const CPart* p) { return p->pos.load(); });
    const auto at = std::find(all.begin(), all.end(), current);
    const int now = at == all.end() ? (by > 0 ? -1 : int(all.size())) : int(at - all.begin());
    current = all[size_t(asMinMax(now + by, 0, int(all.size()) - 1))];
    const int x = xOf(current->pos.load());
    if (x < 0 || x >= width)
        state.scrollTo(state.axis().wideX(current->pos.load()) - width / 2, state.edit.scrollY);
    redraw();
    return true;
}

bool PointLane::moveBy(int steps) {
    if (!stands()) return true;
    CSeq* seq = state.seq();
    const int grid = state.snapTicks();
    apply(seq, current,
          {asMax(snapped(grid, current->pos + steps * grid, true), 0) - current->pos});
    return true;
}

bool PointLane::keyDown(int key, int mods) {
    if (CGroup::keyDown(key, mods)) return true;
    CSeq* seq = state.seq();
    const int by = (key == keyRight) - (key == keyLeft);
    if (!seq) return false;
    if (upperKey(key) == 'A' && mods == modShift) {
        add(asInt(seq->getPos()), -1);
        return true;
    }
    if (mods & ~modControl) return false;
    if (by) return mods ? moveBy(by) : walk(by);
    if (mods) return false;
    if (!stands()) return false;
    if (key == keyReturn)
        type(current);
    else if (key == keyDelete)
        deletePoint(seq, current);
    else
        return false;
    return true;
}

// The menu.

void PointLane::addEntry(CPopup* popup, const char* text, int number, bool on) {
    CMenuItem* item = popup->add(text, new _COnChange<PointLane>(this, &PointLane::entryClicked));
    item->tag = number;
    item->enabled = on;
}

bool PointLane::contextMenu() {
    if (!state.seq()) return false;
    openMenu(stands() ? current : nullptr);
    return true;
}

void PointLane::openMenu(CPart* point) {
    current = point;
    redraw();
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    addEntry(popup, "Add at the position", tagAdd);
    addEntry(popup, "Type...", tagType, point);
    addEntry(popup, "Delete", tagDelete, point);
    if (point) fillMenu(popup, point);
    const CPoint at = win->app->menuPoint();
    popup->popup(at.x, at.y, win->app->menuCtrl);
}

void PointLane::entryClicked(CObject* sender) {
    CSeq* seq = state.seq();
    const int entry = tagOf(sender);
    if (!seq) return;
    if (entry == tagAdd) return add(asInt(seq->getPos()), -1);
    if (!stands()) return;
    if (entry == tagType)
        type(current);
    else if (entry == tagDelete)
        deletePoint(seq, current);
    else
        chosenEntry(seq, current, entry);
}

// For screen readers.

int PointLane::accessParts() const {
    CSeq* seq = state.seq();
    return seq ? points(seq).getCount() : 0;
}

int PointLane::focusedPart() const {
    return stands() ? points(state.seq()).indexed(current) : wholeCtrl;
}

void PointLane::describe(Description& d, int part) const {
    if (part == wholeCtrl) {
        d.role = Role::canvas;
        return;
    }
    CSeq* seq = state.seq();
    const auto* point = seq ? points(seq).items(part) : nullptr;
    if (!point) return;
    d.role = Role::item;
    d.name = (shownText(point, {}) + ", " + placeText(seq, point->pos)).asChar();
    d.bounds = boxOf(point, {});
    d.action = "choose";
    d.set(stateSelectable, true);
    d.set(stateSelected, point == current);
}

bool PointLane::pressPart(int part) {
    CSeq* seq = state.seq();
    auto* point = seq ? points(seq).items(part) : nullptr;
    if (!point) return false;
    current = point;
    state.qv->setPos(point->pos.load());
    redraw();
    return true;
}
