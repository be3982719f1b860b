#include "mixer/StripButtons.h"

#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "mixer/CMixerStrip.h"
#include "mixer/MixerState.h"
#include "mixer/StripLevels.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CTrack.h"
#include "sequencer/song/TrackRouting.h"
#include "sequencer/song/TrackValues.h"
#include "ui/ProgramItems.h"

namespace {

struct SwitchLook {
    const char *id, *text, *spoken, *hint;
    const CGuiItem2 *skin, *lit;
};

/// By `MixSwitch`.
const SwitchLook looks[mixSwitches] = {
    {"mute", "M", "Mute", "Mute; drag over other strips to switch many", &clMixMute,
     &clMixMutePushed},
    {"solo", "S", "Solo",
     "Hear only what has solo; drag over others to switch many; Ctrl: safe from their solo",
     &clMixSolo, &clMixSoloPushed},
    {"arm", "R", "Record", "Record on the track; drag over other strips to switch many",
     &clTrackArm, &clTrackArmPushed},
};

constexpr int arrowRoom = 12, arrowReach = 3, margin = 4;

} // namespace

std::optional<StoredValue> switchOf(MixSwitch which, const MixerStrip& strip) {
    switch (which) {
    case MixSwitch::mute:
        return stripMute(strip);
    case MixSwitch::solo:
        return stripSolo(strip);
    default:
        if (!strip.track || strip.drum || strip.track->kind == trackFolder) return std::nullopt;
        return armOf(strip.track);
    }
}

const char* spokenOf(MixSwitch which) {
    return looks[int(which)].spoken;
}

StripSwitch::StripSwitch(CMixerStrip& strip, MixSwitch which)
    : RoundButton(strip.win, looks[int(which)].id, looks[int(which)].text, 0, 0, 1, 1),
      owner(strip), kind(which) {
    skin = looks[int(which)].skin;
    litSkin = looks[int(which)].lit;
    hint = looks[int(which)].hint;
}

bool StripSwitch::refresh() {
    const auto value = switchOf(kind, owner.strip());
    const bool on = value && value->get()[0] != 0.0;
    const bool nowSafe = kind == MixSwitch::solo && owner.strip().channel->soloSafe;
    if (on == lit && nowSafe == safe) return false;
    safe = nowSafe;
    setLit(on);
    redraw();
    return true;
}

/// What is safe is underlined.
void StripSwitch::paint(CGraphic* g, CRect rect) {
    RoundButton::paint(g, rect);
    if (safe)
        g->fillRect(lit ? textOn(fillColour()) : win->app->gui->palette.solo,
                    asRect(4, rect.bottom - 4, rect.right - 4, rect.bottom - 2));
}

void StripSwitch::mouseDown(int x, int y, int btn) {
    if (!(btn & modLeft)) return;
    if ((btn & modControl) && kind == MixSwitch::solo)
        owner.toggleSafe();
    else
        owner.swipe(kind, this, x, y, btn);
}

void StripSwitch::describe(Description& d, int part) const {
    RoundButton::describe(d, part);
    if (safe) d.text = "solo safe";
}

void StripSwitch::click() {
    owner.toggle(kind);
}

// What it plays and where it leads.

StripChoice::StripChoice(CMixerStrip& strip, Kind what)
    : RoundButton(strip.win, what == source ? "source" : "target", "", 0, 0, 1, 1), owner(strip),
      kind(what) {
    skin = &clTrackControls;
}

CStr StripChoice::present() const {
    const MixerStrip& s = owner.strip();
    if (kind == target) {
        const CComp* to = stripTarget(s.comp->host, s.channel);
        return to ? to->id : CStr("None");
    }
    if (!s.ownsTrack()) return s.comp->getProgName(s.comp->curProg);
    const COutputChannel* from = trackSource(s.track->seq, s.track);
    if (!from) return "No input";
    return from->comp->id + (s.track->recChs == 1 ? ", mono" : "");
}

bool StripChoice::refresh() {
    const CStr now = present();
    if (now == shown) return false;
    shown = now;
    const char* what = kind == target              ? "Output: "
                       : owner.strip().ownsTrack() ? "Input: "
                                                   : "Program: ";
    hint = what + shown + ". Press for another one";
    redraw();
    return true;
}

void StripChoice::paint(CGraphic* g, CRect rect) {
    if (!paintRound(g, rect)) return;
    const TextScope small(g, {.size = TextSize::small});
    const CRect box = asRect(margin, 0, rect.right - arrowRoom, rect.bottom);
    g->drawText(faceColour(), textFace({.size = TextSize::small})->shortened(shown, box.width()),
                box, textLeft);
    const int x = rect.right - arrowRoom / 2 - 1, y = rect.bottom / 2;
    drawArrow(g, faceColour(), asRect(x - arrowReach, y - 2, x + arrowReach + 1, y + 2),
              kind == target ? dirRight : dirDown, arrowReach);
    paintFocus(g, rect, fillColour());
}

void StripChoice::click() {
    if (kind == target)
        owner.offerTargets(this);
    else if (owner.strip().ownsTrack())
        owner.offerSources(this);
    else
        owner.offerPrograms(this);
}

void StripChoice::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.text = shown.asChar();
}

// Inserts or equaliser.

ModeButton::ModeButton(CMixerStrip& strip)
    : CButton(strip.win, "mode", "", 0, 0, 1, 1), owner(strip) {
    hint = "Show the inserts, or the equaliser";
}

void ModeButton::choose(bool eq) {
    if (MixerState::showsEq(owner.strip()) != eq) owner.showEq(eq);
}

void ModeButton::mouseUp(int x, int y, int btn) {
    redraw();
    if ((btn & modLeft) && inside(x, y)) choose(x >= width / 2);
}

void ModeButton::click() {
    choose(!MixerState::showsEq(owner.strip()));
}

void ModeButton::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool eq = MixerState::showsEq(owner.strip());
    const TextScope small(g, {.size = TextSize::small});
    const int middle = rect.right / 2;
    const CRect halves[] = {asRect(0, 0, middle, rect.bottom),
                            asRect(middle, 0, rect.right, rect.bottom)};
    for (int i = 0; i < 2; i++) {
        const bool on = (i == 1) == eq;
        g->drawText(on ? colours.text : colours.dimText, i ? "eq" : "fx", halves[i], 0);
        g->fillLine(on ? colours.accent : colours.frame,
                    asRect(halves[i].left, rect.bottom - 1, halves[i].right, rect.bottom));
    }
    if (hasKeyFocus()) g->frameRect(colours.accent, rect);
}

void ModeButton::describe(Description& d, int part) const {
    CButton::describe(d, part);
    d.role = Role::toggle;
    d.text = MixerState::showsEq(owner.strip()) ? "Equaliser" : "Inserts";
}
