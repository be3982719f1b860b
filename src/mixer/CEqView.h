#pragma once

#include "gui/CCtrl.h"
#include "mixer/EqCurve.h"

class CEQ;

/// Shows the curve of a strip's four bands, whose handles are dragged: across the frequency, up and
/// down the gain, with the right button the width (q) instead. By keys: 1 to 4 take a band, arrows
/// move it, Page Up and Page Down change its width. `onChange` tells of each change.
class CEqView : public CCtrl {
public:
    EqCurve curve;
    int current = -1; ///< band of the last press, -1 none

    CEqView(CWin* win, const CStr& name, int left, int top, int width, int height);

    /// Shows that band at `index`, 0 to 3, and changes it; null for none. Not owned.
    void setBand(int index, CEQ* band);
    void setRate(double hz);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;

private:
    void changed();

    CPoint grab; ///< from the handle's point to the pointer
    bool dragging = false;
    bool widens = false; ///< the drag changes the width
};
