#include "shell/LoadDisplay.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Workers.h"
#include "engine/plan/GraphWorkers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"

namespace {

constexpr int margin = 8;
constexpr int ticksApart = 12; ///< about twice a second, so that it can be read
constexpr int mostTold = 999;
constexpr int high = 70, full = 100; ///< percent that are told in colour

int percent(double share) {
    return asMinMax(asRound(share * 100), 0, mostTold);
}

} // namespace

LoadDisplay::LoadDisplay(CWin* owner, CQV* host)
    : CButton(owner, "load", "", 0, 0, 1, 1), qv(host) {
    tabStop = true;
    show({});
}

int LoadDisplay::displayWidth() {
    return textFace({})->textWidth(textOf({full, mostTold, full})) + 2 * margin;
}

CStr LoadDisplay::textOf(const Load& load) {
    return "CPU " + asStr(load.mean) + " %, peak " + asStr(load.worst) + " %   Disk " +
           asStr(load.disk) + " %";
}

LoadDisplay::Load LoadDisplay::present() const {
    const double blockNs = double(qv->frames) / double(qv->rate) * 1e9;
    const WorkTimes& calls = qv->workers->calls;
    const double reads = double(qv->workers->reads.mean);
    constexpr double pauseNs = CDiskThread::pauseMs * 1e6;
    return {percent(double(calls.mean) / blockNs), percent(calls.worst / blockNs),
            percent(reads / (reads + pauseNs))};
}

void LoadDisplay::show(const Load& load) {
    shown = load;
    text = textOf(load);
    spokenName = "Load: " + text;
    hint = "The work for a block takes " + asStr(load.mean) + " % of its time, at worst " +
           asStr(load.worst) + " %; the disk is read " + asStr(load.disk) +
           " % of the time. A press forgets the worst";
    redraw();
}

void LoadDisplay::refresh() {
    if (++ticks < ticksApart) return;
    ticks = 0;
    const Load now = present();
    if (now != shown) show(now);
}

void LoadDisplay::click() {
    qv->workers->calls.forgetWorst();
    show(present());
}

void LoadDisplay::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool touched = isHovered() || hasKeyFocus();
    g->fillRect(colours.panel, rect);
    const int ink = shown.mean >= high || shown.worst >= full ? colours.meter[1]
                    : touched                                 ? colours.text
                                                              : colours.dimText;
    g->drawText(ink, text, sizeRect(rect, margin, 0, -margin, 0), textRight);
    if (touched) g->frameRect(hasKeyFocus() ? colours.accent : colours.frame, rect);
}

void LoadDisplay::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.text = text.asChar();
    d.action = "forget the worst";
}
