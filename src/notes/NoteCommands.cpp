#include "notes/NoteCommands.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "notes/CEditorWin.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/NoteDrawing.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <utility>

NoteCommands::NoteCommands(Workspace& space, EditorTable& editors)
    : workspace(space), listShown(space.host(), "event-list", 0),
      othersShown(space.host(), "other-notes", 0), folded(space.host(), "fold-rows", 0),
      colours(space.host(), "note-colours", colourVelocity),
      together(space.host(), "edit-together", 1), computerKeys(space) {
    editors.enter(compEditor, [](Workspace& around, CComp& comp) -> std::unique_ptr<CCompEditor> {
        return std::make_unique<CEditorWin>(around, static_cast<CEditorComp&>(comp));
    });
    workspace.commands().bind(
        "edit", [this] { workspace.openPart(selectedPart()); },
        [this] { return selectedPart() != nullptr; });
    for (const char* name :
         {"octup", "octdown", "trackzoomin", "trackzoomout", "insertnote", "transform", "playrange",
          "mutenotes", "addlane", "removelane", "zoomcontent", "loopvisible", "outofscale"})
        workspace.commands().leave(name);
    workspace.commands().bind(
        "steprec", [this] { toggleSteps(); },
        [this] { return seq() && (seq()->recorder.stepRec.getPart() || stepPart()); },
        [this] { return seq() && seq()->recorder.stepRec.getPart(); });
    workspace.commands().bind(
        "computerkeys", [this] { computerKeys.set(!computerKeys.on()); }, [] { return true; },
        [this] { return computerKeys.on(); });
    workspace.commands().bind(
        "playlastbar", [this] { playLastBar(); }, [this] { return seq() != nullptr; });
    bindSwitches();
    bindTools();
    bindColours();
}

/// The part in the editor in front, else the selected one.
CPart* NoteCommands::stepPart() const {
    CSeq* song = seq();
    if (!song || !workspace.inFront(song->editorComp.get())) return selectedPart();
    return song->editorComp->part();
}

/// Steps show in the editor.
void NoteCommands::toggleSteps() {
    CPart* part = seq()->recorder.stepRec.getPart() ? nullptr : stepPart();
    seq()->recorder.recordSteps(part);
    const bool begun = part && seq()->recorder.stepRec.getPart() == part;
    if (begun) workspace.openPart(part);
    workspace.setStatus(!part    ? "Step record off"
                        : !begun ? "The part can't be recorded: its track is locked"
                                 : "Step record: keys write chords, Right rests, Ctrl+Right ties, "
                                   "Backspace takes back, Escape ends it");
}

CSeq* NoteCommands::seq() const {
    return playableSongOf(workspace.host());
}

/// That has an editor.
CPart* NoteCommands::selectedPart() const {
    CSeq* song = seq();
    CPart* found = song ? song->getFirstSelectedPart(0, nullptr) : nullptr;
    return found && workspace.canOpen(found) ? found : nullptr;
}

void NoteCommands::bindSwitches() {
    Commands& commands = workspace.commands();
    const auto withSong = [this] { return seq() != nullptr; };
    commands.bind(
        "preview", [this] { seq()->preview = !seq()->preview; }, withSong,
        [this] { return seq() && seq()->preview; });
    const auto bindByte = [&](const char* name, SongOptions::Index byte) {
        const auto on = [this, byte] { return seq() && seq()->options.bytes[byte] != 0; };
        commands.bind(
            name,
            [this, byte, on] {
                workspace.host()->values->set(optionOf(seq(), byte), {on() ? 0.0 : 1.0});
                seq()->songNotices.raise(SeqNotice::parts);
            },
            withSong, on);
    };
    commands.bind(
        "eventlist", [this] { listShown.toggle(); }, withSong, [this] { return listShown.on(); });
    commands.bind(
        "othernotes",
        [this] {
            othersShown.toggle();
            seq()->songNotices.raise(SeqNotice::parts);
        },
        withSong, [this] { return othersShown.on(); });
    bindByte("notenames", SongOptions::showNoteNames);
    bindByte("notelength", SongOptions::rememberNotes);
    commands.bind(
        "foldrows", [this] { folded.toggle(); }, withSong, [this] { return folded.on(); });
    commands.bind(
        "edittogether", [this] { together.toggle(); }, withSong, [this] { return together.on(); });
}

/// Each goes on with the pointer when it is chosen again.
void NoteCommands::bindTools() {
    const auto keeps = [this] { return seq() && seq()->editorComp->snapsToScale; };
    workspace.commands().bind(
        "scalesnap", [this, keeps] { seq()->editorComp->snapsToScale = !keeps(); },
        [this] { return seq() != nullptr; }, keeps);
    constexpr std::pair<const char*, int> tools[] = {
        {"painttool", toolPaint}, {"knifetool", toolKnife}, {"gluetool", toolGlue}};
    for (const auto& [name, tool] : tools) {
        const auto on = [this, tool = tool] { return seq() && seq()->editorComp->tool == tool; };
        workspace.commands().bind(
            name,
            [this, tool = tool, on] { seq()->editorComp->tool = on() ? int(toolPointer) : tool; },
            [this] { return seq() != nullptr; }, on);
    }
}

void NoteCommands::bindColours() {
    constexpr std::pair<const char*, int> all[] = {{"colourvelocity", colourVelocity},
                                                   {"colourchannel", colourChannel},
                                                   {"colourpitch", colourPitch}};
    for (const auto& [name, by] : all)
        workspace.commands().bind(
            name, [this, by = by] { colours.set(by); }, [this] { return seq() != nullptr; },
            [this, by = by] { return colours.get() == by; });
}

/// The bar before the one that the position is in; at the start of a song that one.
void NoteCommands::playLastBar() {
    CQV* host = workspace.host();
    const int bar = barPlace(seq(), asInt(seq()->getPos())).bar;
    host->setPos(tickOf(seq(), {std::max(1, bar - 1), 1, 0}));
    if (host->playing == 0) host->start();
}
