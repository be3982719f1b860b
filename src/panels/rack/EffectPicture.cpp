#include "panels/rack/EffectPicture.h"

#include "common/fx/CFX.h"
#include "engine/EffectSettings.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"

namespace {

constexpr int margin = 8, scaleHeight = 14;
constexpr double lineWidth = 2.0, thinWidth = 1.0, barWidth = 2.0, fillAlphaShare = 0.14;

} // namespace

EffectPicture::EffectPicture(CWin* owner, CFX* of, std::function<bool()> lives,
                             std::function<double()> beats)
    : CCtrl(owner, "picture", 0, 0, usualWidth, usualHeight), fx(of), alive(std::move(lives)),
      tempo(std::move(beats)) {
    refresh();
}

std::vector<double> EffectPicture::numbers() const {
    std::vector<double> all = {tempo()};
    for (const Setting& s : settingsOf(*fx)) all.push_back(s.kind.get(fx, s.index)[0]);
    return all;
}

bool EffectPicture::refresh() {
    if (!alive()) return false;
    std::vector<double> now = numbers();
    if (now == shown) return false;
    shown = std::move(now);
    shape = shaper.shapeOf(*fx, tempo());
    redraw();
    return true;
}

void EffectPicture::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.window, clientRect());
    g->frameRound(colours.frame, clientRect());
    const double wide = width - 2 * margin;
    const double high = height - 2 * margin - (shape.to.empty() ? 0 : scaleHeight);
    const auto x = [&](double share) { return margin + share * wide; };
    const auto y = [&](double share) { return margin + (1.0 - share) * high; };
    for (const EffectShape::Line& line : shape.lines) {
        CPath path;
        for (size_t i = 0; i < line.points.size(); i++) {
            const CPath::Point& p = line.points[i];
            i ? path.lineTo(x(p.x), y(p.y)) : path.moveTo(x(p.x), y(p.y));
        }
        const int colour = line.second ? colours.dimText : colours.accent;
        strokePath(g, path, line.second || !shape.bars.empty() ? thinWidth : lineWidth, colour);
        if (line.second || !shape.bars.empty()) continue;
        path.lineTo(x(line.points.back().x), y(0.0));
        path.lineTo(x(line.points.front().x), y(0.0));
        path.close();
        fillPath(g, path, colour, fillAlphaShare);
    }
    for (const EffectShape::Bar& bar : shape.bars) {
        CPath path;
        path.moveTo(x(bar.x), y(0.5));
        path.lineTo(x(bar.x), y(0.5 + bar.height));
        strokePath(g, path, barWidth, bar.second ? colours.dimText : colours.accent);
    }
    const TextScope small(g, {.size = TextSize::small});
    const CRect scale = asRect(margin, height - scaleHeight - 2, width - margin, height - 2);
    g->drawText(colours.dimText, shape.from, scale, textLeft);
    g->drawText(colours.dimText, shape.to, scale, textRight);
}

void EffectPicture::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = shape.spoken.asChar();
}
