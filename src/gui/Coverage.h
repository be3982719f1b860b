#pragma once

#include "base/Geometry.h"
#include "gui/Outlines.h"

#include <span>
#include <vector>

/// How much of each pixel of an area lies inside outlines: the exact share. Device pixels.
class Coverage {
public:
    explicit Coverage(const CRect& area);
    void addOutline(const OutlinePoints& corners); ///< closed by itself
    struct Row {
        int left;                      ///< of the first share
        std::span<const float> shares; ///< 0 to 1; beside them nothing is covered
    };
    /// Of a row of the area, until the next call. What is enclosed twice counts once, or, by the
    /// even-odd rule, not at all.
    Row row(int y, bool evenOdd);

private:
    void addEdge(RenderTarget::Point from, RenderTarget::Point to);
    void addRow(int y, double from, double to, double part);

    struct Extent {
        int first, end; ///< cells that have changed
    };
    CRect area;
    std::vector<Extent> extents; ///< of each row
    std::vector<float> changes;  ///< of the share, from pixel to pixel; two more than a row has
    std::vector<float> shares;
};
