#include "panels/plugins/ParamRow.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ParamUnit.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "ui/ParamMenu.h"

namespace {

constexpr int gap = 8, thumbWidth = 4, barHeight = 4;
constexpr int nameShare = 36, valueShare = 28; // percent of the width

} // namespace

ParamRow::ParamRow(CWin* owner, Workspace& workspace, CComp& of, int number)
    : CStoredCtrl(owner, "parameter " + asStr(number), of.host->values.get(), 0, 0, 1, usualHeight),
      name(of.paramName(number)), comp(of), param(number) {
    spokenName = name;
    usual = double(of.param(number));
    value = [this] { return parameterOf(&comp, param); };
    text = [this] { return comp.paramText(param); };
    typedValue = [](double percent) { return double(percentUnit.share(percent)); };
    menu = [this, &workspace](CPopup* popup) {
        addParamItems(
            popup, workspace,
            [this](bool) {
                return ParamRef{&comp, param};
            },
            &comp);
    };
    hint = name + ": drag, turn the wheel with Ctrl, or type percent; the right button for more";
    refresh();
}

bool ParamRow::refresh() {
    const bool moved = CStoredCtrl::refresh();
    const CStr now = comp.paramText(param);
    if (now == shownText) return moved;
    shownText = now;
    redraw();
    return true;
}

void ParamRow::describe(Description& d, int part) const {
    CStoredCtrl::describe(d, part);
    d.text = shownText.asChar();
}

CRect ParamRow::track() const {
    const int from = width * nameShare / 100, to = width - width * valueShare / 100;
    return asRect(from + gap, 0, to - gap, height);
}

double ParamRow::travel() const {
    return track().width() - thumbWidth;
}

double ParamRow::along(const DragPoint& point) const {
    return point.at.x - point.anchor.x;
}

void ParamRow::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(held() ? colours.raised : colours.panel, clientRect());
    const CRect way = track();
    g->drawText(colours.text, name, asRect(gap, 0, way.left - gap, height), textLeft);
    g->drawText(colours.dimText, shownText, asRect(way.right + gap, 0, width - gap, height),
                textLeft);
    if (typing()) {
        paintTyping(g, way);
    } else {
        const int middle = height / 2, x = way.left + asRound(shareOf(shownValue()) * travel());
        const CRect line =
            asRect(way.left, middle - barHeight / 2, way.right, middle + barHeight / 2);
        g->fillRound(colours.frame, line);
        g->fillRound(colours.accent, asRect(line.left, line.top, x + thumbWidth / 2, line.bottom));
        g->fillRound(held() ? colours.accent : colours.text,
                     asRect(x, 3, x + thumbWidth, height - 3));
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, clientRect());
}
