#pragma once

#include "gui/CCtrl.h"
#include "mixer/EqCurve.h"
#include "mixer/StripSpectrum.h"

class COutputChannel;

/// Shows the curve of a strip's four bands, whose handles are dragged: across the frequency, up and
/// down the gain, with the right button the width (q) instead. By keys: 1 to 4 take a band, arrows
/// move it, Page Up and Page Down change its width. Behind it
/// stands the spectrum of what the bands let through. `onChange` tells of each change.
class CEqView : public CCtrl {
public:
    EqCurve curve;
    int current = -1; ///< band of the last press, -1 none

    CEqView(CWin* win, const CStr& name, int left, int top, int width, int height);

    /// Shows the bands of a strip and sets them, a drag at a time; null for none. Not owned.
    void setStrip(COutputChannel* strip);
    void setRate(double hz);
    void followSound(); ///< the spectrum of what the bands let through; interface tick

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;

private:
    void changed();
    void drag(bool on);

    StripSpectrum spectrum;
    CPoint grab; ///< from the handle's point to the pointer
    COutputChannel* strip = nullptr;
    bool dragging = false;
    bool widens = false; ///< the drag changes the width
};
