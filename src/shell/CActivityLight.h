#pragma once

#include "gui/CCtrl.h"

class CQV;

/// A lamp that lights up while MIDI comes in.
class CActivityLight : public CCtrl {
public:
    static constexpr int lightWidth = 40;

    CActivityLight(CWin* win, int left, CQV* host);
    void paint(CGraphic* g, CRect rect) override;
    /// Paints at once if the lamp has changed.
    void refresh();
    void describe(Description& d, int part) const override;

private:
    CQV* qv;
    int brightness = 0; ///< percent
};
