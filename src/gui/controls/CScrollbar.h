#pragma once

#include "gui/CCtrl.h"
#include "gui/TypedText.h"

/// A scroll bar over a range of positions. Every change by the user calls `onChange`.
class CScrollbar : public CCtrl {
public:
    float speed = 0;  ///< positions of one step while a button is held
    int speedMax = 0; ///< what it grows to
    int pos = 0, min = 0, max = 0;
    int maxSize = 0, startMax = 0; ///< extent that is visible; the range before it grew
    bool thumbDrag = false;
    int scrollMode = 0; ///< 0 none, 1 arrow back, 2 page back, 3 thumb, 4 page on, 5 arrow on
    bool vertical = true;
    int arrowSize = 16;
    int thumbPos = 0, thumbSize = 16; ///< pixels
    bool growing = false;             ///< the range follows a position beyond its end
    bool reversed = false;            ///< counts from the bottom

    CScrollbar(CWin* win, const CStr& name, int left, int top, int width, int height);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void onTimer() override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

    void setRange(int total, int visibleSize); ///< of the content, and what of it can be seen
    void setPos(int p);                        ///< clamps; does not report
    void placeThumb();                         ///< after the size, `min` or `max` changed

protected:
    int length() const { return vertical ? height : width; }
    int room() const { return length() - 2 * arrowSize - thumbSize; } ///< of the thumb's travel
    int along(int x, int y) const; ///< a point on the bar, from where it counts
    CRect thumbRect() const;
    void report();

private:
    void scroll(int mode);
    void dragTo(int place);

    int dragStart = 0;
};

/// An upright fader: its smallest value is at the bottom. The wheel turns it while Control is held,
/// ten times as fast with Shift. So do Up and Down, and with ten times the step Page Up and Down.
/// Home and End are its ends, Delete goes to `resetPos`, and a position can be typed.
class CFader : public CScrollbar {
public:
    int color;        ///< of the track
    int resetPos = 0; ///< clamped when it is used

    CFader(CWin* win, const CStr& name, int left, int top, int width, int height);
    void paint(CGraphic* g, CRect rect) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;

private:
    void step(int by);
    bool stepKey(int key);

    TypedText typed;
};
