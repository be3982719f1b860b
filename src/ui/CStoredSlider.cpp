#include "ui/CStoredSlider.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "ui/ProgramItems.h"

#include <algorithm>

namespace {

constexpr int barHeight = 4, thumbWidth = 4;

} // namespace

double CStoredSlider::along(const DragPoint& point) const {
    return point.at.x - point.anchor.x;
}

double CStoredSlider::travel() const {
    return width - thumbWidth;
}

int CStoredSlider::xOf(double number) const {
    return asRound(shareOf(number) * travel());
}

void CStoredSlider::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    if (typing()) {
        paintTyping(g);
    } else {
        const int middle = height / 2;
        const CRect track = asRect(0, middle - barHeight / 2, width, middle + barHeight / 2);
        g->fillRound(clTrackLed.fillCol, track);
        if (empty()) return;
        const int x = xOf(shownValue()), from = xOf(origin) + (origin > least ? thumbWidth / 2 : 0);
        g->fillRect(colours.accent,
                    asRect(std::min(x, from), track.top, std::max(x, from), track.bottom));
        g->fillRound(held() ? colours.accent : colours.text,
                     asRect(x, 1, x + thumbWidth, height - 1));
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}
