#pragma once

#include "gui/CCtrl.h"

/// Sixteen hues of even lightness, for tracks and parts, as pixel values; the index wraps.
int paletteColour(int index);

/// The colours of `paletteColour` in two rows. `onChange` tells that one was chosen, by a press or
/// with the arrows.
class CSwatches : public CCtrl {
public:
    static constexpr int count = 16, inRow = 8, cellSize = 24, cellStep = 28;
    static constexpr int fullWidth = inRow * cellStep - cellStep + cellSize;
    static constexpr int fullHeight = (count / inRow - 1) * cellStep + cellSize;

    int index = -1; ///< of the one chosen last, -1 none

    CSwatches(CWin* win, const CStr& name, int left, int top);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

private:
    static CRect cell(int i);
    void choose(int i);
};
