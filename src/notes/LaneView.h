#pragma once

#include "gui/CCtrl.h"
#include "gui/PanZoom.h"
#include "sequencer/EventLanes.h"

#include <memory>

class CPart;
class NoteGesture;
class NoteState;

/// The values of a kind of events below the notes: velocities, or messages of a controller. A drag
/// draws them, with Control a line, with Shift it selects; the right button deletes a message. Of
/// velocities only those of selected notes change where any is selected. Interface thread.
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

    CPart* shownPart() const; ///< of a drag; null without one
    int yOf(double value) const;
    double valueAt(int y) const; ///< 1 at the top to 0 at the bottom

private:
    NoteGesture* pressRight(CPoint at);

    NoteState& state;
    std::unique_ptr<NoteGesture> gesture; ///< the latest; null before the first
};

/// "Velocity", "Pitch bend", "CC 7" and so on.
CStr laneTitle(const EventLane& lane);
/// A value of it, 0 to 1, as its number.
CStr laneNumber(const EventLane& lane, double value);
