#pragma once

#include "ui/CStoredCtrl.h"

class CComp;
class Workspace;

/// A parameter of a component as a line: its name, a slider, and what the component tells of its
/// value. Interface thread.
class ParamRow : public CStoredCtrl {
public:
    static constexpr int usualHeight = 20;

    ParamRow(CWin* win, Workspace& workspace, CComp& comp, int param);

    void paint(CGraphic* g, CRect rect) override;
    bool refresh() override; ///< also the text, which may change by itself
    void describe(Description& d, int part) const override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
    CRect track() const;

    const CStr name;
    CStr shownText;
    CComp& comp;
    const int param;
};
