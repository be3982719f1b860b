#include "app/main/GridActions.h"

#include "base/CStr.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CSnap.h"
#include "sequencer/CSeq.h"

namespace {

constexpr int finest = 0, barIndex = 6;
constexpr const char* gridNames[] = {"1/128", "1/64", "1/32", "1/16", "1/8", "1/4", "bar"};

void tell(const CSnap& snap) {
    const char* kind = snap.dotted ? " dotted" : snap.triplet ? " triplet" : "";
    const CStr grid = CStr(gridNames[snap.asIndex()]) + kind;
    setStatus(snap.active ? CStr("Snap to ") + grid : CStr("Snap off (") + grid + ")");
}

} // namespace

void toggleSnap(CSeq* seq) {
    CSnap& snap = *seq->snap;
    snap.active = !snap.active;
    tell(snap);
}

void stepSnap(CSeq* seq, int by) {
    CSnap& snap = *seq->snap;
    snap.indexToSnap(asMinMax(snap.asIndex() + by, finest, barIndex));
    tell(snap);
}
