#include "ui/CProgressBar.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"

CRect CProgressBar::filled() const {
    return asRect(1, 1, 1 + asRound(double(done) * (width - 2)), height - 1);
}

void CProgressBar::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    g->fillRect(colours.accent, filled());
    g->frameRect(colours.frame, clientRect());
}

void CProgressBar::setDone(float share) {
    const CRect before = filled();
    done = fLimit(share, 0.0f, 1.0f);
    if (filled() != before && shown()) win->app->drawNow(win, this);
}

void CProgressBar::describe(Description& d, int) const {
    d.role = Role::progress;
    if (d.name.empty()) d.name = "Progress";
    d.range = Description::Range{double(done), 0.0, 1.0, 0.01};
}
