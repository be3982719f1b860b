#include "gui/CCanvas.h"

#include "gui/CGraphic.h"

CRect CCanvas::inView() const {
    return sizeRect(clientRect(), scrollX, scrollY, scrollX, scrollY);
}

void CCanvas::scrollTo(int x, int y) {
    const int dx = scrollX - x, dy = scrollY - y;
    scrollX = x;
    scrollY = y;
    if (dx || dy) scrollArea(clientRect(), dx, dy);
}

void CCanvas::contentChanged(CRect part) {
    redraw(sizeRect(part, -scrollX, -scrollY, -scrollX, -scrollY));
}

void CCanvas::paint(CGraphic* g, CRect) {
    g->originX -= scrollX;
    g->originY -= scrollY;
    paintContent(g, intersect(g->asked(), inView()));
    g->originX += scrollX;
    g->originY += scrollY;
}
