#include "mixer/ValueBar.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"

#include <algorithm>

CStr fittedFigure(const CStr& text, int width) {
    const TextFace* face = textFace({.size = TextSize::small});
    if (face->textWidth(text) <= width) return text;
    const std::string whole = text.asChar();
    return CStr(whole.substr(0, whole.find(' ')).c_str());
}

ValueBar::ValueBar(CWin* owner, const char* name, ValueDoor* through)
    : CStoredCtrl(owner, name, through, 0, 0, 1, 1) {
}

double ValueBar::along(const DragPoint& point) const {
    return point.at.x - point.anchor.x;
}

double ValueBar::travel() const {
    return width;
}

void ValueBar::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    constexpr int margin = 4, valueRoom = 34;
    const int ground = fadeCol(colours.panel, colours.window, 0.6);
    g->fillRound(ground, clientRect());
    const int from = asRound(shareOf(origin) * width), to = asRound(shareOf(shownValue()) * width);
    const int tint = fadeCol(ground, colours.accent, held() ? 0.6 : 0.42);
    if (from != to)
        g->fillRect(tint, asRect(std::min(from, to), 1, std::max(from, to), height - 1));
    if (origin > least) g->fillLine(colours.frame, asRect(from, 1, from + 1, height - 1));
    const TextScope small(g, {.size = TextSize::small});
    const bool figures = width > 2 * valueRoom;
    const TextFace* face = textFace({.size = TextSize::small});
    const bool moved = alwaysTold || shownValue() != origin;
    const int room = width - 2 * margin - (figures && moved ? valueRoom : 0);
    g->drawText(moved ? colours.text : colours.dimText, face->shortened(label, room),
                sizeRect(clientRect(), margin, 0, -margin, 0), textLeft);
    if (figures && moved)
        g->drawText(colours.text, fittedFigure(told(), valueRoom),
                    sizeRect(clientRect(), margin, 0, -margin, 0), textRight);
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
    if (typing()) paintTyping(g);
}
