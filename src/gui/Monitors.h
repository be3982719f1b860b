#pragma once

#include "base/Geometry.h"

class CWin;

// The monitors of the screen, in logical pixels. Interface thread.

/// The monitor that a point of the screen lies on, else the nearest one; the whole screen where the
/// server tells of none.
CRect monitorAt(CPoint at);
/// That of a window's middle; without a window, or while it is hidden, that of the pointer.
CRect monitorOf(CWin* win);
/// The corner of a size in the middle of a place, as far as `room` allows: its left and top edges
/// come before the others.
CPoint centredIn(CRect place, int width, int height, CRect room);
