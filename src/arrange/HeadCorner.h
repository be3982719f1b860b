#pragma once

#include "gui/CGroup.h"

class ArrangeState;

/// What stands over the heads: switches for all tracks at once.
class HeadCorner : public CGroup {
public:
    HeadCorner(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

private:
    void muteClicked(CObject*);
    void soloClicked(CObject*);

    ArrangeState& state;
    CCtrl *mute, *solo;
};
