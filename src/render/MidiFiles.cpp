#include "render/MidiFiles.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/dialogs/CFileWin.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/song/CSeq.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* exportExt = ".mid";

/// With the loop on only the user knows which is meant; false for neither.
bool askRange(Workspace& workspace, CSeq* seq, MidiRange& range) {
    int from = 0, to = 0;
    seq->getLoopSection(from, to);
    if (!seq->getLoop() || from >= to) return true;
    const int answer =
        showMsg(workspace.mainWindow(), "Export to MIDI file",
                "The loop is on. Export only what it repeats? Else the whole song is exported.",
                mbYes | mbNo | mbCancel);
    if (answer == mbYes) range = MidiRange::loop;
    return answer != mbCancel;
}

} // namespace

void exportMIDIClicked(Workspace& workspace, CSeq* seq) {
    if (!seq || !seq->getProg()) return;
    const CStr project = seq->host->projectFile;
    const CStr name =
        changeFileExt(project.empty() ? "untitled.qv" : extractFileName(project), exportExt);
    MidiRange range = MidiRange::song;
    if (!askRange(workspace, seq, range)) return;
    CFileWin dialog(workspace.mainWindow(), "Save as", exportExt, workspace.dialogFolder(), name,
                    true);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    const MidiExport result = exportMIDIFile(seq, dialog.path, range);
    if (result == MidiExport::notCreated)
        showMsg(workspace.mainWindow(), "Error", CStr("Could not create file ") + dialog.path);
    if (result == MidiExport::noRoom)
        showMsg(workspace.mainWindow(), "Error", CStr("Could not write file ") + dialog.path);
    if (result == MidiExport::good) setStatus(CStr("Exported ") + dialog.path);
}
