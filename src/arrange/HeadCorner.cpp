#include "arrange/HeadCorner.h"

#include "arrange/ArrangeState.h"
#include "arrange/RowHead.h"
#include "arrange/TrackCommands.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int switchWidth = 22, switchHeight = 18, gap = 2, right = 16, below = 4;

} // namespace

HeadCorner::HeadCorner(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "corner", 0, 0, RowHead::headWidth, 1), state(shared) {
    auto* m = new CButton(owner, "muteall", "M", 0, 0, switchWidth, switchHeight);
    auto* s = new CButton(owner, "soloall", "S", 0, 0, switchWidth, switchHeight);
    m->hint = m->spokenName = "(Un)mute all tracks";
    s->hint = s->spokenName = "(Un)solo all tracks";
    m->skin = &clTrackMute;
    s->skin = &clTrackSolo;
    m->onChange = new _COnChange<HeadCorner>(this, &HeadCorner::muteClicked);
    s->onChange = new _COnChange<HeadCorner>(this, &HeadCorner::soloClicked);
    addControl(mute = m);
    addControl(solo = s);
}

void HeadCorner::resized() {
    CGroup::resized();
    const int y = height - switchHeight - below, x = width - right - switchWidth;
    solo->setBounds(x, y, switchWidth, switchHeight);
    mute->setBounds(x - gap - switchWidth, y, switchWidth, switchHeight);
}

void HeadCorner::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
}

void HeadCorner::muteClicked(CObject*) {
    if (state.seq()) toggleMutesOfAll(state.seq());
}

void HeadCorner::soloClicked(CObject*) {
    if (state.seq()) toggleSolosOfAll(state.seq());
}

void HeadCorner::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "All tracks";
}
