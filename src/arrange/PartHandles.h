#pragma once

#include "base/Geometry.h"

#include <vector>

class ArrangeState;
class CPart;

/// What can be taken hold of on a selected part, where it is large enough.
enum class PartHandle { none, fadeIn, gain, fadeOut, loop };

/// The handle at a point of the view, of a part in its box.
PartHandle handleAt(CPart* part, CRect box, CPoint at);
/// The handles of a part that are drawn: squares at the upper corners, for fades, and between them,
/// for the gain.
struct DrawnHandle {
    PartHandle handle;
    CRect box;
};
std::vector<DrawnHandle> handlesOf(CPart* part, CRect box);
double partMilliseconds(const ArrangeState& state, CPart* part); ///< how long it is heard
