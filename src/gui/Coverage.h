#pragma once

#include "base/Geometry.h"
#include "gui/Outlines.h"

#include <vector>

/// How much of each pixel of an area lies inside outlines: the exact share. Device pixels.
class Coverage {
public:
    explicit Coverage(const CRect& area);
    void addOutline(const OutlinePoints& corners); ///< closed by itself
    /// The shares of a row of the area, 0 to 1. What is enclosed twice counts once, or, by the
    /// even-odd rule, not at all.
    const std::vector<float>& row(int y, bool evenOdd);

private:
    void addEdge(RenderTarget::Point from, RenderTarget::Point to);
    void addRow(float* cells, double from, double to, double part) const;

    CRect area;
    std::vector<float> changes; ///< of the share, from pixel to pixel; two more than a row has
    std::vector<float> shares;
};
