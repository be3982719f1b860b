#include "gui/controls/CTree.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CScrollbar.h"

#include <algorithm>

namespace {

constexpr int barSize = 16, iconSize = 16, textGap = 4, boxSize = 9;
constexpr double restShare = 0.6; // how much a choice fades while the focus is elsewhere

/// A square with a minus, or a plus, of a node that can be opened.
void drawBox(CGraphic* g, int color, CRect rect, bool expanded) {
    const int x = rect.left + (rect.width() - boxSize) / 2;
    const int y = rect.top + (rect.height() - boxSize) / 2, middle = boxSize / 2;
    g->frameRect(color, asRect(x, y, x + boxSize, y + boxSize));
    g->fillLine(color, asRect(x + 2, y + middle, x + boxSize - 2, y + middle + 1));
    if (!expanded) g->fillLine(color, asRect(x + middle, y + 2, x + middle + 1, y + boxSize - 2));
}

} // namespace

CTree::CTree(CWin* owner, const CStr& name, int l, int t, int w, int h)
    : CGroup(owner, name, l, t, w, h), root(""),
      bar(new CScrollbar(owner, "scroll", 0, 0, barSize, h)) {
    tabStop = true;
    root.owner = this;
    wire(bar->onChange, new _COnChange<CTree>(this, &CTree::scrolled));
    addControl(bar);
    CTree::resized();
}

CTree::~CTree() {
    root.clear();
    root.owner = nullptr;
    delete onExpanding;
    delete onExecute;
    delete onRightClick;
    delete onDrawIcon;
}

void CTree::layOut(CTreeNode* node, int indent) {
    for (CTreeNode* child : node->children) {
        child->indent = indent;
        child->y = int(lines.size()) * rowHeight;
        lines.push_back(child);
        if (child->expanded) layOut(child, indent + levelIndent);
    }
}

void CTree::update() {
    lines.clear();
    layOut(&root, textGap);
    resized();
}

/// A node is about to be deleted; the layout is made anew by the next `update`.
void CTree::forget(const CTreeNode* node) {
    lines.clear();
    if (current == node) current = nullptr;
    if (anchor == node) anchor = nullptr;
}

void CTree::clearNodes() {
    root.clear();
    update();
}

void CTree::resized() {
    const int room = height - 2, content = int(lines.size()) * rowHeight;
    bar->visible = content > room;
    bar->setBounds(width - 1 - barSize, 1, barSize, room);
    bar->setRange(content, room);
    shownPos = bar->pos;
    redraw();
}

void CTree::scrolled(CObject*) {
    const int dy = shownPos - bar->pos;
    shownPos = bar->pos;
    const CRect room = asRect(1, 1, width - 1 - (bar->visible ? barSize : 0), height - 1);
    scrollArea(room, 0, dy);
    bar->redraw();
}

CTreeNode* CTree::nodeAt(int y) const {
    const int line = (y - 1 + bar->pos) / rowHeight;
    return y >= 1 && line < int(lines.size()) ? lines[size_t(line)] : nullptr;
}

CRect CTree::nodeRect(const CTreeNode* node) const {
    if (lineOf(node) < 0) return {};
    const int y = 1 + node->y - bar->pos;
    return asRect(1, y, width - 1 - (bar->visible ? barSize : 0), y + rowHeight);
}

int CTree::lineOf(const CTreeNode* node) const {
    const auto found = std::find(lines.begin(), lines.end(), node);
    return found == lines.end() ? -1 : int(found - lines.begin());
}

int CTree::linesShown() const {
    return asMax((height - 2) / rowHeight, 1);
}

bool CTree::onBox(const CTreeNode* node, int x) const {
    return node->canExpand() && x >= node->indent && x < node->indent + boxWidth;
}

void CTree::unselectAll(CTreeNode* below) {
    for (CTreeNode* node : below->children) {
        node->selected = false;
        unselectAll(node);
    }
}

CTreeNode* CTree::selectedNode() const {
    const auto found =
        std::find_if(lines.begin(), lines.end(), [](const CTreeNode* n) { return n->selected; });
    return found == lines.end() ? nullptr : *found;
}

void CTree::selectedNodes(ListOf<CTreeNode>* nodes) const {
    for (CTreeNode* node : lines)
        if (node->selected) nodes->add(node);
}

void CTree::select(CTreeNode* node) {
    unselectAll(&root);
    current = anchor = node;
    if (node) node->selected = true;
    for (CTreeNode* at = node ? node->parent : nullptr; at; at = at->parent) at->expanded = true;
    update();
}

void CTree::selectRange(CTreeNode* to) {
    const int a = lineOf(anchor), b = lineOf(to);
    if (a < 0 || b < 0) return;
    unselectAll(&root);
    for (int i = asMin(a, b); i <= asMax(a, b); i++) lines[size_t(i)]->selected = true;
}

void CTree::expcol(CTreeNode* node) {
    node->expanded = !node->expanded;
    if (onExpanding) (*onExpanding)(node);
    if (node->children.empty()) node->expanded = false;
    if (!node->expanded) {
        const bool within = std::any_of(lines.begin(), lines.end(), [node](const CTreeNode* n) {
            return n->selected && n->isBelow(node);
        });
        unselectAll(node);
        if (within) node->selected = true;
        if (current && current->isBelow(node)) current = node;
        if (anchor && anchor->isBelow(node)) anchor = node;
    }
    update();
}

void CTree::nodeChanged() {
    if (current && lineOf(current) >= 0) {
        if (current->y < bar->pos) bar->setPos(current->y);
        const int below = current->y + rowHeight - (height - 2);
        if (below > bar->pos) bar->setPos(below);
    }
    shownPos = bar->pos;
    redraw();
    if (onChange) (*onChange)(this);
}

void CTree::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    win->setKeyCtrl(this);
    narrows = false;
    CTreeNode* node = nodeAt(y);
    if (!node) return;
    if ((btn & modLeft) && onBox(node, x))
        expcol(node);
    else if ((btn & modLeft) && (btn & modDouble)) {
        if (onExecute) (*onExecute)(node);
    } else if (btn & (modLeft | modRight))
        pressNode(node, btn);
}

void CTree::pressNode(CTreeNode* node, int btn) {
    const bool byLeft = btn & modLeft, control = byLeft && (btn & modControl);
    if (multiSelect && byLeft && (btn & modShift) && lineOf(anchor) >= 0) {
        selectRange(node);
    } else if (multiSelect && control) {
        node->selected = !node->selected;
        anchor = node;
    } else {
        narrows = multiSelect && byLeft && node->selected;
        if (!multiSelect || !node->selected) {
            unselectAll(&root);
            node->selected = true;
        }
        anchor = node;
    }
    current = node;
    if (byLeft && !multiSelect) expcol(node);
    nodeChanged();
}

void CTree::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if (!inside(x, y)) return;
    if (narrows && !win->app->dragList && current) {
        narrows = false;
        select(current);
        nodeChanged();
    }
    if ((btn & modRight) && nodeAt(y) && onRightClick) (*onRightClick)(this);
}

bool CTree::contextMenu() {
    if (!current || !onRightClick) return false;
    (*onRightClick)(this);
    return true;
}

bool CTree::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    if (!bar->visible || !dy) return false;
    bar->setPos(bar->pos - dy);
    scrolled(bar);
    return true;
}

void CTree::moveTo(int line, bool extend) {
    if (lines.empty()) return;
    current = lines[size_t(asMinMax(line, 0, int(lines.size()) - 1))];
    if (extend && lineOf(anchor) >= 0) {
        selectRange(current);
    } else {
        unselectAll(&root);
        current->selected = true;
        anchor = current;
    }
    nodeChanged();
}

/// Left closes or goes to the parent, Right opens or goes to the first child.
bool CTree::openKey(int key) {
    if (!current) return false;
    const bool opens = key == keyRight;
    if (opens ? current->canExpand() && !current->expanded : current->expanded) {
        expcol(current);
        nodeChanged();
    } else if (opens && current->expanded) {
        moveTo(lineOf(current) + 1, false);
    } else if (!opens && current->parent != &root) {
        moveTo(lineOf(current->parent), false);
    }
    return true;
}

bool CTree::keyDown(int key, int mods) {
    if (CGroup::keyDown(key, mods)) return true;
    if (mods & ~modShift) return false;
    const int line = lineOf(current), last = int(lines.size()) - 1;
    const bool extend = multiSelect && (mods & modShift);
    switch (key) {
    case ::keyUp:
        moveTo(line - 1, extend);
        return true;
    case ::keyDown:
        moveTo(line + 1, extend);
        return true;
    case keyHome:
        moveTo(0, extend);
        return true;
    case keyEnd:
        moveTo(last, extend);
        return true;
    case keyPageUp:
        moveTo(line - linesShown(), extend);
        return true;
    case keyPageDown:
        moveTo(line + linesShown(), extend);
        return true;
    case keyLeft:
    case keyRight:
        return openKey(key);
    case keyReturn:
        if (!current || !onExecute) return false;
        (*onExecute)(current);
        return true;
    default:
        return false;
    }
}

void CTree::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, rect, &clTree);
    {
        const ClipScope inner(g, sizeRect(rect, 1, 1, -1, -1));
        const int first = asMax(bar->pos / rowHeight, 0), shown = linesShown() + 2;
        for (int i = first; i < asMin(first + shown, int(lines.size())); i++)
            paintNode(g, lines[size_t(i)]);
    }
    CGroup::paint(g, rect);
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, rect);
}

/// On a surface that begins inside the frame.
void CTree::paintNode(CGraphic* g, CTreeNode* node) {
    const CRect at = sizeRect(nodeRect(node), -1, -1, -1, -1);
    const bool strong = node->selected && hasKeyFocus();
    if (strong)
        drawGuiItem(g, at, &clTreeSelected, drawBackground);
    else if (node->selected)
        g->fillRect(fadeCol(clTreeSelected.fillCol, clTree.fillCol, restShare), at);
    const CGuiItem2& look = strong ? clTreeSelected : clTree;
    int x = node->indent - 1;
    if (node->canExpand())
        drawBox(g, look.symbolCol, asRect(x, at.top, x + boxWidth, at.bottom), node->expanded);
    x += boxWidth + textGap;
    if (onDrawIcon) {
        const int top0 = at.top + (rowHeight - iconSize) / 2;
        (*onDrawIcon)(node, g, asRect(x, top0, x + iconSize, top0 + iconSize));
        x += iconSize + textGap;
    }
    g->drawText(look.textCol, node->text, asRect(x, at.top, at.right - textGap, at.bottom),
                textLeft);
}

int CTree::accessParts() const {
    return int(lines.size());
}

int CTree::partAround(int part) const {
    return lineOf(lines[size_t(part)]->parent); // the root is no line
}

int CTree::focusedPart() const {
    return lineOf(current);
}

void CTree::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::tree : Role::treeRow;
    if (part == wholeCtrl) return;
    const CTreeNode* node = lines[size_t(part)];
    d.name = node->text.asChar();
    d.action = node->canExpand() ? (node->expanded ? "close" : "open") : "choose";
    d.bounds = nodeRect(node);
    d.set(stateShowing, d.has(stateShowing) && d.bounds.top >= 0 && d.bounds.bottom <= height);
    d.set(stateSelectable, true);
    d.set(stateSelected, node->selected);
    d.set(stateExpandable, node->canExpand());
    d.set(stateExpanded, node->expanded);
}

bool CTree::pressPart(int part) {
    if (part == wholeCtrl) return false;
    CTreeNode* node = lines[size_t(part)];
    win->setKeyCtrl(this);
    const bool again = node == current;
    moveTo(part, false);
    if (node->canExpand())
        expcol(node);
    else if (again && onExecute)
        (*onExecute)(node);
    redraw();
    return true;
}
