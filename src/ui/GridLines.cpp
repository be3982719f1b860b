#include "ui/GridLines.h"

#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "ui/ProgramItems.h"
#include "ui/TimeAxis.h"

#include <algorithm>

namespace {

constexpr int lineRoom = 16, beatRoom = 12, numberRoom = 48; ///< pixels from one to the next
constexpr int stepRoom = 12;                                 ///< of the grid
constexpr int shadeBars = 4;
constexpr int mostStep = 1 << 20;

} // namespace

GridLines::GridLines(CSeq* seq, const TimeAxis& axis, int fromX, int toX, int grid)
    : from(fromX), to(toX) {
    const int num = seq->options.num(), beatTicks = 4 * quarterTicks / seq->options.den();
    const double barWide = axis.pixelsIn(double(num) * asMax(1, beatTicks));
    while (barWide * barStep < lineRoom && barStep < mostStep) barStep *= 2;
    numberStep = barStep;
    while (barWide * numberStep < numberRoom && numberStep < mostStep) numberStep *= 2;
    const int shade = asMax(shadeBars, barStep);
    const BarPlace first = barPlace(seq, limitTicks(asInt64(axis.ticksAt(fromX))));
    const bool showBeats = axis.pixelsIn(beatTicks) >= beatRoom;
    const bool showSteps = grid > 1 && axis.pixelsIn(grid) >= stepRoom;
    // From the start of a shade on, bar by bar or step by step.
    int number = (first.bar - 1) / shade * shade + 1;
    for (;; number += barStep) {
        const int tick = tickOf(seq, {number, 1, 0}), x = axis.xOf(tick);
        if (!bars.empty() && x <= bars.back().x) break; // the end of what a song can have
        bars.push_back({x, number});
        if (x >= toX) break;
        if (!showBeats) continue;
        const int next = tickOf(seq, {number + 1, 1, 0});
        if (showSteps) addSteps(axis, tick, next, grid, asMax(1, beatTicks));
        for (int b = 2;; b++) {
            const int at = tickOf(seq, {number, b, 0});
            if (at >= next || b > num * 4) break;
            const int beatX = axis.xOf(at);
            if (beatX >= fromX && beatX < toX) beats.push_back(beatX);
        }
    }
}

/// Those of a bar that are in view, but for its beats.
void GridLines::addSteps(const TimeAxis& axis, int begin, int next, int grid, int beatTicks) {
    const int64_t before = (asInt64(axis.ticksAt(from)) - begin) / grid - 1;
    for (int64_t at = begin + std::max<int64_t>(1, before) * grid; at < next; at += grid) {
        const int x = axis.xOf(double(at));
        if (x >= to) break;
        if (x >= from && (at - begin) % beatTicks != 0) steps.push_back(x);
    }
}

void GridLines::visit(const std::function<void(int x, Weight weight)>& line) const {
    for (const int x : steps) line(x, step);
    for (const int x : beats) line(x, beat);
    for (const Bar& b : bars)
        if (b.x >= from && b.x < to) line(b.x, bar);
}

void GridLines::numbers(const std::function<void(int x, int number)>& shown) const {
    for (const Bar& b : bars)
        if ((b.number - 1) % numberStep == 0) shown(b.x, b.number);
}

std::vector<CRect> GridLines::shades(int top, int bottom) const {
    const int shade = asMax(shadeBars, barStep);
    std::vector<CRect> found;
    for (size_t i = 0; i < bars.size(); i++) {
        if ((bars[i].number - 1) / shade % 2 == 0 || (bars[i].number - 1) % shade != 0) continue;
        size_t end = i + 1;
        while (end < bars.size() && (bars[end].number - 1) % shade != 0) end++;
        const int right = end < bars.size() ? bars[end].x : to;
        found.push_back(asRect(asMax(bars[i].x, from), top, asMin(right, to), bottom));
    }
    return found;
}

void drawGridLines(CGraphic* g, const GridLines& lines, CRect asked) {
    constexpr double stepShare = 0.45; // of the colour of beats
    const int step = fadeCol(clGrid.fillCol, clGridSnap.fillCol, stepShare);
    lines.visit([&](int x, GridLines::Weight weight) {
        const int colour = weight == GridLines::bar    ? clGridBeats.fillCol
                           : weight == GridLines::beat ? clGridSnap.fillCol
                                                       : step;
        g->fillLine(colour, asRect(x, asked.top, x + 1, asked.bottom));
    });
}
