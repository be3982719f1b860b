#pragma once

#include "base/Geometry.h"

#include <functional>
#include <vector>

class CGraphic;
class CSeq;
class TimeAxis;

/// The lines of bars and beats between two places of a view, as many as have room: of bars the
/// numbers that are told, and beats, and steps of the grid, once they stand apart.
class GridLines {
public:
    enum Weight { bar, beat, step };

    /// `grid` in ticks: its steps are shown too; 0 none.
    GridLines(CSeq* seq, const TimeAxis& axis, int fromX, int toX, int grid = 0);

    void visit(const std::function<void(int x, Weight weight)>& line) const;
    /// Each bar that has its number shown.
    void numbers(const std::function<void(int x, int number)>& shown) const;
    /// Every second stretch of four bars, or of as many as lie between two lines.
    std::vector<CRect> shades(int top, int bottom) const;

private:
    void addSteps(const TimeAxis& axis, int begin, int next, int grid, int beatTicks);

    struct Bar {
        int x, number;
    };
    std::vector<Bar> bars; ///< those with lines, and the one behind
    std::vector<int> beats, steps;
    int from, to;
    int barStep = 1; ///< bars from one line to the next
    int numberStep = 1;
};

/// Draws them over a part of a view, the heavier the more they count.
void drawGridLines(CGraphic* g, const GridLines& lines, CRect asked);
