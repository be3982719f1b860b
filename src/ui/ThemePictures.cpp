#include "ui/ThemePictures.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "ui/ProgramItems.h"

namespace {

const CBitmap* pictureOf(const CGuiItem2& item) {
    return item.fill == fillImage ? item.bitmap.get() : nullptr;
}

} // namespace

bool drawTransport(CGraphic* g, TransportField field, CRect rect, bool on) {
    const CBitmap* plain = pictureOf(clTransporter);
    const CBitmap* pushed = on ? pictureOf(clTransporterPushed) : nullptr;
    const CBitmap* picture = pushed ? pushed : plain;
    if (!plain || picture->width < fieldCount) return false;
    const int fieldWidth = picture->width / fieldCount;
    const int w = asMin(fieldWidth, rect.width()), h = asMin(picture->height, rect.height());
    g->render(picture, rect.left + (rect.width() - w) / 2, rect.top + (rect.height() - h) / 2,
              field * fieldWidth + (fieldWidth - w) / 2, (picture->height - h) / 2, w, h);
    drawGuiItem(g, rect, pushed ? &clTransporterPushed : &clTransporter, drawFrame);
    return true;
}

CLogo::CLogo(CWin* owner, int x, int y) : CCtrl(owner, "logo", x, y, 0, pictureHeight()) {
    if (const CBitmap* picture = pictureOf(clLogo)) width = asMin(picture->width, mostWidth);
}

int CLogo::pictureHeight() {
    const CBitmap* picture = pictureOf(clLogo);
    return picture ? asMin(picture->height, mostHeight) : 0;
}

void CLogo::paint(CGraphic* g, CRect rect) {
    if (const CBitmap* picture = pictureOf(clLogo))
        g->render(picture, rect.left, rect.top, 0, 0, rect.width(), rect.height());
}
