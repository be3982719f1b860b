#pragma once

#include "gui/CGroup.h"
#include "ui/Options.h"

class ArrangeState;
class CPopup;
class MarkerBar;
class PointLane;
class SignatureLane;
class TempoLane;
class TimeRuler;

/// The bars over the grid: the ruler, and lanes of markers, tempos and signatures, each of which
/// can be hidden by its action. The play position runs through all of them. Interface thread.
class RulerBars : public CGroup {
public:
    RulerBars(CWin* win, ArrangeState& state);
    ~RulerBars() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override; ///< each bar as wide as this one
    void describe(Description& d, int part) const override;

    int wantedHeight() const; ///< of all bars that show
    bool refresh();           ///< follows the play position; whether that shows
    void idle();              ///< follows the loop and the lanes
    void scrolled(int dx);    ///< what was shown has moved by so many pixels

private:
    struct Bar {
        PointLane* lane;
        Option* shown;
        const char* action;
    };

    int playX() const;
    CRect pointerRect(int x) const;
    void bindCommands();
    void fillMenu(CPopup* popup);
    void modeClicked(CObject* sender);

    ArrangeState& state;
    Option clock, markersShown, temposShown, timesigsShown;
    TimeRuler* ruler;
    Bar bars[3];
    int shownX = -1; ///< of the play position
};
