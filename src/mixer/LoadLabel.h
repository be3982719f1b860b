#pragma once

#include "engine/plan/GraphProbe.h"
#include "gui/CCtrl.h"

/// What the work for a strip costs, with the component behind it: the share of a block, in the
/// mean; the hint tells the worst as well, and how late it makes the sound.
class LoadLabel : public CCtrl {
public:
    explicit LoadLabel(CWin* win);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    /// `blockNs` is the time of a block, `delayMs` how late what comes out of the strip is.
    void show(GraphProbe::Work work, double blockNs, double delayMs);

private:
    CStr shown;
    double share = 0.0; ///< of a block
};
