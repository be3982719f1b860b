#include "arrange/TargetMenu.h"

#include "engine/CQV.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"
#include "sequencer/song/TrackRouting.h"
#include "ui/PluginMenu.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

constexpr int tagNone = -1;

} // namespace

const char* TargetMenu::nameFor(const CTrack* track) {
    return track->kind == trackFolder ? "" : track->kind == trackMIDI ? "Instrument" : "Output";
}

void TargetMenu::fill(CPopup* popup, Workspace& workspace, CSeq* seq,
                      const std::vector<CTrack*>& tracks) {
    song = seq;
    led = tracks;
    targets = trackTargets(seq, tracks.front());
    CComp* now = trackTarget(seq, tracks.front());
    const auto entry = [&](const CStr& text, int tag, bool checked) {
        CMenuItem* item = popup->add(text, new _COnChange<TargetMenu>(this, &TargetMenu::chosen));
        item->tag = tag;
        item->checked = checked;
    };
    for (size_t i = 0; i < targets.size(); i++) entry(targets[i]->id, int(i), targets[i] == now);
    popup->addSeparator();
    if (tracks.front()->kind == trackMIDI) {
        popup->add("Add synthesizer", new _COnChange<TargetMenu>(this, &TargetMenu::addClicked));
        fillPluginMenu(popup->addSub("Plug-in"), workspace, PluginUse::instrument,
                       [this](std::unique_ptr<CComp> made) { play(std::move(made)); });
    }
    entry("None", tagNone, !now);
    if (!now || !workspace.hasEditor(now)) return;
    popup->addSeparator();
    popup->add("Open " + now->id, new _COnChange<TargetMenu>(this, &TargetMenu::openClicked));
}

void TargetMenu::addClicked(CObject*) {
    play(newSynthesizer(qv));
}

void TargetMenu::openClicked(CObject*) {
    if (songOf(qv) != song || !song->tracks.contains(led.front())) return;
    if (CComp* now = trackTarget(song, led.front())) now->edit(true);
}

/// The first of the tracks plays it, and then the others, all in one step.
void TargetMenu::play(std::unique_ptr<CComp> made) {
    if (songOf(qv) != song) return;
    std::erase_if(led, [this](CTrack* t) { return !song->tracks.contains(t); });
    if (!led.empty()) setTrackInstrument(song, led, std::move(made));
}

void TargetMenu::chosen(CObject* sender) {
    const int tag = tagOf(sender);
    CComp* to = tag == tagNone ? nullptr : targets[size_t(tag)];
    if (songOf(qv) != song || (to && !qv->comps.contains(to))) return;
    std::erase_if(led, [this](CTrack* t) { return !song->tracks.contains(t); });
    setTrackTargets(song, led, to);
}
