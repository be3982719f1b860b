// Drag and drop between the windows of the program.
#include "gui/CApp.h"

#include "gui/CWin.h"
#include "gui/FloatWins.h"
#include "gui/Selections.h"
#include "gui/XConnection.h"

namespace {
constexpr int besidePointer = 8, belowPointer = 20;

CPoint minus(CPoint a, CPoint b) {
    return asPoint(a.x - b.x, a.y - b.y);
}

/// With a point of the screen, which may lie outside the control.
void tellDragOver(CCtrl* ctrl, CPoint pointer, int btn) {
    if (!ctrl->onDragOver) return;
    const CPoint at = minus(minus(pointer, ctrl->win->getPos(true)), ctrl->win->controlPos(ctrl));
    (*ctrl->onDragOver)(ctrl, at.x, at.y, btn);
}

/// The control of a window that would take a drop at a point of the screen; null when none would.
CCtrl* dropTarget(CWin* win, CPoint pointer) {
    if (!win) return nullptr;
    const CPoint at = minus(pointer, win->getPos(true));
    CCtrl* ctrl = win->controlAtPos(at.x, at.y);
    while (ctrl && ctrl->category != catWin && !ctrl->onDrop) ctrl = ctrl->parent;
    return ctrl && ctrl->category != catWin ? ctrl : nullptr;
}

} // namespace

void CApp::startDrag(CCtrl* ctrl) {
    if (dragList) endDrag();
    dragList = new ListOf<CDropItem>;
    dragCtrl = ctrl;
}

void CApp::endDrag() {
    if (onEndDrag && dragList) (*onEndDrag)(this);
    if (dragList) deleteAll(*dragList);
    delete dragList;
    dragList = nullptr;
    dragCtrl = nullptr;
    hideDragWin();
}

void CApp::hideDragWin() {
    if (dragWin && dragWin->visible) dragWin->hide();
}

bool CApp::hasDragObj(const CObject* object) const {
    if (!dragList) return false;
    for (const CDropItem* item : *dragList)
        if (item->object == object) return true;
    return false;
}

bool CApp::hasDragType(int dropType) const {
    if (!dragList) return false;
    for (const CDropItem* item : *dragList)
        if (item->type == dropType) return true;
    return false;
}

bool CApp::dragHasObject(int objCategory, int objType) const {
    if (!dragList) return false;
    for (const CDropItem* item : *dragList)
        if (item->object && item->object->asType(objCategory, objType)) return true;
    return false;
}

void CApp::dragStep(int btn) {
    const CPoint pointer = mousePos();
    dragOver(winAtPos(pointer.x, pointer.y), pointer, btn);
    if (dragList && !dragList->empty()) moveDragWin();
}

bool CApp::dragOver(CWin* under, CPoint pointer, int btn) {
    CCtrl* target = dropTarget(under, pointer);
    CCtrl* former = dragOverCtrl;
    dragOverCtrl = nullptr;
    if (former && former != target) tellDragOver(former, pointer, btn);
    if (target && target->onDragOver) {
        dragOverCtrl = target;
        tellDragOver(target, pointer, btn);
    }
    return target || (under && (under->onDrop || onStrayDrop));
}

void CApp::moveDragWin() {
    const CPoint pointer = mousePos();
    if (!dragWin) dragWin = std::make_unique<CDragWin>(this, mainWin);
    dragWin->setPos(pointer.x + besidePointer, pointer.y + belowPointer);
    if (dragWin->visible) return;
    dragWin->setText(dragList->first()->id);
    dragWin->show(false);
}

void CApp::drop(int btn) {
    const CPoint pointer = mousePos();
    dropOn(winAtPos(pointer.x, pointer.y), pointer, btn);
}

void CApp::dropOn(CWin* under, CPoint pointer, int btn) {
    dragCtrl = dragOverCtrl = nullptr;
    hideDragWin();
    if (dragList && under) {
        under->setFocus(true);
        const CPoint at = minus(pointer, under->getPos(true));
        if (!under->dropAt(at.x, at.y, btn) && onStrayDrop) (*onStrayDrop)(this);
    }
    endDrag();
}
