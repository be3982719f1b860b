#include "arrange/HeadSwitch.h"

#include "arrange/HeadList.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/GuiItem.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "sequencer/CSongTrack.h"
#include "sequencer/CTrack.h"
#include "sequencer/SongValues.h"
#include "sequencer/TrackValues.h"
#include "ui/ProgramItems.h"

#include <numbers>

namespace {

constexpr double corner = 3;

struct SwitchLook {
    const char *id, *text, *spoken, *hint;
    const CGuiItem2 *skin, *lit;
};

/// By `TrackSwitch`.
const SwitchLook looks[trackSwitches] = {
    {"arm", "R", "Record", "Record on the track; drag over others to switch many", &clTrackArm,
     &clTrackArmPushed},
    {"mute", "M", "Mute", "Mute the track; drag over others to switch many", &clTrackMute,
     &clTrackMutePushed},
    {"solo", "S", "Solo",
     "Play only this track and others with solo; drag over others to switch many", &clTrackSolo,
     &clTrackSoloPushed},
    {"monitor", "In", "Monitor",
     "Hear what comes in, while monitoring is set to manual; drag over others to switch many",
     &clTrackControls, &clTrackControlsPushed},
};

CPath roundedBox(CRect box, double radius) {
    constexpr double quarter = std::numbers::pi / 2;
    const double l = box.left, t = box.top, r = box.right, b = box.bottom;
    CPath path;
    path.moveTo(l, t + radius);
    path.arc(l + radius, t + radius, radius, 2 * quarter, 3 * quarter);
    path.arc(r - radius, t + radius, radius, 3 * quarter, 4 * quarter);
    path.arc(r - radius, b - radius, radius, 0, quarter);
    path.arc(l + radius, b - radius, radius, quarter, 2 * quarter);
    path.close();
    return path;
}

} // namespace

StoredValue switchOf(TrackSwitch which, CSongTrack* track) {
    switch (which) {
    case TrackSwitch::arm:
        return armOf(track->track);
    case TrackSwitch::mute:
        return mutedOf(track);
    case TrackSwitch::solo:
        return soloedOf(track);
    default:
        return monitorOf(track->track);
    }
}

HeadSwitch::HeadSwitch(HeadList& owner, TrackSwitch which, CSongTrack* of)
    : CButton(owner.win, looks[int(which)].id, looks[int(which)].text, 0, 0, 1, 1), list(owner),
      kind(which), track(of) {
    skin = looks[int(which)].skin;
    litSkin = looks[int(which)].lit;
    hint = looks[int(which)].hint;
}

void HeadSwitch::nameAfter(const CStr& row) {
    spokenName = looks[int(kind)].spoken + CStr(", ") + row;
}

bool HeadSwitch::refresh() {
    const bool on = switchOf(kind, track).get()[0] != 0.0;
    if (on == lit) return false;
    setLit(on);
    return true;
}

/// Smaller in its corners than a frame of the items can be.
void HeadSwitch::paint(CGraphic* g, CRect rect) {
    const CGuiItem2& look = present();
    if (look.fill != fillSolid) return CButton::paint(g, rect);
    const int frame = look.frame ? look.frameCol : fillColour();
    fillPath(g, roundedBox(rect, corner), frame);
    fillPath(g, roundedBox(sizeRect(rect, 1, 1, -1, -1), corner - 1), fillColour());
    g->drawText(faceColour(), text, rect, 0);
    paintFocus(g, rect, fillColour());
}

void HeadSwitch::mouseDown(int x, int y, int btn) {
    if (btn & modLeft) list.swipe(kind, track, {this, x, y, btn});
}

void HeadSwitch::click() {
    list.toggle(kind, track);
}

FoldButton::FoldButton(HeadList& owner, CSongTrack* of)
    : CButton(owner.win, "fold", "", 0, 0, 1, 1), list(owner), track(of) {
}

void FoldButton::paint(CGraphic* g, CRect rect) {
    const int ground = track->track->selected() ? clTrackSelected.fillCol : clTrack.fillCol;
    const CPalette& colours = list.palette();
    const int colour = isHovered() || hasKeyFocus() ? colours.accent : colours.dimText;
    list.signs.draw(g, track->track->open() ? HeadSigns::open : HeadSigns::closed, rect, colour,
                    ground);
    if (hasKeyFocus()) g->frameRect(colours.accent, rect);
}

void FoldButton::click() {
    list.fold(track);
}

void FoldButton::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.action = track->track->open() ? "close" : "open";
    d.set(stateExpandable, true);
    d.set(stateExpanded, track->track->open());
}
