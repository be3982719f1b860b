#include "mixer/StripMenus.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "engine/KeyInput.h"
#include "engine/ObjectKinds.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "mixer/CMixerPanel.h"
#include "project/PresetFiles.h"
#include "sequencer/edit/StripEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackRouting.h"
#include "sequencer/song/TrackValues.h"
#include "ui/ActionItems.h"
#include "ui/KeyMenu.h"
#include "ui/PluginMenu.h"
#include "ui/PresetMenu.h"
#include "ui/Workspace.h"

namespace {

constexpr int tagNone = -1;
constexpr int wetChoices[] = {100, 75, 50, 30, 15, 0};
constexpr const char* presetExt = ".qve";

} // namespace

CPopup* StripMenus::newPopup(const CCtrl* from) {
    auto* popup = new CPopup(from->win->app, from->win);
    popup->autoDelete = true;
    return popup;
}

bool StripMenus::stands() const {
    for (const MixerStrip& s : listStrips(panel.state.qv))
        if (s.channel == strip.channel) return true;
    return false;
}

CComp* StripMenus::insert() const {
    return stands() ? strip.channel->inserts.items(index) : nullptr;
}

// Where it leads, what it plays.

void StripMenus::offerTargets(CCtrl* from, const MixerStrip& of) {
    strip = of;
    targets = stripTargets(panel.state.qv, of.channel);
    const CComp* now = stripTarget(panel.state.qv, of.channel);
    CPopup* popup = newPopup(from);
    const auto entry = [&](const CStr& text, int tag, bool on) {
        CMenuItem* item =
            popup->add(text, new _COnChange<StripMenus>(this, &StripMenus::targetChosen));
        item->tag = tag;
        item->checked = on;
    };
    for (size_t i = 0; i < targets.size(); i++) entry(targets[i]->id, int(i), targets[i] == now);
    popup->addSeparator();
    entry("None", tagNone, !now);
    popup->popupBelow(from);
}

void StripMenus::targetChosen(CObject* sender) {
    const int tag = tagOf(sender);
    CComp* to = tag == tagNone ? nullptr : targets[size_t(tag)];
    CQV* host = panel.state.qv;
    if (!stands() || (to && !host->comps.contains(to))) return;
    std::vector<COutputChannel*> led;
    for (const MixerStrip& s : panel.state.together(strip))
        if (!s.drum) led.push_back(s.channel);
    setStripTargets(host, led, to);
}

void StripMenus::offerSources(CCtrl* from, const MixerStrip& of) {
    strip = of;
    CSeq* seq = of.track->seq;
    const std::vector<COutputChannel*> sources = trackSources(seq);
    const COutputChannel* now = trackSource(seq, of.track);
    CPopup* popup = newPopup(from);
    const auto entry = [&](const CStr& text, void (StripMenus::*chosen)(CObject*), int tag,
                           bool on) {
        CMenuItem* item = popup->add(text, new _COnChange<StripMenus>(this, chosen));
        item->tag = tag;
        item->checked = on;
    };
    for (size_t i = 0; i < sources.size(); i++)
        entry(sources[i]->comp->id, &StripMenus::sourceChosen, int(i), sources[i] == now);
    popup->addSeparator();
    entry("None", &StripMenus::sourceChosen, tagNone, !now);
    popup->addSeparator();
    entry("Stereo", &StripMenus::channelsChosen, 2, of.track->recChs == 2);
    entry("Mono", &StripMenus::channelsChosen, 1, of.track->recChs == 1);
    popup->popupBelow(from);
}

void StripMenus::sourceChosen(CObject* sender) {
    if (!stands()) return;
    CSeq* seq = strip.track->seq;
    const std::vector<COutputChannel*> sources = trackSources(seq);
    const int tag = tagOf(sender);
    if (tag >= int(sources.size())) return;
    std::vector<CTrack*> tracks;
    for (const MixerStrip& s : panel.state.together(strip))
        if (s.ownsTrack()) tracks.push_back(s.track);
    setTrackSources(seq, tracks, tag == tagNone ? nullptr : sources[size_t(tag)]);
}

void StripMenus::channelsChosen(CObject* sender) {
    if (!stands()) return;
    panel.state.door()->begin();
    for (const MixerStrip& s : panel.state.together(strip))
        if (s.ownsTrack() && s.track->kind == trackAudio)
            panel.state.door()->set(recChannelsOf(s.track), tagOf(sender));
    panel.state.door()->end();
}

void StripMenus::offerPrograms(CCtrl* from, const MixerStrip& of) {
    strip = of;
    CPopup* popup = newPopup(from);
    for (int i = 0; i < of.comp->numProgs(); i++) {
        CMenuItem* item = popup->add(of.comp->getProgName(i),
                                     new _COnChange<StripMenus>(this, &StripMenus::programChosen));
        item->tag = i;
        item->checked = i == of.comp->curProg;
    }
    popup->popupBelow(from);
}

void StripMenus::programChosen(CObject* sender) {
    if (stands()) panel.state.door()->set(programOfComp(strip.comp), tagOf(sender));
}

// Effects.

void StripMenus::fillKinds(CPopup* popup, void (StripMenus::*chosen)(CObject*)) {
    for (int kind = 0; kind < effectKindCount; kind++)
        popup->add(effectName(kind), new _COnChange<StripMenus>(this, chosen))->tag = kind;
    popup->addSeparator();
}

void StripMenus::fillPlugins(CPopup* popup,
                             const std::function<void(std::unique_ptr<CComp>)>& chosen) {
    fillPluginMenu(popup->addSub("Plug-in"), panel.state.workspace, PluginUse::effect,
                   [this, chosen](std::unique_ptr<CComp> made) {
                       if (stands()) chosen(std::move(made));
                   });
    popup->addSeparator();
}

void StripMenus::offerEffects(CCtrl* from, const MixerStrip& of, int at) {
    strip = of;
    index = at;
    CPopup* popup = newPopup(from);
    if (CComp* present = insert()) {
        fillInsert(popup, present);
    } else {
        fillKinds(popup, &StripMenus::addChosen);
        fillPlugins(popup, [this](std::unique_ptr<CComp> made) {
            addInsert(strip.channel, std::move(made), index);
        });
        fillPresets(popup);
        popup->add("Open preset...", new _COnChange<StripMenus>(this, &StripMenus::presetChosen));
    }
    popup->popupBelow(from);
}

void StripMenus::fillInsert(CPopup* popup, CComp* present) {
    const auto add = [&](CPopup* to, const CStr& text, void (StripMenus::*chosen)(CObject*),
                         int tag = 0) {
        CMenuItem* item = to->add(text, new _COnChange<StripMenus>(this, chosen));
        item->tag = tag;
        return item;
    };
    if (panel.state.workspace.hasEditor(present)) add(popup, "Open", &StripMenus::openChosen);
    add(popup, "On", &StripMenus::powerChosen)->checked = present->enabled != 0;
    CPopup* wet = popup->addSub("Wet");
    const int percent = asRound(double(present->wet) * 100);
    for (const int choice : wetChoices)
        add(wet, asStr(choice) + "%", &StripMenus::wetChosen, choice)->checked = choice == percent;
    if (offersKey(present))
        fillKeyMenu(
            popup->addSub("Follow"),
            [this, present] { return insert() == present ? present : nullptr; },
            [this](const COutputChannel* s) { return nameOfStrip(panel.state.qv, s); });
    popup->addSeparator();
    CPopup* other = popup->addSub("Replace by");
    fillKinds(other, &StripMenus::replaceChosen);
    fillPlugins(other, [this](std::unique_ptr<CComp> made) {
        replaceInsert(strip.channel, index, std::move(made));
    });
    CPopup* before = popup->addSub("Insert before");
    fillKinds(before, &StripMenus::addChosen);
    fillPlugins(before, [this](std::unique_ptr<CComp> made) {
        addInsert(strip.channel, std::move(made), index);
    });
    add(popup, "Move up", &StripMenus::moveChosen, -1)->enabled = index > 0;
    add(popup, "Move down", &StripMenus::moveChosen, 1)->enabled =
        index + 1 < strip.channel->inserts.getCount();
    popup->addSeparator();
    fillPresets(popup);
    add(popup, "Open preset...", &StripMenus::presetChosen);
    if (present->type == compEffect) add(popup, "Save as preset...", &StripMenus::saveChosen);
    popup->addSeparator();
    add(popup, "Remove", &StripMenus::removeChosen);
}

void StripMenus::addChosen(CObject* sender) {
    if (stands()) addInsert(strip.channel, tagOf(sender), index);
}

void StripMenus::replaceChosen(CObject* sender) {
    if (stands()) replaceInsert(strip.channel, index, tagOf(sender));
}

void StripMenus::fillPresets(CPopup* popup) {
    addPresetMenu(popup, "Presets", panel.state.qv, presetExt,
                  [this](const CStr& path) { takePreset(path); });
}

void StripMenus::presetChosen(CObject*) {
    Workspace& space = panel.state.workspace;
    CFileWin dialog(space.mainWindow(), "Open preset", presetExt, space.dialogFolder(), "", false);
    dialog.showModal();
    if (dialog.result) takePreset(dialog.path);
}

/// In place of what the insert holds; on an empty place a new one.
void StripMenus::takePreset(const CStr& path) {
    if (!stands()) return;
    CComp* present = insert();
    if (auto* rack = compAs<CEffect>(present))
        rack->openProg(path);
    else
        panel.addPreset(strip, path, index);
}

void StripMenus::saveChosen(CObject*) {
    CComp* present = insert();
    if (!present || present->type != compEffect) return;
    Workspace& space = panel.state.workspace;
    CFileWin dialog(space.mainWindow(), "Save preset", presetExt, space.dialogFolder(),
                    present->id + presetExt, true);
    dialog.showModal();
    if (dialog.result && insert() == present)
        saveProgram(static_cast<CEffect*>(present), dialog.path);
}

void StripMenus::powerChosen(CObject*) {
    if (CComp* present = insert())
        panel.state.door()->set(parameterOf(present, paramPower), present->enabled ? 0.0 : 1.0);
}

void StripMenus::wetChosen(CObject* sender) {
    if (CComp* present = insert())
        panel.state.door()->set(parameterOf(present, paramWet), tagOf(sender) / 100.0);
}

void StripMenus::openChosen(CObject*) {
    if (CComp* present = insert()) panel.openInsert(present);
}

void StripMenus::removeChosen(CObject*) {
    if (CComp* present = insert()) removeInsert(strip.channel, present);
}

void StripMenus::moveChosen(CObject* sender) {
    const int by = tagOf(sender);
    if (CComp* present = insert())
        moveInsert(strip.channel, present, strip.channel, by < 0 ? index - 1 : index + 2);
}

// Whole strips.

void StripMenus::fillStrips(CPopup* popup) {
    Workspace& space = panel.state.workspace;
    addActionItem(popup, space, "rename", "Rename...");
    addActionItems(popup, space, {"mixmute", "mixsolo", "solosafe", "unsolo"});
    addActionItems(popup, space, {"narrowstrips", "widestrips", "drumstrips"});
    addActionItems(popup, space, {"addgroup", "addsend", "groupstrips"});
    addActionItems(popup, space, {"delete"});
    if (popup->items.empty()) popup->add("Empty", nullptr)->enabled = false;
}

void StripMenus::openAt(void (StripMenus::*fill)(CPopup*)) {
    CApp* app = panel.win->app;
    const CPoint at = app->menuPoint();
    CPopup* popup = newPopup(&panel);
    (this->*fill)(popup);
    popup->popup(at.x, at.y, app->menuCtrl != nullptr);
}
