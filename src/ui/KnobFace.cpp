#include "ui/KnobFace.h"

#include "gui/Colours.h"
#include "gui/Palette.h"
#include "gui/Shapes.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;
constexpr double sweep = 0.75 * pi, up = -0.5 * pi; ///< of the ring to either side of its top
constexpr double ringWidth = 2.5, handWidth = 2.0;
constexpr double ringGap = 3.5; ///< between the middles of ring and body's edge
constexpr double handFrom = 2.0, handGap = 4.0;
constexpr double movedGap = 4.0, movedWidth = 1.5, dotRadius = 2.5; ///< beyond the ring's middle
constexpr double hoverShare = 0.2, bodyShare = 0.08;

double angleOf(double share) {
    return up + (2.0 * std::clamp(share, 0.0, 1.0) - 1.0) * sweep;
}

void fillDot(CGraphic* g, double x, double y, double radius, int colour) {
    CPath dot;
    dot.arc(x, y, radius, 0, 2 * pi);
    dot.close();
    fillPath(g, dot, colour);
}

} // namespace

void KnobFace::paintMoved(CGraphic* g, const CPalette& colours) const {
    const double around = radius + movedGap;
    CPath reach;
    reach.arc(x, y, around, angleOf(movedFrom), angleOf(movedTo));
    strokePath(g, reach, movedWidth, colours.meter[1]);
    if (now < 0.0) return;
    const double at = angleOf(now);
    fillDot(g, x + std::cos(at) * around, y + std::sin(at) * around, dotRadius, colours.meter[1]);
}

void KnobFace::paint(CGraphic* g, const CPalette& colours) const {
    if (movedTo > movedFrom) paintMoved(g, colours);
    CPath ring;
    ring.arc(x, y, radius, up - sweep, up + sweep);
    strokePath(g, ring, ringWidth, clTrackLed.fillCol);
    const double at = angleOf(share), from = angleOf(origin);
    if (enabled && at != from) {
        CPath turned;
        turned.arc(x, y, radius, std::min(from, at), std::max(from, at));
        strokePath(g, turned, ringWidth, colours.accent);
    }
    fillDot(g, x, y, radius - ringGap,
            held ? fadeCol(colours.raised, colours.accent, hoverShare)
                 : fadeCol(colours.raised, colours.text, bodyShare));
    CPath hand;
    hand.moveTo(x + std::cos(at) * handFrom, y + std::sin(at) * handFrom);
    hand.lineTo(x + std::cos(at) * (radius - handGap), y + std::sin(at) * (radius - handGap));
    strokePath(g, hand, handWidth,
               held      ? colours.accent
               : enabled ? colours.text
                         : colours.dimText);
}
