#pragma once

#include "arrange/RowLayout.h"
#include "arrange/gestures/ArrangeGesture.h"
#include "sequencer/edit/AutomationEdits.h"

#include <map>
#include <memory>

/// Automation drawn over the parts of a lane: a straight line from the press to the pointer, or
/// what the pointer follows. Where it goes it replaces what was there.
class DrawGesture : public ArrangeGesture {
public:
    DrawGesture(ArrangeGrid& over, ArrangeState& shared, const ArrangeRow& lane, bool freely);

    bool stands() const override;
    void dragMove(const DragPoint& point) override;
    CPart* draftOf(const CPart* part, int slot) const override;

protected:
    void apply(const DragPoint& point) override;

private:
    std::vector<LanePlace> line() const;
    float valueAt(int y) const;
    void follow(int tick, float value, int step);
    void makeDrafts();

    const ArrangeRow row;
    const bool free;
    bool begun = false;
    LanePlace first{}, last{};                  ///< of the drag
    std::map<int, float> followed;              ///< values by tick
    std::vector<PartSlot> places;               ///< of the parts that it reaches
    std::vector<std::unique_ptr<CPart>> drafts; ///< for these
};
