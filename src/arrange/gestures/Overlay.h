#pragma once

#include "arrange/RowLayout.h"
#include "base/CStr.h"
#include "base/Geometry.h"

#include <functional>

class ArrangeState;
class CGraphic;
class CPart;
class CSeq;
class CSongTrack;

// What gestures over parts share.

/// The grid of a drag in ticks, 1 for none: Control, pressed during the drag, switches it off.
int dragGrid(const ArrangeState& state, int btn);
/// Visits the selected parts in rows that show.
void eachSelectedPart(const ArrangeState& state,
                      const std::function<void(const ArrangeRow&, CPart*)>& visit);
/// The outline of what lies between two ticks in a row, where it meets `asked`.
void outlineSpan(CGraphic* g, const ArrangeState& state, const ArrangeRow& row, double from,
                 double ticks, CRect asked);
/// The outline of a part in a row, moved and grown by ticks, where it meets `asked`.
void outlinePart(CGraphic* g, const ArrangeState& state, const ArrangeRow& row, CPart* part,
                 int moved, int grown, CRect asked);
/// A part as "Bass, track, bar 5, 4 bars".
CStr partText(CSeq* seq, const CSongTrack* songTrack, CPart* part);
