#pragma once

#include "notes/NoteGesture.h"
#include "sequencer/EventIndex.h"

class LaneView;

/// Values that are drawn: a draft is shown until the release.
class LaneDraw : public NoteGesture {
public:
    LaneDraw(NoteState& shared, const LaneView& over);
    ~LaneDraw() override;

    CPart* draft() const override;
    void dragMove(const DragPoint& point) override;

private:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override;
    void write(int x, double value);

    const LaneView& view;
    std::unique_ptr<CPart> drawn;
    EventIndex events; ///< of that
    CPoint last{};
    bool begun = false;
    bool selectedOnly = false;
};

/// A straight line of values from the press to the release.
class LaneLine : public NoteGesture {
public:
    LaneLine(NoteState& shared, const LaneView& over) : NoteGesture(shared), view(over) {}

    void dragMove(const DragPoint& point) override;
    void paintOverlay(CGraphic* g, CRect asked) const override;

private:
    void apply(const DragPoint& point) override;

    const LaneView& view;
};
