#pragma once

#include "arrange/PartHandles.h"
#include "base/CStr.h"

class ArrangeState;
struct ArrangeRow;
struct PartHit;

/// What click, drag and each modifier do with what is under the pointer, for the line at the
/// bottom. `row` is null below all tracks.
CStr gridHint(const ArrangeState& state, const ArrangeRow* row, const PartHit& hit,
              PartHandle handle, CPoint at);
