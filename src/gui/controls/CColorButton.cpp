#include "gui/controls/CColorButton.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/dialogs/CColourWin.h"

#include <cstdio>

CColorButton::CColorButton(CWin* owner, const CStr& name, int pixel, int l, int t, int w, int h)
    : CButton(owner, name, "", l, t, w, h), colour(pixel) {
}

CColorButton::~CColorButton() {
    delete onReplace;
}

void CColorButton::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool marked = enabled && (isHovered() || hasKeyFocus());
    int r = 0, green = 0, b = 0;
    char code[16];
    asRGB(colour, &r, &green, &b);
    std::snprintf(code, sizeof code, "#%02x%02x%02x", unsigned(r) & 255, unsigned(green) & 255,
                  unsigned(b) & 255);
    g->fillRect(colour, rect);
    g->frameRect(marked ? colours.accent : colours.frame, rect);
    g->drawText(textOn(colour), code, rect, 0);
}

void CColorButton::mouseUp(int x, int y, int btn) {
    CButton::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) replace();
}

bool CColorButton::ask(const CStr& title, int& chosen) {
    CColourWin dialog(win, title, colour);
    dialog.showModal();
    chosen = dialog.colour;
    return dialog.result && chosen != colour;
}

void CColorButton::click() {
    int chosen;
    if (!ask("Colour", chosen)) return;
    colour = chosen;
    redraw();
    if (onChange) (*onChange)(this);
}

void CColorButton::replace() {
    if (onReplace && ask("Replace everywhere", replacement)) (*onReplace)(this);
}

void CColorButton::describe(Description& d, int part) const {
    CButton::describe(d, part);
    int r, g, b;
    asRGB(colour, &r, &g, &b);
    constexpr int digits = 7;
    char code[digits + 1];
    std::snprintf(code, sizeof code, "#%02x%02x%02x", unsigned(r & 0xff), unsigned(g & 0xff),
                  unsigned(b & 0xff));
    d.text = code;
}
