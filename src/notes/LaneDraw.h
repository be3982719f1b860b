#pragma once

#include "notes/NoteGesture.h"
#include "sequencer/song/EventIndex.h"

#include <vector>

class LaneView;

/// Values that are drawn: a draft is shown until the release.
class LaneDraw : public NoteGesture {
public:
    LaneDraw(NoteState& shared, const LaneView& over);
    ~LaneDraw() override;

    CPart* draft(const CPart* part) const override;
    bool stands() const override;
    void dragMove(const DragPoint& point) override;

private:
    void apply(const DragPoint& point) override;
    void click(const DragPoint& point) override;
    struct Home {
        NotePlace place;
        const CBaseEvent* head; ///< of its events at the press, only to be compared
        std::unique_ptr<CPart> drawn;
        EventIndex events; ///< of that
    };
    void write(int x, double value);
    bool change(Home& home, int from, int to, double value);

    const LaneView& view;
    std::vector<Home> homes; ///< the first is the part, where messages come that there are not yet
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
