#pragma once

#include "gui/CCtrl.h"
#include "gui/PanZoom.h"
#include "sequencer/song/EventLanes.h"

#include <memory>

class CPart;
class NoteGesture;
class NoteState;
class PixelPaper;
struct NotePlace;

/// The values of a kind of events below the notes: velocities, or messages of a controller. A drag
/// draws them, with Control a line, with Shift it selects; the right button deletes a message. A
/// drag changes selected events alone where any of the lane is selected. Interface thread.
class LaneView : public CCtrl {
public:
    COnChange* onMenu = nullptr; ///< owned; the right button beside all events

    LaneView(CWin* win, NoteState& state);
    ~LaneView() override;

    EventLane lane{laneVelocity, 0};

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;
    bool contextMenu() override;

    void scrolled(int dx); ///< so many pixels to the right
    /// In place of a part while it is dragged; null without, and for others.
    CPart* shownPart(const CPart* of) const;
    bool dragStands() const;     ///< the parts have the content that the drag began with
    double valueAt(int y) const; ///< 1 at the top to 0 at the bottom

private:
    int yOf(double value) const;
    struct Head {
        int x, y;
        bool chosen;
    };
    struct Skyline;
    void paintStems(PixelPaper& paper, const Skyline& sky, CRect asked) const;
    void paintValues(PixelPaper& paper, const NotePlace& place, CPart* shown, CRect asked) const;
    NoteGesture* pressRight(CPoint at);
    void selectWithin(CRect band);

    NoteState& state;
    std::unique_ptr<NoteGesture> gesture; ///< the latest; null before the first
};

/// "Velocity", "Pitch bend", "CC7" and so on.
CStr laneTitle(const EventLane& lane);
