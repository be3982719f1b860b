#pragma once

#include "gui/CCtrl.h"

/// How far something is, as a bar that fills from the left.
class CProgressBar : public CCtrl {
public:
    using CCtrl::CCtrl;

    void paint(CGraphic* g, CRect rect) override;
    /// 0 to 1; paints at once if that shows.
    void setDone(float share);
    void describe(Description& d, int part) const override;

private:
    CRect filled() const;

    float done = 0.0f;
};
