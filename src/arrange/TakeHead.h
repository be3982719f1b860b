#pragma once

#include "arrange/RowHead.h"

class CButton;

/// Head of the row of a take: its number, and what plays it all along.
class TakeHead : public RowHead {
public:
    TakeHead(HeadList& list, const ArrangeRow& row);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override; ///< chooses the track
    void mouseMove(int x, int y, int btn) override;
    void show(const ArrangeRow& row) override;
    void refresh() override {}
    std::vector<CCtrl*> stops() override;
    void describe(Description& d, int part) const override;

private:
    void useClicked(CObject*);

    CButton* use;
    CStr shownName;
    int inset = 0;
};
