#include "ui/GridCommands.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "engine/ValueDoor.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"

namespace {

constexpr int finest = 0;
constexpr const char* gridNames[gridCount] = {"1/128", "1/64", "1/32", "1/16", "1/8", "1/4", "bar"};

void tell(const CSnap& snap) {
    const char* kind = snap.dotted ? " dotted" : snap.triplet ? " triplet" : "";
    const CStr grid = gridName(snap.asIndex()) + kind;
    setStatus(snap.active ? CStr("Snap to ") + grid : CStr("Snap off (") + grid + ")");
}

} // namespace

CStr gridName(int index) {
    return gridNames[asMinMax(index, 0, gridCount - 1)];
}

void toggleSnap(CSeq* seq, GridNumber number) {
    StoredValue::Numbers grid = gridOf(seq).get();
    grid[number] = grid[number] == 0.0 ? 1.0 : 0.0;
    seq->host->values->set(gridOf(seq), grid);
    tell(*seq->snap);
}

void chooseSnap(CSeq* seq, int index) {
    StoredValue::Numbers grid = gridOf(seq).get();
    grid[gridIndex] = index;
    seq->host->values->set(gridOf(seq), grid);
    tell(*seq->snap);
}

void stepSnap(CSeq* seq, int by) {
    StoredValue::Numbers grid = gridOf(seq).get();
    grid[gridIndex] = asMinMax(asInt(grid[gridIndex]) + by, finest, gridCount - 1);
    seq->host->values->nudge(gridOf(seq), grid);
    tell(*seq->snap);
}
