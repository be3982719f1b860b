#include "ui/CMeter.h"

#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float lowestDb = -60.0f;
constexpr float highDb = -9.0f; ///< from here on the second colour
constexpr float overDb = -0.5f;
constexpr float marksDb[] = {-12.0f, 0.0f};

/// Place of a level on the scale, 0 to 1.
float onScale(float amplitude) {
    if (!(amplitude > 0.0f)) return 0.0f;
    return fLimit(1.0f - 20.0f * std::log10(amplitude) / lowestDb, 0.0f, 1.0f);
}

float dbOnScale(float db) {
    return 1.0f - db / lowestDb;
}

} // namespace

CMeter::CMeter(CWin* owner, int l, int t, int w, int h)
    : CCtrl(owner, "meter", l, t, w, h), item(&clMeter) {
}

CMeter::Level CMeter::levelOf(float peak, float hold) const {
    return {asRound(double(onScale(peak)) * length()), asRound(double(onScale(hold)) * length())};
}

int CMeter::placeOf(float db) const {
    return asRound(double(fLimit(dbOnScale(db), 0.0f, 1.0f)) * length());
}

CRect CMeter::stretch(int from, int to, int near, int far) const {
    return vertical ? asRect(near, height - to, far, height - from) : asRect(from, near, to, far);
}

void CMeter::paintBar(CGraphic* g, int from, int to, const Level& level) const {
    const CPalette& colours = win->app->gui->palette;
    const int high = placeOf(highDb), over = placeOf(overDb);
    const int edges[] = {0, high, over, length()};
    for (int i = 0; i < 3; i++)
        if (level.bar > edges[i])
            g->fillRect(colours.meter[i],
                        stretch(edges[i], std::min(level.bar, edges[i + 1]), from, to));
    if (level.hold > 1) {
        const int mark = item->caps & capSymbol ? item->symbolCol : item->textCol;
        const int colour = level.hold > over ? colours.meter[2] : mark;
        g->fillRect(colour, stretch(level.hold - 2, level.hold, from, to));
    }
}

void CMeter::paint(CGraphic* g, CRect) {
    drawGuiItem(g, clientRect(), item);
    const int across = vertical ? width : height, middle = across / 2;
    paintBar(g, 0, middle, shownL);
    paintBar(g, vertical ? middle : middle + 1, across, shownR);
    if (vertical)
        for (const float db : marksDb) {
            const int at = placeOf(db);
            g->fillLine(win->app->gui->palette.dimText, stretch(at - 1, at, 0, across));
        }
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, clientRect());
}

void CMeter::mouseDown(int, int, int btn) {
    if (btn & modLeft) clearPeak();
}

bool CMeter::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || (key != keyReturn && key != keyDelete)) return false;
    clearPeak();
    return true;
}

void CMeter::clearPeak() {
    if (!channel) return;
    channel->holdL = 0.0f;
    channel->holdR = 0.0f;
}

bool CMeter::refresh() {
    const Level l = channel ? levelOf(channel->peakL, channel->holdL) : Level();
    const Level r = channel ? levelOf(channel->peakR, channel->holdR) : Level();
    if (l == shownL && r == shownR) return false;
    shownL = l;
    shownR = r;
    redraw();
    return true;
}

void CMeter::describe(Description& d, int) const {
    d.role = Role::meter;
    if (d.name.empty()) d.name = "Level";
}
