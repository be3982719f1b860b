#include "arrange/TrackHead.h"

#include "arrange/HeadList.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CScrollbar.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"
#include "ui/CMeter.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/TrackPalette.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int stripe = 4; ///< of a track's colour at the left of its row

/// The channel that makes a track heard: that of the first component which its output feeds.
COutputChannel* soundOf(CQV* qv, CTrack* track) {
    if (COutputChannel* own = track->output()) return own;
    for (CComp* c : each<CComp>(qv->comps))
        if (c->output() && fedBy(c, track->outPort())) return c->output();
    return nullptr;
}

} // namespace

TrackHead::TrackHead(CWin* owner, CQV* host, CSongTrack* shown, int h, int c)
    : CGroup(owner, "track", 0, 0, headWidth, h), qv(host), track(shown), colour(c) {
    constexpr int buttonSize = 20, meterHeight = 9;
    int x = headWidth - 2 * (buttonSize + gap) - gap;
    muteButton = new CButton(owner, "mute", "M", x, gap, buttonSize, buttonSize);
    soloButton = new CButton(owner, "solo", "S", x + buttonSize + gap, gap, buttonSize, buttonSize);
    muteButton->skin = &clTrackMute;
    muteButton->litSkin = &clTrackMutePushed;
    soloButton->skin = &clTrackSolo;
    soloButton->litSkin = &clTrackSoloPushed;
    muteButton->hint = "Mute the track";
    soloButton->hint = "Play only this track and others with solo";
    muteButton->onChange = new _COnChange<TrackHead>(this, &TrackHead::muteClicked);
    soloButton->onChange = new _COnChange<TrackHead>(this, &TrackHead::soloClicked);
    meter = new CMeter(owner, margin + stripe, h - meterHeight - margin,
                       headWidth - 2 * margin - stripe, meterHeight);
    meter->item = &clTrackLed;
    meter->hint = "Level of the track's instrument";
    const CStr& name = track->track->id;
    muteButton->spokenName = "Mute, " + name;
    soloButton->spokenName = "Solo, " + name;
    meter->spokenName = "Level, " + name;
    for (CCtrl* ctrl : stops())
        if (ctrl != this) addControl(ctrl);
    findSound();
}

std::array<CCtrl*, TrackHead::stopCount> TrackHead::stops() {
    return {this, muteButton, soloButton, meter};
}

void TrackHead::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const CGuiItem2& look = shownSelected ? clTrackSelected : clTrack;
    drawGuiItem(g, clientRect(), &look, drawBackground);
    g->fillRect(colour, asRect(0, 0, stripe, height - 1));
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    CRect name = asRect(margin + stripe, gap, muteButton->left - gap, gap + 20);
    if (shownFrozen) {
        g->drawText(colours.accent, "frozen", name, textRight);
        name.right -= g->textWidth("frozen") + gap;
    }
    g->drawText(look.textCol, track->track->id, name, textLeft);
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void TrackHead::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    // The menu of the right button is about what is selected.
    const bool forMenu = (btn & modRight) && !track->track->selected();
    if (!(btn & modLeft) && !forMenu) return;
    CSeq* seq = track->track->seq;
    const bool add = (btn & modControl) != 0;
    const bool on = !add || !track->track->selected();
    if (!add) seq->unselectTracks();
    seq->selectTrack(track, on);
}

void TrackHead::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) static_cast<HeadList*>(parent)->contextMenu();
}

void TrackHead::muteClicked(CObject*) {
    qv->values->set(mutedOf(track), track->muted() ? 0.0 : 1.0);
}

void TrackHead::soloClicked(CObject*) {
    qv->values->set(soloedOf(track), track->soloed() ? 0.0 : 1.0);
}

bool TrackHead::refresh() {
    const bool selected = track->track->selected(), frozen = !track->freezeItems.empty();
    if (selected != shownSelected || frozen != shownFrozen) {
        shownSelected = selected;
        shownFrozen = frozen;
        redraw();
    }
    muteButton->setLit(track->muted());
    soloButton->setLit(track->soloed());
    return meter->refresh();
}

void TrackHead::findSound() {
    meter->channel = soundOf(qv, track->track);
}

void TrackHead::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = track->track->id.asChar();
    d.action = "select";
    d.set(stateSelectable, true);
    d.set(stateSelected, shownSelected);
}

bool TrackHead::pressPart(int) {
    CSeq* seq = track->track->seq;
    seq->unselectTracks();
    seq->selectTrack(track, true);
    return true;
}
