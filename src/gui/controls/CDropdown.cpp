#include "gui/controls/CDropdown.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"
#include "gui/Monitors.h"
#include "gui/controls/CScrollbar.h"

namespace {
constexpr int barSize = 16, arrowGlyph = 4, frame = 1;
constexpr int listStyle = winNoBorder | winMain | winPopup | winEscape;
constexpr double hoverShare = 0.15, disabledShare = 0.6;
} // namespace

/// The texts in the open list.
class CDropdown::Rows : public CCtrl {
public:
    explicit Rows(CDropdown* whose)
        : CCtrl(whose->list.get(), "rows", 0, 0, whose->width, itemHeight), owner(whose) {}
    int accessParts() const override { return owner->numItems(); }
    int focusedPart() const override { return owner->tracked; }
    void describe(Description& d, int part) const override {
        d.role = part == wholeCtrl ? Role::list : Role::listRow;
        d.name = part == wholeCtrl ? owner->id.asChar() : owner->getItemText(part).asChar();
        if (part == wholeCtrl) return;
        const int y = (part - owner->bar->pos) * itemHeight;
        d.action = "choose";
        d.bounds = asRect(0, y, width, y + itemHeight);
        d.set(stateShowing, d.has(stateShowing) && y >= 0 && y < height);
        d.set(stateSelectable, true);
        d.set(stateSelected, part == owner->tracked);
    }
    bool pressPart(int part) override {
        if (part == wholeCtrl) return false;
        owner->commit(part);
        return true;
    }

private:
    CDropdown* owner;
};

CDropdown::CDropdown(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CEdit(owner, name, l, t, w, h) {
    hooverable = true;
    tabStop = true;
}

CDropdown::~CDropdown() {
    delete onIconClick;
    delete onOpen;
}

CStr CDropdown::shownText() const {
    return editable ? text : const_cast<CDropdown*>(this)->defaultText();
}

void CDropdown::setIndex(int row, bool report) {
    if (row < 0 || row >= count()) row = -1;
    const bool changed = row != index;
    index = row;
    if (row >= 0) setText(getItemText(row));
    redraw();
    if (changed && report && onChange) (*onChange)(this);
}

void CDropdown::paint(CGraphic* g, CRect rect) {
    const int arrow = rect.height();
    const CPalette& colours = win->app->gui->palette;
    const int faint = fadeCol(colours.dimText, clDropdown.fillCol, disabledShare);
    if (editable && hasKeyFocus()) {
        CEdit::paint(g, rect);
    } else {
        const double share = isHovered() ? hoverShare : 0;
        drawGuiItemIn(g, rect, clDropdown, fadeCol(clDropdown.fillCol, colours.accent, share));
        if (hasKeyFocus()) drawGuiItemEdge(g, rect, clDropdown, colours.accent);
        if (onPaint)
            CCtrl::paint(g, rect);
        else
            g->drawText(enabled ? clDropdown.textCol : faint, shownText(),
                        sizeRect(rect, textMargin, 0, -arrow, 0), 2);
    }
    drawArrow(g, enabled ? clDropdown.symbolCol : faint,
              asRect(rect.right - arrow, rect.top, rect.right, rect.bottom), dirDown, arrowGlyph);
}

bool CDropdown::opensAt(int x) const {
    if (editable && x < width - height) return false;
    return dropMode != dropLeft || x < width - 2 * height;
}

void CDropdown::mouseDown(int x, int y, int btn) {
    if (btn == modMiddle && editable) return CEdit::mouseDown(x, y, btn);
    if (btn != modLeft) return;
    if (onIconClick && x < height) {
        (*onIconClick)(this);
    } else if (opensAt(x)) {
        drop();
    } else if (editable) {
        CEdit::mouseDown(x, y, btn);
    }
}

void CDropdown::mouseMove(int x, int y, int btn) {
    if (editable)
        CEdit::mouseMove(x, y, btn);
    else
        CCtrl::mouseMove(x, y, btn);
}

bool CDropdown::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!(btn & modControl)) return false;
    setIndex(asMinMax(index + ((dy ? dy : dx) > 0 ? -1 : 1), 0, count() - 1), true);
    return true;
}

bool CDropdown::keyDown(int key, int mods) {
    if (editable && (key != ::keyDown || mods)) return CEdit::keyDown(key, mods);
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods) return false;
    if (key == keyReturn || key == ' ' || key == ::keyDown)
        drop();
    else
        return false;
    return true;
}

void CDropdown::setFocus(bool on) {
    if (editable)
        CEdit::setFocus(on);
    else
        redraw();
}

int CDropdown::typedRow() {
    for (int i = 0; i < count(); i++)
        if (getItemText(i) == text) return i;
    return -1;
}

void CDropdown::makeList() {
    list = std::make_unique<CWin>(win->app, win, id, 0, 0, width, itemHeight, listStyle);
    rows = new Rows(this);
    rows->onPaint = new _COnPaint<CDropdown>(this, &CDropdown::paintRows);
    rows->onMouseMove = new _COnMouse<CDropdown>(this, &CDropdown::itemsMouseMove);
    rows->onMouseUp = new _COnMouse<CDropdown>(this, &CDropdown::itemsMouseUp);
    list->onWheel = new _COnWheel<CDropdown>(this, &CDropdown::itemsWheel);
    list->onKeyDown = new _COnKey<CDropdown>(this, &CDropdown::itemsKeyDown);
    list->addControl(rows);
    bar = new CScrollbar(list.get(), "scroll", 0, 0, barSize, itemHeight);
    bar->onChange = new _COnChange<CDropdown>(this, &CDropdown::scrolled);
    list->addControl(bar);
}

/// Sizes the list for its rows and puts it below the control, or above where there is more room.
void CDropdown::place() {
    visibleRows = asMinMax(numItems(), 1, maxVisible);
    const int w = dropWidth >= 0 ? dropWidth : width, h = visibleRows * itemHeight;
    const CPoint corner = win->getPos(true), at = win->controlPos(this);
    const CPoint here = addPos(corner, at);
    const CRect room = monitorAt(here);
    const int x = asMax(asMin(here.x, room.right - w), room.left);
    int y = here.y + height;
    if (y + h > room.bottom) y = asMax(here.y - h, room.top);
    list->move(x, y, w, h);
    const bool scrolls = numItems() > visibleRows;
    const int side = scrolls ? barSize : 0;
    bar->visible = scrolls;
    bar->setBounds(w - frame - side, frame, side, h - 2 * frame);
    rows->setBounds(0, 0, w - side, h);
    bar->setRange(numItems(), visibleRows);
}

void CDropdown::drop() {
    if (onOpen) (*onOpen)(this);
    if (!list) makeList();
    place();
    armed = false;
    tracked = -1;
    track(editable ? typedRow() : index);
    list->showMenu();
    redraw();
}

void CDropdown::track(int row) {
    tracked = asMinMax(row, -1, numItems() - 1);
    if (tracked >= 0 && tracked < bar->pos) bar->setPos(tracked);
    if (tracked >= bar->pos + visibleRows) bar->setPos(tracked - visibleRows + 1);
    list->redraw();
}

void CDropdown::commit(int row) {
    list->hide();
    if (row >= 0) setIndex(row, true);
}

void CDropdown::scrolled(CObject*) {
    rows->redraw();
}

void CDropdown::itemsMouseMove(CObject*, int x, int y, int) {
    if (!rows->inside(x, y)) return;
    armed = true;
    const int row = bar->pos + y / itemHeight;
    if (row != tracked && row < numItems()) track(row);
}

void CDropdown::itemsMouseUp(CObject*, int x, int y, int) {
    if (armed && rows->inside(x, y)) commit(tracked);
}

bool CDropdown::itemsWheel(CObject*, int, int, int, int dy, int) {
    track(asMinMax(tracked + (dy > 0 ? -1 : 1), 0, numItems() - 1));
    return true;
}

bool CDropdown::itemsKeyDown(CObject*, int& key, int) {
    const int last = numItems() - 1;
    switch (key) {
    case ::keyUp:
        track(asMax(tracked - 1, 0));
        return true;
    case ::keyDown:
        track(tracked + 1);
        return true;
    case keyHome:
        track(0);
        return true;
    case keyEnd:
        track(last);
        return true;
    case keyPageUp:
        track(asMax(tracked - visibleRows, 0));
        return true;
    case keyPageDown:
        track(tracked + visibleRows);
        return true;
    case keyReturn:
        commit(tracked);
        return true;
    case keyEscape:
        list->hide();
        return true;
    default:
        return false;
    }
}

void CDropdown::paintRows(CObject*, CGraphic* g, CRect rect) {
    const CRect whole = asRect(0, 0, list->width, list->height);
    drawGuiItem(g, whole, &clDropdownMenu, drawBackground);
    for (int i = 0; i < visibleRows && bar->pos + i < numItems(); i++) {
        const int row = bar->pos + i, y = i * itemHeight;
        const CRect at = asRect(frame, y, rect.right - frame, y + itemHeight);
        const CGuiItem2& look = row == tracked ? clDropdownMenuSelected : clDropdownMenu;
        if (row == tracked) drawGuiItem(g, at, &look, drawBackground);
        g->drawText(look.textCol, getItemText(row), sizeRect(at, textMargin - frame, 0, 0, 0), 2);
    }
    drawGuiItem(g, whole, &clDropdownMenu, drawFrame);
}

void CDropdown::describe(Description& d, int part) const {
    CEdit::describe(d, part);
    d.role = Role::comboBox;
    d.text = shownText().asChar();
    d.action = "open";
    d.set(stateEditable, editable);
    d.set(stateExpandable, true);
    d.set(stateExpanded, list && list->visible);
    if (!editable) d.caret.reset();
}

bool CDropdown::pressPart(int) {
    win->setKeyCtrl(this);
    drop();
    return true;
}

/// One of the texts in the list chooses that one.
bool CDropdown::enterText(const std::string& to) {
    for (int row = 0; row < numItems(); row++)
        if (to == getItemText(row).asChar()) {
            setIndex(row, true);
            return true;
        }
    return editable && CEdit::enterText(to);
}
