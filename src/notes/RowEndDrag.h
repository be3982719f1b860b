#pragma once

#include "notes/NoteGesture.h"

/// Where a row of a drum part ends: a drag there gives it a length of its own, and at the end of
/// the part it is as long as that again.
class RowEndDrag : public NoteGesture {
public:
    static constexpr int reach = 4; ///< pixels to each side

    /// The row whose end is there; -1 without one, and in parts of other kinds.
    static int rowAt(const NotePlace& place, const CSeqMouseEdit& edit, CPoint at);

    RowEndDrag(NoteState& shared, int ofRow);
    ~RowEndDrag() override;

    CPart* draft(const CPart* part) const override;
    void dragMove(const DragPoint& point) override;

private:
    void apply(const DragPoint& point) override;

    const int row;
    int ticks; ///< 0 as the part
    std::unique_ptr<CPart> drawn;
};
