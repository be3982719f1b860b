#pragma once

#include "arrange/RowHead.h"

class CButton;

/// Head of an automation lane: its name, the value that it has now, bypass, and what closes it.
class LaneHead : public RowHead {
public:
    LaneHead(HeadList& list, const ArrangeRow& row);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y,
                   int btn) override; ///< chooses the track; the edge drags the height
    void show(const ArrangeRow& row) override;
    void refresh() override;
    std::vector<CCtrl*> stops() override;
    void describe(Description& d, int part) const override;

private:
    void bypassClicked(CObject*);
    void closeClicked(CObject*);
    CStr valueNow() const;

    CButton *bypass, *close;
    int inset = 0;
    CStr shownName, shownValue;
};
