#pragma once

#include "gui/controls/CRangebar.h"

#include <vector>

class ArrangeState;

/// The whole song as a strip, its parts in the colours of their tracks, with what is seen of it in
/// a frame: that is dragged, and zoomed at its ends. Interface thread.
class Overview : public CRangebar {
public:
    static constexpr int stripHeight = 16;

    Overview(CWin* win, ArrangeState& state);
    void paint(CGraphic* g, CRect rect) override;
    /// With Control they zoom the view around the time that is pointed at, which is its business.
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    void songChanged(); ///< parts are others

private:
    void sketch();

    ArrangeState& state;
    std::vector<int> picture; ///< colours, row by row; -1 is the ground
    int sketchedWidth = 0;    ///< 0: it is to be made anew
    double sketchedTotal = 0;
};
