#include "ui/CSpectrum.h"

#include "base/Numbers.h"
#include "common/fx/CDFT.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "ui/ProgramItems.h"

#include <algorithm>

namespace {

constexpr int pictureWidth = 16, pictureHeight = 128;
constexpr int lamp = 3; // rows of one lamp of a stripe, the last one dark
constexpr int frame = 1;
constexpr double fall = 0.025; // of a band, every tick

} // namespace

BandStripes::BandStripes() = default;
BandStripes::~BandStripes() = default;

void BandStripes::setColors(int paper, int low, int high, int height) {
    const int wanted[] = {paper, low, high, height};
    if (bitmap && std::ranges::equal(wanted, made)) return;
    std::ranges::copy(wanted, made);
    if (!bitmap) bitmap = std::make_unique<CBitmap>(pictureWidth, pictureHeight);
    CGraphic* g = bitmap->graphic.get();
    g->fillRect(paper, bitmap->getRect());
    for (int y = 0; y < asMin(height, pictureHeight); y++)
        if (y % lamp != lamp - 1)
            g->fillRect(fadeCol(low, high, double(y) / height),
                        asRect(0, pictureHeight - 1 - y, pictureWidth, pictureHeight - y));
}

int BandStripes::stripe(double magnitude, int height) {
    return asMinMax(asRound(height * 2 * magnitude), 0, height);
}

void BandStripes::drawBands(CGraphic* g, CRect rect, const std::vector<int>& heights) const {
    if (!bitmap) return;
    int x = rect.left;
    for (const int height : heights) {
        const int tall = asMin(height, asMin(rect.height(), pictureHeight));
        g->render(bitmap.get(), x, rect.bottom - tall, 0, pictureHeight - tall,
                  CSpectrum::bandStep - 1, tall);
        x += CSpectrum::bandStep;
    }
}

CSpectrum::CSpectrum(CWin* owner, int l, int t, int h, CQV* host)
    : CCtrl(owner, "spectrum", l, t, CDFT::defaultSize * bandStep + 2 * frame + 1, h), qv(host) {
    hint = "Spectrum of the output";
}

void CSpectrum::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    drawGuiItem(g, clientRect(), &clFFT);
    g->frameRect(colours.frame, clientRect());
    const CRect room = sizeRect(clientRect(), frame + 1, frame, -frame, -frame);
    stripes.setColors(clFFT.fillCol, colours.meter[0], colours.meter[1], room.height());
    stripes.drawBands(g, room, shownHeights);
}

std::vector<int> CSpectrum::heights() const {
    std::vector<int> list;
    for (const double magnitude : qv->dft->bands)
        list.push_back(BandStripes::stripe(magnitude, height - 2 * frame));
    return list;
}

void CSpectrum::refresh() {
    const bool on = shown();
    qv->spectrumOn = on;
    if (!on) return;
    std::vector<int> now = heights();
    if (now != shownHeights) {
        shownHeights = std::move(now);
        redraw();
    }
    for (double& magnitude : qv->dft->bands) magnitude = std::max(magnitude - fall, 0.0);
}

void CSpectrum::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Spectrum";
}
