#include "app/main/MidiFiles.h"

#include "app/main/CMainWin.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/dialogs/CFileWin.h"
#include "project/SongSounds.h"
#include "sequencer/CSeq.h"
#include "sequencer/MidiExport.h"
#include "sequencer/MidiImport.h"

namespace {

constexpr const char* exportExt = ".mid";
constexpr const char* importExt = ".mid|.midi|.kar";

/// What neither form of the import tells by itself.
void tell(CMainWin* window, bool unreadable, bool truncated, const CStr& path) {
    if (unreadable) showMsg(window, "Error", CStr("Could not open file ") + path);
    if (truncated) showMsg(window, "Error", path + " is cut short");
}

void import(CMainWin* window, CSeq* seq, const CStr& path) {
    if (!seq->getProg()->hasParts()) {
        const MidiSongResult result = openMidiSong(seq, path);
        tell(window, result == MidiSongResult::unreadable, result == MidiSongResult::truncated,
             path);
        return;
    }
    CUndo* step = seq->host->undoStart("Import", seq, undoSongChanged);
    const MidiImport result = openMIDIFile(seq, nullptr, path, step, 0);
    seq->host->undoEnd(step, true);
    tell(window, result == MidiImport::unreadable, result == MidiImport::truncated, path);
}

} // namespace

void importMIDIClicked(CMainWin* window, CSeq* seq) {
    if (!seq || !seq->getProg()) return;
    CFileWin dialog(window, "Import MIDI file", importExt, window->dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    window->projectFolder = dialog.folder;
    import(window, seq, dialog.path);
}

void exportMIDIClicked(CMainWin* window, CSeq* seq) {
    if (!seq || !seq->getProg()) return;
    const CStr project = seq->host->projectFile;
    const CStr name =
        changeFileExt(project.empty() ? "untitled.qv" : extractFileName(project), exportExt);
    CFileWin dialog(window, "Save as", exportExt, window->dialogFolder(), name, true);
    dialog.showModal();
    if (!dialog.result) return;
    window->projectFolder = dialog.folder;
    const MidiExport result = exportMIDIFile(seq, dialog.path);
    if (result == MidiExport::notCreated)
        showMsg(window, "Error", CStr("Could not create file ") + dialog.path);
    if (result == MidiExport::noRoom)
        showMsg(window, "Error", CStr("Could not write file ") + dialog.path);
    if (result == MidiExport::good) setStatus(CStr("Exported ") + dialog.path);
}
