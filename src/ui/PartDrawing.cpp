#include "ui/PartDrawing.h"

#include "base/Numbers.h"
#include "gui/PixelPaper.h"
#include "gui/Scale.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/SongPlayback.h"
#include "ui/PartMouse.h"

namespace {

constexpr int pointReach = 3; ///< pixels to each side

/// The line from one point to the next, column by column of the screen.
class LinePen {
public:
    LinePen(PixelPaper& onto, const PartLane& shown, const TimeAxis& time, int line, CRect asked)
        : paper(onto), lane(shown), axis(time), colour(line),
          part(onto.deviceRect(intersect(asked, shown.box))),
          origin(onto.deviceRect(asRect(0, 0, 0, 0)).left) {}

    double deviceX(int tick) const {
        const double x = axis.pixelsIn(double(lane.part->pos) + lane.part->offset + tick);
        return origin + (x - double(axis.scroll())) * scalePercent / 100.0;
    }
    void segment(int fromTick, int toTick, float from, float to, int shape, float curve) {
        const double start = deviceX(fromTick), end = deviceX(toTick);
        const int first = asMax(part.left, asInt(start)), last = asMin(part.right, asInt(end) + 1);
        int before = -1;
        for (int x = first; x < last; x++) {
            const double t = end > start ? fLimit((x - start) / (end - start), 0.0, 1.0) : 1.0;
            const int y = deviceY(static_cast<double>(getPoint(shape, from, to, float(t), curve)));
            column(x, before < 0 ? y : before, y);
            before = y;
        }
        if (shape == 1 && last > first && end < part.right)
            column(last - 1, deviceY(static_cast<double>(from)), deviceY(static_cast<double>(to)));
    }

private:
    int deviceY(double value) const {
        const CRect box = paper.deviceRect(lane.box);
        return box.top + asRound((1.0 - value) * (box.height() - 1));
    }
    void column(int x, int from, int to) {
        const int thick = lineThickness();
        paper.fillDevice(colour, asRect(x, asMin(from, to), x + 1, asMax(from, to) + thick));
    }

    PixelPaper& paper;
    const PartLane& lane;
    const TimeAxis& axis;
    const int colour;
    const CRect part;
    const int origin;
};

} // namespace

void drawEvents(PixelPaper& paper, const PartLane& lane, CPart* shown, const TimeAxis& axis,
                const PointColours& colours, CRect asked) {
    LinePen pen(paper, lane, axis, colours.line, asked);
    const CEnvEvent* before = nullptr;
    int beforeTick = 0;
    eachEvent(shown->getParam(lane.lane.number), [&](const CEnvEvent* point, int tick) {
        if (before)
            pen.segment(beforeTick, tick, before->value, point->value, point->shape, point->curve);
        before = point;
        beforeTick = tick;
    });
    if (before) // the last value stays
        pen.segment(beforeTick, lane.part->length - lane.part->offset, before->value, before->value,
                    1, 0.0f);
    eachEvent(shown->getParam(lane.lane.number), [&](const CEnvEvent* e, int tick) {
        const int x = lane.xOf(axis, tick);
        const int y = lane.yOf(double(e->value));
        const CRect mark =
            asRect(x - pointReach, y - pointReach, x + pointReach + 1, y + pointReach + 1);
        if (intersect(mark, asked).empty() || x < lane.box.left - pointReach ||
            x > lane.box.right + pointReach)
            return;
        paper.fill(isSelected(e) ? colours.selected : colours.point, mark);
    });
}
