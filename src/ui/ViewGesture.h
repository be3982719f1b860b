#pragma once

#include "gui/CDrag.h"

#include <cstdint>

/// A drag over a view of the song. What it shows follows the pointer, and the song changes at the
/// release; when it is called off nothing has.
class ViewGesture : public DragHandler {
public:
    void dragEnd(const DragPoint& point) final {
        dragMove(point);
        apply(point);
        finish();
    }
    void dragClick(const DragPoint& point) final {
        click(point);
        finish();
    }
    void dragCancel() final { finish(); }

protected:
    virtual void apply(const DragPoint&) {} ///< released: the song changes
    virtual void click(const DragPoint&) {} ///< released where it was pressed
    virtual void finish() = 0;              ///< however it ended
};

/// Shows another place of what `state` tells of, as far as there is any: by how many pixels.
template <class State>
CPoint scrollView(State& state, CPoint by) {
    const int64_t x = state.axis().scroll();
    const int y = state.edit.scrollY;
    state.scrollTo(x + by.x, y + by.y);
    return asPoint(int(state.axis().scroll() - x), state.edit.scrollY - y);
}
/// Moves what is shown with a hand that moves by so many pixels; by how many it did.
template <class State>
CPoint panView(State& state, CPoint by) {
    const CPoint scrolled = scrollView(state, asPoint(-by.x, -by.y));
    return asPoint(-scrolled.x, -scrolled.y);
}
