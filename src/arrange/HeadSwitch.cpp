#include "arrange/HeadSwitch.h"

#include "arrange/HeadList.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/GuiItem.h"
#include "gui/Keys.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/CTrack.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/song/TrackValues.h"
#include "ui/ProgramItems.h"

namespace {

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
    : RoundButton(owner.win, looks[int(which)].id, looks[int(which)].text, 0, 0, 1, 1), list(owner),
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
