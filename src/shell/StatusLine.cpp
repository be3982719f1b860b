#include "shell/StatusLine.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"

namespace {

constexpr int margin = 8;

}

StatusLine::StatusLine(CWin* owner, int t, int w) : CCtrl(owner, "status", 0, t, w, lineHeight) {
    setAlign(alignWidth | alignBottom, 0, 0);
}

void StatusLine::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillRect(colours.frame, asRect(0, 0, width, 1));
    const int split = width - margin - g->textWidth(device);
    g->drawText(colours.dimText, text, asRect(margin, 1, split - margin, height), textLeft);
    g->drawText(warning ? colours.solo : colours.dimText, device,
                asRect(split, 1, width - margin, height), textRight);
}

void StatusLine::setText(const CStr& newText) {
    if (newText == text) return;
    text = newText;
    redraw();
}

void StatusLine::setDevice(const CStr& newText, bool warns) {
    if (newText == device && warns == warning) return;
    warning = warns;
    device = newText;
    redraw();
}
