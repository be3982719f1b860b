// What is done to strips.
#include "mixer/CMixerPanel.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "effects/Inserts.h"
#include "engine/CGroupCh.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "instruments/CDrumSound.h"
#include "mixer/CMixerStrip.h"
#include "mixer/InsertSlot.h"
#include "mixer/StripLevels.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/edit/TrackEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackValues.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr const char* presetExt = ".qve";

} // namespace

void CMixerPanel::choose(CMixerStrip& strip, int btn) {
    state.choose(strip.strip(), btn);
    for (CMixerStrip* s : made) s->refresh();
}

bool CMixerPanel::renameSelected() {
    for (CMixerStrip* s : made) {
        if (!state.selected(s->strip())) continue;
        reveal(s);
        s->rename();
        return true;
    }
    return false;
}

void CMixerPanel::renameStrip(const MixerStrip& strip, const CStr& name) {
    CSeq* song = songOf(state.qv);
    if (song && strip.drum)
        renameObject(song, strip.drum, name);
    else if (song && strip.named)
        renameObject(song, strip.track, name);
    else
        renameComp(strip.comp, name);
}

/// Tracks go as tracks do; the rest in a step of its own.
void CMixerPanel::deleteSelected() {
    CSeq* song = songOf(state.qv);
    std::vector<CTrack*> tracks;
    std::vector<CComp*> comps;
    for (const MixerStrip& s : state.selection()) {
        if (s.drum) continue; // it goes from the kit
        if (s.ownsTrack())
            tracks.push_back(s.track);
        else if (s.comp->type != compSeq)
            comps.push_back(s.comp);
    }
    if (song && !tracks.empty()) deleteTracks(song, tracks);
    deleteComps(state.qv, comps);
    follow();
}

void CMixerPanel::groupSelected() {
    std::vector<COutputChannel*> led;
    for (const MixerStrip& s : state.selection())
        if (!s.drum && (s.section == StripSection::tracks || s.section == StripSection::groups))
            led.push_back(s.channel);
    if (led.empty()) return;
    groupStrips(state.qv, led);
    follow();
}

void CMixerPanel::setWide(bool wide) {
    std::vector<MixerStrip> meant = state.selection();
    if (meant.empty()) meant = state.shown;
    for (const MixerStrip& s : meant) MixerState::setWide(s, wide);
    layout();
}

void CMixerPanel::toggle(MixSwitch which, const MixerStrip& strip) {
    const auto own = switchOf(which, strip);
    if (!own) return;
    const double to = own->get()[0] != 0.0 ? 0.0 : 1.0;
    state.door()->begin();
    for (const MixerStrip& s : state.together(strip))
        if (const auto value = switchOf(which, s)) state.door()->set(*value, to);
    state.door()->end();
}

void CMixerPanel::toggleSafe(const MixerStrip& strip) {
    const double to = strip.channel->soloSafe ? 0.0 : 1.0;
    state.door()->begin();
    for (const MixerStrip& s : state.together(strip))
        if (!s.drum) state.door()->set(soloSafeOf(s.channel), to);
    state.door()->end();
    refresh();
}

void CMixerPanel::toggleSelected(MixSwitch which) {
    const std::vector<MixerStrip> selected = state.selection();
    if (!selected.empty()) toggle(which, selected.front());
}

void CMixerPanel::foldDrums(const MixerStrip& strip) {
    if (!strip.hasDrums()) return;
    unfoldDrums(strip, !drumsUnfolded(strip));
    follow();
}

bool CMixerPanel::anySolo() const {
    for (const MixerStrip& s : all)
        if (stripSolo(s).get()[0] != 0.0) return true;
    return false;
}

void CMixerPanel::unSolo() {
    state.door()->begin("Un-solo all");
    for (const MixerStrip& s : all) state.door()->set(stripSolo(s), 0.0);
    state.door()->end();
}

void CMixerPanel::clearPeaks(const MixerStrip& strip) {
    for (const MixerStrip& s : state.together(strip)) {
        s.channel->holdL = 0.0f;
        s.channel->holdR = 0.0f;
    }
}

// Inserts.

bool CMixerPanel::openInsert(CComp* insert) {
    if (!state.workspace.hasEditor(insert)) return false;
    state.workspace.openEditor(insert);
    return true;
}

void CMixerPanel::addPreset(const MixerStrip& strip, const CStr& path, int index) {
    if (!addInsertFile(strip.channel, path, index))
        showMsg(win, "Error", extractFileName(path) + " holds no effect");
}

void CMixerPanel::removeInsertAt(const MixerStrip& strip, int index) {
    if (auto* insert = strip.channel->inserts.items(index)) removeInsert(strip.channel, insert);
}

/// The keys stay with what was moved.
void CMixerPanel::stepInsert(CMixerStrip& strip, int index, int by) {
    COutputChannel* ch = strip.strip().channel;
    auto* insert = ch->inserts.items(index);
    const int to = index + by;
    if (!insert || to < 0 || to >= ch->inserts.getCount()) return;
    moveInsert(ch, insert, ch, by < 0 ? to : to + 1);
    for (CCtrl* stop : strip.stops())
        if (stop->id == "insert" && static_cast<InsertSlot*>(stop)->index == to)
            win->setKeyCtrl(stop);
}

bool CMixerPanel::takesInsertDrop() const {
    if (win->app->hasDragType(dropInsert)) return true;
    const auto* items = win->app->dragList;
    if (!items) return false;
    for (const auto* item : *items)
        if (item->type == dropFile && sameText(extractFileExt(item->path), presetExt)) return true;
    return false;
}

/// What is no insert goes where it would without the slot.
void CMixerPanel::dropInserts(const MixerStrip& strip, int index, int btn) {
    const COutputChannel* onto = strip.channel;
    if (state.workspace.takesDrop()) return;
    followIfStale();
    if (std::ranges::none_of(all, [onto](const MixerStrip& s) { return s.channel == onto; }))
        return;
    if (!takesInsertDrop()) {
        if (win->app->onStrayDrop) (*win->app->onStrayDrop)(win->app);
        return;
    }
    for (const auto* item : *win->app->dragList) {
        if (item->type == dropInsert) {
            auto* insert = asComp(item->object);
            const auto from = std::ranges::find_if(
                all, [insert](const MixerStrip& s) { return s.channel->inserts.contains(insert); });
            if (from == all.end()) continue;
            if (btn & modControl)
                copyInsert(insert, strip.channel, index);
            else
                moveInsert(from->channel, insert, strip.channel, index);
        } else if (item->type == dropFile && sameText(extractFileExt(item->path), presetExt)) {
            addPreset(strip, item->path, index);
        }
    }
}
