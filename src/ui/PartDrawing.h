#pragma once

#include "base/Geometry.h"

class CPart;
class PixelPaper;
class TimeAxis;
struct PartLane;

/// Paints the points of a lane of automation and the line that playback follows between them, of
/// `shown`, which is the lane's part or a draft for it. `colours` are pixel values.
struct PointColours {
    int line, point, selected;
};
void drawEvents(PixelPaper& paper, const PartLane& lane, CPart* shown, const TimeAxis& axis,
                const PointColours& colours, CRect asked);
