#pragma once

#include "base/Geometry.h"
#include "sequencer/song/EventFind.h"
#include "sequencer/song/EventLanes.h"
#include "ui/CMouseEdit.h"

#include <memory>

class CPart;
class CSeq;
class CSubTrack;

/// A lane of a part as a view shows it: values run from 1 at the top of `box` to 0 at its bottom,
/// time along the axis of the mouse's state.
struct PartLane {
    CSeq* seq = nullptr;
    CPart* part = nullptr;
    EventLane lane;
    CRect box;
    const CSubTrack* shown = nullptr; ///< whose unit values are told in; null: percent

    int ticksOf(const TimeAxis& axis, int x) const; ///< in the part's own time
    int xOf(const TimeAxis& axis, int tick) const;
    double valueOf(int y) const; ///< 0 to 1
    int yOf(double value) const;
};

/// The mouse over a lane of automation, in every view that shows one: a press begins a mode, moves
/// change a draft that is shown in place of the part, and the release makes it the part's content
/// as one step. Interface thread.
class PartMouse {
public:
    PartMouse(CSeqMouseEdit& state, const PartLane& where);
    ~PartMouse();
    PartMouse(const PartMouse&) = delete;
    PartMouse& operator=(const PartMouse&) = delete;

    /// What a press begins (EditMode); `editIdle` where a press on empty space is the view's own.
    /// It selects what is pressed.
    int partMouseDown(CPoint at, int btn);
    /// `anchor` is the press, moved along with what was scrolled since; `grid` in ticks, 1 none.
    void partMouseMove(CPoint at, CPoint anchor, int grid);
    void partMouseUp(); ///< applies what has become of it

    bool inserting() const { return base != nullptr; } ///< the press puts a point in
    const PartLane& lane() const { return place; }
    /// What is to be shown: the draft, else the part.
    CPart* shown() const;
    // Of the drag, for the line at the bottom.
    int toldTick() const { return nowTick; } ///< of the point under the pointer, in the song
    CStr told() const;                       ///< its value, or how the line bends

    /// The point at a place of the view, or that whose line is there; none elsewhere.
    static FoundEvent under(const PartLane& lane, const TimeAxis& axis, CPoint at);
    /// Selects the points of the lane that lie within a rectangle of the view.
    static void selectWithin(const PartLane& lane, const TimeAxis& axis, CRect band);
    static void unselect(const PartLane& lane);

private:
    int pressPoint(CPoint at, int btn);
    int insertPoint(CPoint at);
    void movePoints(CPoint at, CPoint anchor, int grid);
    void bend(CPoint at, CPoint anchor);

    CSeqMouseEdit& edit;
    PartLane place;
    std::unique_ptr<CPart> draft; ///< null while nothing has changed
    std::unique_ptr<CPart> base;  ///< what it is made from, with a point that was put in; or null
    int anchorTick = 0;           ///< of the point under the press, in ticks of the song
    double anchorValue = 0;
    int nowTick = 0;
    double nowValue = 0;
    float bent = 0; ///< by the drag
};
