#pragma once

#include "arrange/Hit.h"

#include <memory>

class ArrangeGesture;
class ArrangeGrid;
class ArrangeState;

/// What a press in the grid begins: the gesture that goes on to its release, and the mode of the
/// mouse in it. What a press does at once, such as to select or to split, is done.
struct Press {
    std::unique_ptr<ArrangeGesture> gesture; ///< null where nothing goes on
    int mode = 0;                            ///< EditMode
    int room = 0;                            ///< pixels of movement that are no drag yet
    bool taken = false;                      ///< done, also where nothing goes on
};

/// `btn` are the flags of the press at a point of the grid.
Press pressed(ArrangeGrid& grid, ArrangeState& state, CPoint at, int btn);
