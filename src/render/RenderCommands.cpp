#include "render/RenderCommands.h"

#include "base/Messages.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "render/CRenderWin.h"
#include "render/MidiFiles.h"
#include "sequencer/render/Freezing.h"
#include "sequencer/song/CSeq.h"
#include "ui/CProgressWin.h"
#include "ui/Commands.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* bounceTitle = "Bounce to new track";

}

RenderCommands::RenderCommands(Workspace& space) : workspace(space), qv(space.host()) {
    const auto ready = [this] { return seq() && workspace.pumping == 0; };
    Commands& commands = workspace.commands();
    commands.bind(
        "render", [this] { exportSong(); }, ready);
    commands.bind(
        "exportmidi", [this] { exportMidi(); }, ready);
    commands.bind(
        "freeze", [this] { freeze(); },
        [this, ready] { return ready() && !seq()->selection.tracks.empty(); },
        [this] { return frozen(); });
    commands.bind(
        "bounce", [this] { bounce(); }, ready);
}

CSeq* RenderCommands::seq() const {
    return playableSongOf(qv);
}

/// Whether a selected track is, so that freezing would end that.
bool RenderCommands::frozen() const {
    if (!seq()) return false;
    for (auto* t : seq()->getProg()->tracks)
        if (t->track->selected() && !t->freezeItems.empty()) return true;
    return false;
}

/// What an offline render has played is not what the user has heard.
void RenderCommands::clearMeters() {
    for (const auto* list : listsOf(qv->comps, qv->sends))
        for (auto* comp : *list)
            for (auto* channel : comp->outputs)
                for (Shared<float>* peak :
                     {&channel->peakL, &channel->peakR, &channel->holdL, &channel->holdR})
                    *peak = 0.0f;
}

void RenderCommands::exportSong() {
    exportProject(workspace, seq());
    clearMeters();
}

void RenderCommands::exportMidi() {
    exportMIDIClicked(workspace, seq());
}

void RenderCommands::freeze() {
    CProgressWin progress(workspace, "Freeze");
    const bool before = frozen();
    const RenderResult result = freezeTracks(seq(), &progress);
    clearMeters();
    if (result == RenderResult::good && !before && !frozen())
        setStatus("The selected tracks are silent: there is nothing to freeze");
}

void RenderCommands::bounce() {
    ListOf<CPart> selected;
    seq()->getProg()->getSelectedParts(&selected);
    const int range = readBounceRange(qv);
    if (range == rangeSelected && selected.empty()) {
        showMsg(workspace.mainWindow(), bounceTitle,
                "No part is selected. Ctrl+A selects all of them; Track, \"Bounce range\" offers "
                "other ranges.");
        return;
    }
    CProgressWin progress(workspace, bounceTitle);
    bounceToNewTrack(seq(), range, &progress);
    clearMeters();
}
