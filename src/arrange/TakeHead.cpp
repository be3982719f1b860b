#include "arrange/TakeHead.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/RowLayout.h"
#include "arrange/TakeRows.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/CTrack.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int nameLeft = 39, buttonTop = 4, buttonHeight = 18, useWidth = 54;
constexpr double sunken = 0.35; ///< of the window's colour in the ground

} // namespace

TakeHead::TakeHead(HeadList& owner, const ArrangeRow& row)
    : RowHead(owner, "take", row),
      use(new CButton(win, "use", "Use all", 0, buttonTop, useWidth, buttonHeight)) {
    use->skin = &clTrackControls;
    use->hint = "Play this take all along";
    use->onChange = new _COnChange<TakeHead>(this, &TakeHead::useClicked);
    addControl(use);
    show(row);
}

void TakeHead::show(const ArrangeRow& row) {
    inset = indentOf(row);
    shownName = CStr("Take ") + asStr(row.take + 1);
    use->setBounds(headWidth - gap - useWidth, buttonTop, useWidth, buttonHeight);
    use->spokenName = shownName + " all along";
}

void TakeHead::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = list.palette();
    g->fillRect(fadeCol(clTrack.fillCol, colours.window, sunken), clientRect());
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    const CRect name =
        asRect(nameLeft + inset, buttonTop, use->left - gap, buttonTop + buttonHeight);
    g->drawText(colours.text, shownName, name, textLeft);
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void TakeHead::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (btn & modLeft) list.choose(track, btn);
}

void TakeHead::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    cursor = cursorPlain;
}

void TakeHead::useClicked(CObject*) {
    useTake(list.state, track, take);
}

std::vector<CCtrl*> TakeHead::stops() {
    return {this, use};
}

void TakeHead::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = (shownName + ", of " + track->track->id).asChar();
}
