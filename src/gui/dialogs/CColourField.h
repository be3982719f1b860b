#pragma once

#include "gui/CCtrl.h"

/// Hue, saturation and value, each 0 to 1; the hue goes around.
struct CHsv {
    double hue = 0, saturation = 0, value = 0;
};
CHsv toHsv(int pixel);
int fromHsv(const CHsv& colour); ///< pixel value

/// A square of saturation (rightwards) and value (upwards) with a strip of hues at its right. It is
/// dragged, or moved with the arrows: Left and Right saturation, Up and Down value, with Shift the
/// hue. `onChange` tells of each change.
class CColourField : public CCtrl {
public:
    CHsv colour;

    CColourField(CWin* win, const CStr& name, int left, int top, int width, int height);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

private:
    CRect square() const;
    CRect strip() const;
    void take(int x, int y);
    void paintSquare(CGraphic* g) const;
    void paintStrip(CGraphic* g) const;

    bool onStrip = false; ///< the drag began there
};
