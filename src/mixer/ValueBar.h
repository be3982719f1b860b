#pragma once

#include "ui/CStoredCtrl.h"

/// A figure in small letters, or without its unit where it has no room with it.
CStr fittedFigure(const CStr& text, int width);

/// A value as a bar with its name on it: trim, what goes to a send bus, a band of the equaliser.
class ValueBar : public CStoredCtrl {
public:
    CStr label;
    bool alwaysTold = false; ///< its figure shows at its origin too

    ValueBar(CWin* win, const char* name, ValueDoor* door);
    void paint(CGraphic* g, CRect rect) override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
};
