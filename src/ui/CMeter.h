#pragma once

#include "gui/CCtrl.h"

class COutputChannel;
struct CGuiItem2;

/// A stereo level meter: two bars over a scale of 60 dB, and the highest peak so far as a line. It
/// lies on its side, or stands, with marks at -12 and 0 dB. A press clears the peak.
class CMeter : public CCtrl {
public:
    CMeter(CWin* win, int left, int top, int width, int height);

    /// Not owned; null shows silence.
    COutputChannel* channel = nullptr;
    bool vertical = false;
    const CGuiItem2* item; ///< its ground and mark; never null, "meter" at first

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< Return and Delete clear the peak
    int placeOf(float db) const;              ///< pixels from the start of the scale
    /// Takes the present level; whether that shows. Interface thread.
    bool refresh();
    void describe(Description& d, int part) const override;

private:
    struct Level {
        int bar = 0;  ///< pixels of the length
        int hold = 0; ///< pixels of the length
        bool operator==(const Level&) const = default;
    };
    void clearPeak();
    int length() const { return vertical ? height : width; }
    /// A stretch of the length, and one across.
    CRect stretch(int from, int to, int near, int far) const;
    Level levelOf(float peak, float hold) const;
    void paintBar(CGraphic* g, int from, int to, const Level& level) const;

    Level shownL, shownR;
};
