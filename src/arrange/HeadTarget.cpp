#include "arrange/HeadTarget.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/TargetMenu.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackRouting.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int arrowRoom = 14, arrowReach = 3, margin = 4;

} // namespace

HeadTarget::HeadTarget(HeadList& owner, CSongTrack* of)
    : CButton(owner.win, "target", "", 0, 0, 1, 1), list(owner), track(of) {
    skin = &clTrackControls;
}

void HeadTarget::cablesChanged() {
    CSeq* seq = list.state.seq();
    const CComp* now = seq ? trackTarget(seq, track->track) : nullptr;
    const CStr name = now ? now->id : CStr("None");
    hint = CStr(TargetMenu::nameFor(track->track)) + ": " + name + ". Press for another one";
    if (name == target) return;
    target = name;
    redraw();
}

void HeadTarget::nameAfter(const CStr& row) {
    spokenName = CStr(TargetMenu::nameFor(track->track)) + ", " + row;
}

void HeadTarget::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = list.palette();
    if (!named) {
        const int ground = track->track->selected() ? clTrackSelected.fillCol : clTrack.fillCol;
        const int shown = (isHovered() || isPushed()) && visible ? colours.accent : colour;
        list.signs.draw(g, HeadSigns::ofKind(track->track->kind), rect, shown, ground);
        if (hasKeyFocus()) g->frameRect(colours.accent, rect);
        return;
    }
    paintFace(g, rect);
    g->drawText(faceColour(), target,
                asRect(rect.left + margin, rect.top, rect.right - arrowRoom, rect.bottom),
                textLeft);
    const int x = rect.right - arrowRoom / 2, y = (rect.top + rect.bottom) / 2;
    drawArrow(g, faceColour(), asRect(x - arrowReach, y - 2, x + arrowReach + 1, y + 2), dirDown,
              arrowReach);
    paintFocus(g, rect, fillColour());
}

void HeadTarget::click() {
    CSeq* seq = list.state.seq();
    if (!seq || track->track->kind == trackFolder) return;
    std::vector<CTrack*> tracks = {track->track};
    for (CSongTrack* t : list.together(track))
        if (t != track) tracks.push_back(t->track);
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    list.targets.fill(popup, list.state.workspace, seq, tracks);
    const CPoint corner = win->getPos(true), in = win->controlPos(this);
    popup->popup(corner.x + in.x, corner.y + in.y + height, hasKeyFocus());
}

void HeadTarget::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.text = target.asChar();
    d.action = "choose";
}
