#include "gui/controls/CListbox.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/Utf8.h"
#include "gui/controls/CScrollbar.h"

namespace {
constexpr int barSize = 16, boxColumn = 15, boxSize = 11, textMargin = 4, wheelRows = 3;
constexpr int typingMs = 1000; // a pause that begins a new name
constexpr int contentSize = 300, contentMargin = 4, wheelPixels = 32;
constexpr double restShare = 0.6; // how much a choice fades while the focus is elsewhere
} // namespace

CListbox::CListbox(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CGroup(owner, name, l, t, w, h), face(new CCtrl(owner, "rows", 0, 0, w, h)),
      bar(new CScrollbar(owner, "scroll", 0, 0, barSize, h)) {
    tabStop = true;
    face->onPaint = new _COnPaint<CListbox>(this, &CListbox::paintRows);
    face->onMouseDown = new _COnMouse<CListbox>(this, &CListbox::rowsMouseDown);
    bar->onChange = new _COnChange<CListbox>(this, &CListbox::scrolled);
    addControl(face);
    addControl(bar);
    CListbox::resized();
}

CListbox::~CListbox() {
    delete onDoubleClick;
    delete onChecked;
    deleteAll(items);
}

CListRow* CListbox::add(const CStr& text) {
    auto* line = new CListRow(text);
    items.add(line);
    resized();
    return line;
}

void CListbox::clearRows() {
    deleteAll(items);
    index = -1;
    bar->setPos(0);
    resized();
}

int CListbox::visibleRows() const {
    return asMax((height - 2) / asMax(itemHeight, 1), 1);
}

void CListbox::resized() {
    const bool scrolls = items.getCount() > visibleRows();
    const int side = scrolls ? barSize : 0;
    bar->visible = scrolls;
    bar->setBounds(width - 1 - side, 1, side, height - 2);
    face->setBounds(1, 1, width - 2 - side, height - 2);
    bar->setRange(items.getCount(), visibleRows());
    shownPos = bar->pos;
    redraw();
}

void CListbox::setIndex(int line) {
    index = asMinMax(line, -1, items.getCount() - 1);
    if (index >= 0 && index < bar->pos) bar->setPos(index);
    if (index >= bar->pos + visibleRows()) bar->setPos(index - visibleRows() + 1);
    shownPos = bar->pos;
    redraw();
}

void CListbox::choose(int line) {
    if (line < 0 || line >= items.getCount()) return;
    setIndex(line);
    if (onChange) (*onChange)(this);
}

void CListbox::toggle(int line) {
    CListRow* at = row(line);
    if (!at) return;
    at->checked = !at->checked;
    redraw();
    if (onChecked) (*onChecked)(this);
}

void CListbox::scrolled(CObject*) {
    const int lines = shownPos - bar->pos;
    shownPos = bar->pos;
    face->scrollArea(face->clientRect(), 0, lines * itemHeight);
}

void CListbox::rowsMouseDown(CObject*, int x, int y, int btn) {
    win->setKeyCtrl(this);
    const int line = bar->pos + y / asMax(itemHeight, 1);
    if (line >= items.getCount()) return;
    if (checkable && x <= boxColumn) {
        setIndex(line);
        toggle(line);
    } else if ((btn & modDouble) && (btn & modLeft) && line == index) {
        if (onDoubleClick) (*onDoubleClick)(this);
    } else {
        choose(line);
    }
}

bool CListbox::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!dy || !bar->visible) return false;
    bar->setPos(bar->pos - (dy > 0 ? wheelRows : -wheelRows));
    bar->redraw();
    scrolled(bar);
    return true;
}

void CListbox::setFocus(bool on) {
    CGroup::setFocus(on);
    redraw();
}

bool CListbox::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (typeKey(key, mods)) return true;
    if (mods) return false;
    if (key == keyReturn && onDoubleClick && index >= 0) {
        (*onDoubleClick)(this);
        return true;
    }
    return moveKey(key);
}

bool CListbox::moveKey(int key) {
    const int last = items.getCount() - 1;
    switch (key) {
    case ::keyUp:
        choose(asMax(index - 1, 0));
        return true;
    case ::keyDown:
        choose(asMin(index + 1, last));
        return true;
    case keyHome:
        choose(0);
        return true;
    case keyEnd:
        choose(last);
        return true;
    case keyPageUp:
        choose(asMax(index - visibleRows(), 0));
        return true;
    case keyPageDown:
        choose(asMin(index + visibleRows(), last));
        return true;
    default:
        return false;
    }
}

/// Space toggles a check box, unless it belongs to a name that is being typed.
bool CListbox::typeKey(int key, int mods) {
    if (key < ' ' || (mods & (modControl | modAlt))) return false;
    const int now = asTimeInMS();
    if (msBetween(typedAt, now) > typingMs) typed = CStr();
    if (key == ' ' && typed.empty()) {
        if (checkable) toggle(index);
        return checkable;
    }
    typedAt = now;
    typed += utf8Of(uint32_t(key)).c_str();
    choose(rowOfText(typed));
    return true;
}

/// The next line that begins with a text, in a ring. A second letter may stay on the line that the
/// first one has found.
int CListbox::rowOfText(const CStr& start) const {
    size_t behind = 0;
    nextCharacter(start.asChar(), behind);
    const bool first = int(behind) == start.length();
    const int from = index + (first ? 1 : 0);
    int line = 0, before = -1;
    for (const CListRow* at : items) {
        const bool fits = beginsWith(at->id.asChar(), start.asChar());
        if (fits && line >= from) return line;
        if (fits && before < 0) before = line;
        line++;
    }
    return before;
}

void CListbox::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clListbox);
    CGroup::paint(g, rect);
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, rect);
}

int CListbox::groundOf(int line) const {
    if (line != index) return clListbox.fillCol;
    if (hasKeyFocus()) return clListboxSelected.fillCol;
    return fadeCol(clListboxSelected.fillCol, clListbox.fillCol, restShare);
}

void CListbox::paintRows(CObject*, CGraphic* g, CRect rect) {
    int line = 0;
    for (CListRow* at : items) {
        const int i = line++, y = (i - bar->pos) * itemHeight;
        if (i < bar->pos) continue;
        if (y >= rect.bottom) break;
        const CRect place = asRect(0, y, rect.right, y + itemHeight);
        if (!g->wants(place)) continue;
        const bool strong = i == index && hasKeyFocus();
        if (strong)
            drawGuiItem(g, place, &clListboxSelected, drawBackground);
        else if (i == index)
            g->fillRect(groundOf(i), place);
        paintRow(g, place, at, strong ? clListboxSelected : clListbox);
    }
}

void CListbox::paintRow(CGraphic* g, CRect rect, CListRow* line, const CGuiItem2& look) {
    if (checkable) {
        const int boxTop = rect.top + (itemHeight - boxSize) / 2;
        const CRect box = asRect(2, boxTop, 2 + boxSize, boxTop + boxSize);
        const int mark = &look == &clListbox ? clListboxSelected.fillCol : look.textCol;
        if (line->checked) g->fillRect(mark, box);
        g->frameRect(line->checked ? mark : look.textCol, box);
        if (line->checked) drawCheck(g, textOn(mark), sizeRect(rect, -3, 0, 0, 0));
    }
    const int indent = checkable ? boxColumn + textMargin : textMargin;
    g->drawText(look.textCol, line->id, sizeRect(rect, indent, 0, 0, 0), textLeft);
}

CScrollPanel::CScrollPanel(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CGroup(owner, name, l, t, w, h),
      inner(new CGroup(owner, "inner", 0, 0, contentSize, contentSize)),
      horzBar(new CScrollbar(owner, "horz", 0, 0, w, barSize)),
      vertBar(new CScrollbar(owner, "vert", 0, 0, barSize, h)) {
    horzBar->vertical = false;
    addControl(inner);
    for (CScrollbar* bar : {horzBar, vertBar}) {
        bar->onChange = new _COnChange<CScrollPanel>(this, &CScrollPanel::scrolled);
        addControl(bar);
    }
}

void CScrollPanel::resized() {
    int right = 0, bottom = 0;
    for (const auto* ctrl : inner->controls) {
        right = asMax(right, ctrl->left + ctrl->width + contentMargin);
        bottom = asMax(bottom, ctrl->top + ctrl->height + contentMargin);
    }
    // Each bar takes room that may call for the other one.
    const bool down = bottom > height - (right > width ? barSize : 0);
    const bool across = right > width - (down ? barSize : 0);
    const int w = width - (down ? barSize : 0), h = height - (across ? barSize : 0);
    horzBar->visible = across;
    vertBar->visible = down;
    inner->setBounds(0, 0, w, h);
    horzBar->setBounds(0, h, w, barSize);
    vertBar->setBounds(w, 0, barSize, h);
    CGroup::resized();
    horzBar->setRange(right, w);
    vertBar->setRange(bottom, h);
    scrolled(nullptr);
    redraw();
}

void CScrollPanel::scrolled(CObject*) {
    const int dx = inner->scrollX - horzBar->pos, dy = inner->scrollY - vertBar->pos;
    inner->scrollX = horzBar->pos;
    inner->scrollY = vertBar->pos;
    inner->scrollArea(inner->clientRect(), dx, dy);
    for (CScrollbar* bar : {horzBar, vertBar}) bar->redraw();
}

void CScrollPanel::reveal(const CCtrl* ctrl) {
    int x = 0, y = 0;
    const CCtrl* at = ctrl;
    for (; at && at != inner; at = at->parent) {
        x += at->left;
        y += at->top;
    }
    if (!at) return;
    horzBar->setPos(asMin(x, asMax(horzBar->pos, x + ctrl->width - inner->width)));
    vertBar->setPos(asMin(y, asMax(vertBar->pos, y + ctrl->height - inner->height)));
    scrolled(nullptr);
}

bool CScrollPanel::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    CScrollbar* bar = dy ? vertBar : horzBar;
    if (!bar->visible) return false;
    bar->setPos(bar->pos - ((dy ? dy : dx) > 0 ? wheelPixels : -wheelPixels));
    scrolled(bar);
    return true;
}

int CListbox::accessParts() const {
    return items.getCount();
}

int CListbox::focusedPart() const {
    return index;
}

void CListbox::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::listRow;
    if (part == wholeCtrl) return;
    const CListRow* line = row(part);
    const int y = face->top + (part - bar->pos) * itemHeight;
    d.name = line->id.asChar();
    d.action = checkable ? "toggle" : "choose";
    d.bounds = asRect(face->left, y, face->left + face->width, y + itemHeight);
    d.set(stateShowing, d.has(stateShowing) && y >= face->top && y < height);
    d.set(stateSelectable, true);
    d.set(stateSelected, part == index);
    d.set(stateChecked, checkable && line->checked);
}

bool CListbox::pressPart(int part) {
    if (part == wholeCtrl) return false;
    win->setKeyCtrl(this);
    if (checkable) {
        setIndex(part);
        toggle(part);
    } else if (part == index && onDoubleClick) {
        (*onDoubleClick)(this);
    } else {
        choose(part);
    }
    return true;
}
