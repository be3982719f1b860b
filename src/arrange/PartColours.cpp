#include "arrange/PartColours.h"

#include "gui/Colours.h"
#include "gui/Palette.h"

namespace {

constexpr double bodyShare = 0.26, headerShare = 0.85, outlineShare = 0.7, mutedShare = 0.35;
constexpr double markShare = 0.25, darkerMark = 0.35; ///< to white, and to black on a light ground
constexpr double peakShare = 0.55, legibleStep = 0.1;

/// Black is taken whole: on greys in the middle no softer one is legible.
int textOver(int ground) {
    const int white = hexColor(0xffffff), black = hexColor(0);
    return contrast(white, ground) > contrast(black, ground) ? white : black;
}

/// The colour brought nearer to white or black until it stands out.
int standingOut(int colour, int ground) {
    const int towards = textOn(ground);
    int found = colour;
    for (double share = legibleStep; share <= 1; share += legibleStep) {
        if (contrast(found, ground) >= PartColours::leastContrast) break;
        found = fadeCol(colour, towards, share);
    }
    return found;
}

} // namespace

PartColours partColours(const CPalette& palette, int own, bool heard) {
    const bool light = textOn(palette.window) != hexColor(0xffffff);
    const int strong =
        light ? fadeCol(own, hexColor(0), darkerMark) : fadeCol(own, hexColor(0xffffff), markShare);
    const int body = fadeCol(palette.window, own, bodyShare);
    const int mark = standingOut(strong, body);
    const auto shown = [&](int colour) {
        return heard ? colour : fadeCol(palette.window, colour, mutedShare);
    };
    const int header = shown(fadeCol(palette.window, own, headerShare));
    return {shown(body),
            header,
            shown(fadeCol(palette.window, mark, outlineShare)),
            shown(mark),
            shown(fadeCol(body, mark, mutedShare)),
            shown(fadeCol(body, mark, peakShare)),
            textOver(header)};
}
