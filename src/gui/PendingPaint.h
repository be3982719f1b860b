#pragma once

#include "gui/DirtyAreas.h"

#include <deque>
#include <vector>

/// What the next frame of a window has to do: areas whose content is moved by copying, and then
/// areas to paint anew. Logical pixels of the window.
///
/// Copies are carried out by the server a while after they were sent. What it tells of exposed
/// parts before it has done so lies where the content was then, and counts where the copies took
/// it.
class PendingPaint {
public:
    struct Move {
        CRect area; ///< whose content is moved, inside it
        int dx = 0, dy = 0;
    };

    void add(CRect area); ///< it has to be painted
    /// Moves what an area shows, and what is to be painted of it; what is laid bare is painted.
    void move(CRect area, int dx, int dy);
    bool empty() const { return dirty.empty() && moves.empty(); }

    void exposed(CRect area); ///< the server says so
    /// The server could not copy a part, of the oldest copy that it has not done yet.
    void missed(CRect area);
    void copied(); ///< it has done that copy

    /// To be sent now, in this order; from then on the server's answers are waited for.
    std::vector<Move> takeMoves();
    DirtyAreas takeAreas();
    void forget(); ///< the window shows nothing any more

private:
    void addCarried(CRect area, size_t fromCopy);

    DirtyAreas dirty;
    std::vector<Move> moves; ///< to be sent
    std::deque<Move> sent;   ///< not yet carried out
};
