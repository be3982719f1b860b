#pragma once

#include "ui/CStoredCtrl.h"

/// A slider for a stored value that lies on its side.
class CStoredSlider : public CStoredCtrl {
public:
    using CStoredCtrl::CStoredCtrl;

    void paint(CGraphic* g, CRect rect) override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
    int xOf(double value) const;
};
