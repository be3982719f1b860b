#include "mixer/LoadLabel.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"

namespace {

constexpr double highShare = 0.5; ///< of a block, that is told in colour
constexpr double leastMs = 0.05;  ///< of a delay that is told

CStr percentText(double share) {
    return asStrFormat(share * 100, share < 0.1 ? "%.1f %%" : "%.0f %%");
}

} // namespace

LoadLabel::LoadLabel(CWin* owner) : CCtrl(owner, "stripload", 0, 0, 1, 1) {
    tabStop = true;
    hooverable = true;
    show({}, 0.0, 0.0);
}

void LoadLabel::show(GraphProbe::Work work, double blockNs, double delayMs) {
    share = blockNs > 0.0 ? double(work.mean) / blockNs : 0.0;
    const double worst = blockNs > 0.0 ? work.worst / blockNs : 0.0;
    const CStr text = percentText(share);
    hint = "The work for this strip takes " + text + " of a block, at worst " + percentText(worst);
    if (delayMs >= leastMs) hint += ", and " + asStrFormat(delayMs, "%.1f") + " ms";
    if (text == shown) return;
    shown = text;
    redraw();
}

void LoadLabel::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(share >= highShare ? colours.meter[1] : colours.dimText, shown, rect, 0);
    if (hasKeyFocus()) g->frameRound(colours.accent, rect);
}

void LoadLabel::describe(Description& d, int) const {
    d.role = Role::label;
    d.text = shown.asChar();
}
