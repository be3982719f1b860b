#include "notes/NoteCommands.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "notes/CEditorWin.h"
#include "sequencer/CEditorComp.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

NoteCommands::NoteCommands(Workspace& space, EditorTable& editors)
    : workspace(space), listShown(space.host(), "event-list", 0),
      othersShown(space.host(), "other-notes", 0), computerKeys(space) {
    editors.enter(compEditor, [](Workspace& around, CComp& comp) -> std::unique_ptr<CCompEditor> {
        return std::make_unique<CEditorWin>(around, static_cast<CEditorComp&>(comp));
    });
    workspace.commands().bind(
        "edit", [this] { workspace.openPart(selectedPart()); },
        [this] { return selectedPart() != nullptr; });
    for (const char* name : {"octup", "octdown", "trackzoomin", "trackzoomout", "insertnote",
                             "transform", "playrange"})
        workspace.commands().leave(name);
    workspace.commands().bind(
        "steprec", [this] { toggleSteps(); },
        [this] { return seq() && (seq()->stepRec.getPart() || stepPart()); },
        [this] { return seq() && seq()->stepRec.getPart(); });
    workspace.commands().bind(
        "computerkeys", [this] { computerKeys.set(!computerKeys.on()); }, [] { return true; },
        [this] { return computerKeys.on(); });
    bindSwitches();
}

/// The part in the editor in front, else the selected one.
CPart* NoteCommands::stepPart() const {
    CSeq* song = seq();
    if (!song || !workspace.inFront(song->editorComp.get())) return selectedPart();
    return song->editorComp->part();
}

/// Steps show in the editor.
void NoteCommands::toggleSteps() {
    CPart* part = seq()->stepRec.getPart() ? nullptr : stepPart();
    seq()->recordSteps(part);
    const bool begun = part && seq()->stepRec.getPart() == part;
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
}
