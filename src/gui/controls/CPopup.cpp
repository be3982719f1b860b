#include "gui/controls/CPopup.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/Monitors.h"
#include "gui/Senders.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

namespace {

constexpr int smallestWidth = 64, separatorHeight = 7, scrollButtonHeight = 20;
constexpr int checkColumn = 24, rightMargin = 24, shortcutGap = 24, arrowSize = 3;
constexpr int subMenuOverlap = 6, scrollStep = 16, scrollMs = 30, mostMeasuredRows = 16;
constexpr int moveRoom = 3; // pixels that a pointer may tremble

} // namespace

CPopup::CPopup(CApp* application, CWin* owner)
    : CWin(application, owner, "menu", 0, 0, smallestWidth, commandHeight,
           winPopup | winEscape | winKeysToOwner),
      face(addArea("items")), upButton(addScrollButton("scrollup", dirUp)),
      downButton(addScrollButton("scrolldown", dirDown)) {
    face->onPaint = new _COnPaint<CPopup>(this, &CPopup::paintItems);
    face->onMouseDown = new _COnMouse<CPopup>(this, &CPopup::itemsMouseDown);
    face->onMouseMove = new _COnMouse<CPopup>(this, &CPopup::itemsMouseMove);
    face->onMouseUp = new _COnMouse<CPopup>(this, &CPopup::itemsMouseUp);
    onWheel = new _COnWheel<CPopup>(this, &CPopup::itemsWheel); // wherever the pointer is
    onPaint = new _COnPaint<CPopup>(this, &CPopup::paintGround);
}

CPopup::~CPopup() {
    deleteAll(items);
}

CCtrl* CPopup::addArea(const char* name) {
    auto* area = new CCtrl(this, name, 0, 0, width, height);
    addControl(area);
    return area;
}

CCtrl* CPopup::addScrollButton(const char* name, int dir) {
    CCtrl* button = addArea(name);
    button->tag = dir;
    button->visible = false;
    button->onPaint = new _COnPaint<CPopup>(this, &CPopup::paintScrollButton);
    button->onMouseDown = new _COnMouse<CPopup>(this, &CPopup::beginScroll);
    button->onMouseUp = new _COnMouse<CPopup>(this, &CPopup::endScroll);
    return button;
}

CMenuItem* CPopup::add(int kind, const CStr& text, COnChange* chosen) {
    auto* item = new CMenuItem(this, kind, text);
    item->onChange = chosen;
    items.add(item);
    return item;
}

CPopup* CPopup::addSub(const CStr& text) {
    CMenuItem* item = add(menuSub, text);
    item->subMenu = new CPopup(app, this);
    item->subMenu->opener = this;
    return item->subMenu;
}

CMenuItem* CPopup::addRows(int count, COnGetText* texts, COnChange* chosen) {
    CMenuItem* item = add(menuRows, "rows", chosen);
    item->rowCount = asMax(count, 0);
    item->onGetText = texts;
    return item;
}

void CPopup::addSeparator() {
    const auto* last = items.last();
    if (last && last->kind != menuSeparator) add(menuSeparator, "separator");
}

void CPopup::clearItems() {
    while (auto* item = items.first()) {
        items.del(0);
        if (item->subMenu) item->subMenu->hide();
        app->deleteLater(item);
    }
    selected = -1;
    subIndex = scrolled = 0;
}

int CPopup::contentWidth() const {
    int labels = 0, shortcuts = 0;
    for (auto* item : items) {
        labels = asMax(labels, graphic->textWidth(item->label()));
        if (item->kind == menuSeparator || item->kind == menuSub) continue;
        const CStr keys = item->shortcut();
        if (!keys.empty()) shortcuts = asMax(shortcuts, graphic->textWidth(keys) + shortcutGap);
        for (int row = 0; row < asMin(item->rowCount, mostMeasuredRows); row++)
            labels = asMax(labels, graphic->textWidth(item->rowText(row)));
    }
    return checkColumn + labels + shortcuts + rightMargin;
}

/// Lays the entries out and gives the window its size.
void CPopup::measure() {
    contentHeight = 0;
    for (auto* item : items) {
        item->top = contentHeight;
        item->height = item->kind == menuSeparator ? separatorHeight
                       : item->kind == menuRows    ? item->rowCount * rowHeight
                                                   : commandHeight;
        contentHeight += item->height;
    }
    const int w = asMax(smallestWidth, contentWidth() + 2 * borderSize);
    const int h = asMin(contentHeight + 2 * borderSize, monitorAt(wanted).height());
    const int room = h - 2 * borderSize, inner = w - 2 * borderSize;
    const bool scrolls = contentHeight > room;
    const int margin = scrolls ? scrollButtonHeight : 0;
    upButton->visible = downButton->visible = scrolls;
    upButton->setBounds(0, 0, inner, margin);
    downButton->setBounds(0, room - margin, inner, margin);
    face->setBounds(0, margin, inner, room - 2 * margin);
    scrollMax = asMax(0, contentHeight - face->height);
    scrolled = asMinMax(scrolled, 0, scrollMax);
    setSize(w, h);
}

void CPopup::place() {
    const CRect room = monitorAt(wanted);
    int x = wanted.x;
    if (x + width > room.right)
        x = opener && opener->visible ? opener->getPos(true).x - width + subMenuOverlap
                                      : room.right - width;
    const int y = asMin(wanted.y, room.bottom - height);
    setPos(asMax(x, room.left), asMax(y, room.top));
}

void CPopup::popup(int x, int y, bool fromKeys) {
    wanted = asPoint(x, y);
    byKeys = fromKeys;
    openedAt = mousePos();
    armed = false;
    selected = -1;
    scrolled = scrollDir = 0;
    showMenu();
}

void CPopup::popupBelow(CCtrl* ctrl) {
    const CPoint corner = ctrl->win->getPos(true), in = ctrl->win->controlPos(ctrl);
    popup(corner.x + in.x, corner.y + in.y + ctrl->height, ctrl->hasKeyFocus());
}

void CPopup::show(bool activate) {
    measure();
    resized();
    place();
    if (byKeys) selectLine(0);
    if (visible)
        redraw();
    else
        CWin::show(activate);
}

CRect CPopup::itemRect(const CMenuItem* item, int sub) const {
    const int y = face->top + item->top - scrolled;
    if (item->kind != menuRows) return asRect(0, y, face->width, y + item->height);
    return asRect(0, y + sub * rowHeight, face->width, y + (sub + 1) * rowHeight);
}

bool CPopup::itemAt(int y, int& index, int& sub) const {
    index = 0;
    y += scrolled;
    for (const auto* item : items) {
        if (y >= item->top && y < item->top + item->height) {
            sub = item->kind == menuRows ? (y - item->top) / rowHeight : 0;
            return true;
        }
        index++;
    }
    return false;
}

void CPopup::scrollBy(int pixels) {
    scrolled = asMinMax(scrolled + pixels, 0, scrollMax);
    redraw();
}

/// Shows in the menus that led here which entries did.
void CPopup::markInOpener() {
    if (!opener || !opener->visible) return;
    app->killTimer(opener);
    int index = 0;
    for (const auto* item : opener->items) {
        if (item->subMenu == this && opener->selected != index) {
            opener->selected = index;
            opener->redraw();
        }
        index++;
    }
}

void CPopup::selectItem(int index, int sub, bool scrollTo, bool openSub) {
    CMenuItem* item = index < 0 ? nullptr : getItem(index);
    if (index >= 0 && (!item || !item->selectable())) return;
    const bool changed = index != selected || sub != subIndex;
    selected = index;
    subIndex = sub;
    markInOpener();
    if (!changed) return;
    redraw();
    if (item && scrollTo) {
        const CRect at = itemRect(item, sub);
        const int above = at.top - face->top, below = at.bottom - face->top - face->height;
        if (above < 0 || below > 0) scrollBy(above < 0 ? above : below);
    }
    if (openSub) app->addTimer(this, subMenuDelay, false);
}

void CPopup::openSubMenu(CMenuItem* item, bool fromKeys) {
    app->killMenu(this);
    if (!item->subMenu || !item->enabled) return;
    const CPoint at = getPos(true);
    item->subMenu->popup(at.x + width - subMenuOverlap, at.y + itemRect(item, 0).top, fromKeys);
}

void CPopup::executeItem(CMenuItem* item, bool close) {
    if (!item->selectable()) return;
    if (item->kind == menuSub) {
        openSubMenu(item, false);
        return;
    }
    if (item->kind == menuRows) item->tag = subIndex;
    if (close)
        leave();
    else
        item->checked = !item->checked;
    redraw();
    if (item->onChange) (*item->onChange)(item);
}

/// Closes all menus, and takes the keys from the bar that they have come from.
void CPopup::leave() {
    app->killMenu(nullptr);
    const CPopup* root = this;
    while (root->opener) root = root->opener;
    auto* owner = root->outer();
    if (owner && owner->menu && owner->keyCtrl == owner->menu) owner->setKeyCtrl(nullptr);
}

void CPopup::onTimer() {
    if (!visible) {
        app->killTimer(this);
    } else if (scrollDir) {
        scrollBy(scrollDir == dirUp ? -scrollStep : scrollStep);
    } else {
        CMenuItem* item = selected < 0 ? nullptr : getItem(selected);
        if (item && item->subMenu && item->subMenu->visible) return;
        if (item && item->kind == menuSub)
            openSubMenu(item, false);
        else
            app->killMenu(this);
    }
}

bool CPopup::keyDown(int key, int mods) {
    CPopup* root = this;
    while (root->opener) root = root->opener;
    const bool shifted = mods == modShift && key > ' ';
    if ((!mods || shifted) && menuKey(key)) return true;
    if (root->onKeyDown && (*root->onKeyDown)(root, key, mods)) return true;
    return CWin::keyDown(key, mods);
}

bool CPopup::menuKey(int key) {
    CMenuItem* item = selected < 0 ? nullptr : getItem(selected);
    switch (key) {
    case ::keyUp:
        step(-1);
        return true;
    case ::keyDown:
        step(1);
        return true;
    case keyHome:
        selectLine(0);
        return true;
    case keyEnd:
        selectLine(-1);
        return true;
    case keyLeft:
        if (opener) hide();
        return opener;
    case keyRight:
        if (!item || item->kind != menuSub) return false;
        openSubMenu(item, true);
        return true;
    case keyReturn:
        if (item && item->kind == menuSub)
            openSubMenu(item, true);
        else if (item)
            executeItem(item, true);
        return true;
    case ' ':
        if (item && item->keepOpen) executeItem(item, false);
        return true;
    case keyEscape:
        hide();
        return true;
    default:
        if (key > ' ') jumpTo(key);
        return key > ' ';
    }
}

std::vector<CPopup::Line> CPopup::lines() const {
    std::vector<Line> all;
    int index = 0;
    for (const auto* item : items) {
        const int rows = item->kind == menuRows ? item->rowCount : 1;
        for (int row = 0; item->selectable() && row < rows; row++) all.push_back({index, row});
        index++;
    }
    return all;
}

/// Counts on around both ends.
void CPopup::selectLine(int line) {
    const std::vector<Line> all = lines();
    if (all.empty()) return;
    const int count = int(all.size());
    const Line& at = all[size_t((line % count + count) % count)];
    selectItem(at.index, at.sub, true, false);
}

void CPopup::step(int by) {
    int line = 0, current = by > 0 ? -1 : 0;
    for (const Line& at : lines()) {
        if (at.index == selected && at.sub == subIndex) current = line;
        line++;
    }
    selectLine(current + by);
}

/// To the next line that begins with a letter, in a ring.
void CPopup::jumpTo(int letter) {
    const std::string start = utf8Of(uint32_t(letter));
    const auto begins = [&](const Line& at) {
        CMenuItem* item = getItem(at.index);
        const CStr text = item->kind == menuRows ? item->rowText(at.sub) : item->label();
        return beginsWith(text.asChar(), start);
    };
    const auto behind = [&](const Line& at) {
        return at.index > selected || (at.index == selected && at.sub > subIndex);
    };
    const Line* found = nullptr;
    const std::vector<Line> all = lines();
    for (const Line& at : all)
        if (begins(at) && (!found || (behind(at) && !behind(*found)))) found = &at;
    if (found) selectItem(found->index, found->sub, true, false);
}

void CPopup::itemsMouseDown(CObject*, int, int, int) {
    armed = true;
}

void CPopup::itemsMouseMove(CObject*, int x, int y, int) {
    const CPoint at = mousePos();
    armed =
        armed || std::abs(at.x - openedAt.x) > moveRoom || std::abs(at.y - openedAt.y) > moveRoom;
    int index, sub;
    if (face->inside(x, y) && itemAt(y, index, sub)) selectItem(index, sub, false, true);
}

void CPopup::itemsMouseUp(CObject*, int x, int y, int) {
    int index, sub;
    if (!armed || !face->inside(x, y) || !itemAt(y, index, sub)) return;
    CMenuItem* item = getItem(index);
    if (item->selectable()) subIndex = sub;
    executeItem(item, true);
}

/// The pointer follows the selection, so that the two agree.
bool CPopup::itemsWheel(CObject*, int, int, int, int dy, int) {
    step(dy > 0 ? -1 : 1);
    if (selected < 0) return true;
    const CRect at = itemRect(getItem(selected), subIndex);
    const CPoint corner = getPos(true);
    setMousePos(corner.x + width / 2, corner.y + borderSize + (at.top + at.bottom) / 2);
    return true;
}

void CPopup::beginScroll(CObject* sender, int, int, int) {
    scrollDir = tagOf(sender);
    app->addTimer(this, scrollMs, true);
    onTimer();
}

void CPopup::endScroll(CObject*, int, int, int) {
    scrollDir = 0;
    app->killTimer(this);
}

void CPopup::paintGround(CObject*, CGraphic* g, CRect) {
    drawGuiItem(g, clientRect(), &clMenu);
}

void CPopup::paintItems(CObject*, CGraphic* g, CRect) {
    int index = 0;
    for (auto* item : items) paintItem(g, item, index++);
}

void CPopup::paintItem(CGraphic* g, CMenuItem* item, int index) {
    const bool marked = index == selected;
    for (int row = 0; row < (item->kind == menuRows ? item->rowCount : 1); row++) {
        CRect at = itemRect(item, row);
        at = sizeRect(at, 0, -face->top, 0, -face->top);
        if (at.bottom <= 0 || at.top >= face->height) continue;
        if (item->kind == menuSeparator) {
            drawSeparator(g, at.left + 2, at.top + separatorHeight / 2 - 1, at.right - 2);
            continue;
        }
        const bool on = marked && (item->kind != menuRows || row == subIndex);
        const CGuiItem2& look = on ? clMenuSelected : clMenu;
        if (on) drawGuiItem(g, at, &look);
        const int color = item->enabled ? look.textCol : look.symbolCol;
        const CRect textAt = sizeRect(at, checkColumn, 0, 0, 0);
        if (item->checked) drawCheck(g, color, at);
        g->drawText(color, item->kind == menuRows ? item->rowText(row) : item->label(), textAt,
                    textLeft);
        const CStr keys = item->shortcut();
        if (!keys.empty())
            g->drawText(on ? color : look.symbolCol, keys, sizeRect(at, 0, 0, -rightMargin / 2, 0),
                        textRight);
        if (item->kind == menuSub)
            drawArrow(g, color, asRect(at.right - rightMargin, at.top, at.right, at.bottom),
                      dirRight, arrowSize);
    }
}

void CPopup::paintScrollButton(CObject* sender, CGraphic* g, CRect rect) {
    drawArrow(g, clMenu.textCol, rect, tagOf(sender), arrowSize + 1);
}

int CPopup::accessParts() const {
    return int(lines().size());
}

int CPopup::focusedPart() const {
    const std::vector<Line> all = lines();
    for (size_t i = 0; i < all.size(); i++)
        if (all[i].index == selected && all[i].sub == subIndex) return int(i);
    return wholeCtrl;
}

void CPopup::describe(Description& d, int part) const {
    d.role = Role::menu;
    d.name = id.asChar();
    if (part == wholeCtrl) return;
    const Line line = lines()[size_t(part)];
    CMenuItem* item = getItem(line.index);
    const bool ofBlock = item->kind == menuRows;
    d.role = item->kind == menuSub ? Role::menu : item->checked ? Role::menuCheck : Role::menuEntry;
    d.name = ofBlock ? item->rowText(line.sub).asChar() : item->label().asChar();
    d.help = item->shortcut().asChar();
    d.action = "press";
    d.bounds = itemRect(item, line.sub);
    d.set(stateChecked, item->checked);
    d.set(stateSelectable, true);
    d.set(stateSelected, line.index == selected && (!ofBlock || line.sub == subIndex));
}

bool CPopup::pressPart(int part) {
    if (part == wholeCtrl) return false;
    const Line line = lines()[size_t(part)];
    selectItem(line.index, line.sub, true, false);
    executeItem(getItem(line.index), true);
    return true;
}
