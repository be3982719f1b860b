#pragma once

#include "gui/CCtrl.h"

#include <memory>
#include <vector>

class CBitmap;
class CGraphic;
class CQV;

/// The stripes that the bands of a spectrum are drawn with, as a picture of 16 by 128 pixels.
class BandStripes {
public:
    BandStripes();
    ~BandStripes();
    BandStripes(const BandStripes&) = delete;
    BandStripes& operator=(const BandStripes&) = delete;

    /// From the quiet to the loud end, `height` pixels above it, on the colour of `paper`.
    void setColors(int paper, int low, int high, int height);
    /// Draws a stripe for each band, from the bottom of the rectangle up, one every 8 pixels.
    void drawBands(CGraphic* g, CRect rect, const std::vector<int>& heights) const;
    /// Height of a band's stripe in pixels: twice its magnitude, at most `height`.
    static int stripe(double magnitude, int height);

private:
    std::unique_ptr<CBitmap> bitmap;
    int made[4] = {}; ///< what it was made for
};

/// The spectrum of the master, which rises at once and falls with the interface's tick. It is
/// worked out only while it can be seen; the option "dft" takes it away.
class CSpectrum : public CCtrl {
public:
    static constexpr int bandStep = 8; ///< pixels from band to band

    CSpectrum(CWin* win, int left, int top, int height, CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    /// Takes the present bands, asks for a repaint if that shows, and lets them fall.
    void refresh();
    void describe(Description& d, int part) const override;

private:
    std::vector<int> heights() const;

    CQV* qv;
    BandStripes stripes;
    std::vector<int> shownHeights;
};
