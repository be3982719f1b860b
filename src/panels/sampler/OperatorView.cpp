#include "panels/sampler/OperatorView.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Shapes.h"
#include "instruments/COSCSound.h"
#include "instruments/OperatorWave.h"

namespace {

constexpr int gap = 8, margin = 8, titleHeight = 16, mostWide = 320;
constexpr double lineWidth = 1.5;

} // namespace

OperatorView::OperatorView(CWin* owner, const COSCSound* of, std::function<bool()> lives)
    : CCtrl(owner, "operators", 0, 0, 1, usualHeight), sound(of), alive(std::move(lives)) {
    refresh();
}

bool OperatorView::refresh() {
    if (!alive()) return false;
    const std::array<float, 7> now = {
        sound->feed1,   sound->feed2,   sound->phaseMod,         sound->coarse2,
        sound->oscRing, sound->modRing, float(int(sound->pmMul))};
    if (now == shown) return false;
    shown = now;
    OperatorWaves drawn = operatorWaves(*sound);
    modulator = std::move(drawn.modulator);
    carrier = std::move(drawn.carrier);
    redraw();
    return true;
}

void OperatorView::paintWave(CGraphic* g, const CRect& at, const char* title,
                             const std::vector<float>& wave) const {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.window, at);
    g->frameRound(colours.frame, at);
    {
        const TextScope small(g, {.size = TextSize::small});
        g->drawText(colours.dimText, title,
                    asRect(at.left + margin, at.top, at.right - margin, at.top + titleHeight),
                    textLeft);
    }
    const double from = at.top + titleHeight, high = at.bottom - margin - from;
    const double middle = from + high / 2, wide = at.right - at.left - 2 * margin;
    g->fillLine(colours.frame,
                asRect(at.left + margin, int(middle), at.right - margin, int(middle) + 1));
    CPath path;
    for (size_t i = 0; i < wave.size(); i++) {
        const double x = at.left + margin + wide * double(i) / double(wave.size() - 1);
        const double y = middle - double(wave[i]) * high / 2;
        i ? path.lineTo(x, y) : path.moveTo(x, y);
    }
    strokePath(g, path, lineWidth, colours.accent);
}

void OperatorView::paint(CGraphic* g, CRect) {
    const int each = std::min(mostWide, (width - gap) / 2);
    paintWave(g, asRect(0, 0, each, height), "Modulator, which bends", modulator);
    paintWave(g, asRect(each + gap, 0, 2 * each + gap, height), "Carrier, which is heard", carrier);
}

void OperatorView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Waves of modulator and carrier";
}
