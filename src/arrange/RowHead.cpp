#include "arrange/RowHead.h"

#include "arrange/HeadList.h"
#include "arrange/RowLayout.h"
#include "base/Numbers.h"

RowHead::RowHead(HeadList& owner, const char* name, const ArrangeRow& row)
    : CGroup(owner.win, name, 0, 0, headWidth, row.height), list(owner), track(row.songTrack),
      lane(row.lane), take(row.take), notes(row.notes) {
}

bool RowHead::isOf(const ArrangeRow& row) const {
    return row.songTrack == track && row.lane == lane && row.take == take && row.notes == notes;
}

int RowHead::indentOf(const ArrangeRow& row) {
    return indent * asMin(row.depth, mostIndents);
}

void RowHead::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    cursor = onEdge(y) ? cursorUpDown : cursorPlain;
}
