#pragma once

#include "base/CStr.h"
#include "sequencer/edit/EventEdits.h"

#include <optional>
#include <vector>

class ArrangeState;
struct ArrangeRow;
struct CEnvEvent;

/// A point of automation in a row.
struct LanePoint {
    const ArrangeRow* row = nullptr;
    CPart* part = nullptr;
    CEnvEvent* point = nullptr;
    int tick = 0; ///< of the song
};

/// What the row of a lane shows, by parts, in each from the left to the right. Nothing for other
/// rows.
std::vector<LanePoint> pointsOf(const ArrangeState& state, const ArrangeRow& row);
/// "Volume, bar 5, -6.00 dB".
CStr pointText(const ArrangeState& state, const LanePoint& point);
/// That of any place on the lane.
CStr lanePlaceText(const ArrangeState& state, const ArrangeRow& row, int tick, float value);

/// The slots of parts, in lanes that show, with selected points.
std::vector<PartSlot> selectedPoints(const ArrangeState& state);
/// The selected points, from the upper row to the lower one.
std::vector<LanePoint> selectedLanePoints(const ArrangeState& state);
/// No point of any lane that shows is selected any more.
void unselectPoints(const ArrangeState& state);
/// Selects it, alone or beside what is, and brings it into view.
void choosePoint(ArrangeState& state, const LanePoint& point, bool beside);

/// Puts a point at the song's position, on the line that is there: on the lane of the selected
/// point, else on the first lane that shows of a selected track. Where one stands it is chosen.
void addPointHere(ArrangeState& state);
bool canAddPoint(const ArrangeState& state);

/// The value of the selected points as it is typed, and as a text that was typed sets it; false for
/// a text that tells none.
CStr typedValue(const LanePoint& point);
bool setTyped(ArrangeState& state, const LanePoint& like, const CStr& text);
