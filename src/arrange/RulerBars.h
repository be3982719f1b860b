#pragma once

#include "gui/CCtrl.h"

class ArrangeState;
class CGraphic;
class CSeq;

/// The bars over the grid: the ruler with the loop, and the sections of the song. A press takes the
/// position there; so do Left and Right by a beat, Page Up and Down by a bar, Home and End.
class RulerBars : public CCtrl {
public:
    static constexpr int barHeight = 20, barsHeight = 2 * barHeight;

    RulerBars(CWin* win, ArrangeState& state);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

    /// Follows the play position and the loop; whether that shows.
    bool refresh();
    void scrolled(int dx); ///< what was shown has moved by so many pixels

private:
    struct Loop {
        int from = 0, to = 0, on = 0;
        bool operator==(const Loop&) const = default;
    };
    Loop loopNow() const;
    int playX() const;
    CRect pointerRect(int x) const;
    void paintBars(CGraphic* g, CSeq* seq, CRect asked);
    void paintLoop(CGraphic* g);
    void paintSections(CGraphic* g, CSeq* seq);
    void paintPointer(CGraphic* g) const;
    void jumpTo(int x);

    ArrangeState& state;
    Loop loop;
    int shownX = -1;
};
