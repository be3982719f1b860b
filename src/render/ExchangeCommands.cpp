#include "render/ExchangeCommands.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/dialogs/CFileWin.h"
#include "interchange/DawFiles.h"
#include "sequencer/song/CSeq.h"
#include "ui/CListWin.h"
#include "ui/CProgressWin.h"
#include "ui/Commands.h"
#include "ui/PluginShelf.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <utility>

namespace {

constexpr const char *exportTitle = "Export DAWproject", *importTitle = "Import DAWproject";

} // namespace

ExchangeCommands::ExchangeCommands(Workspace& space) : workspace(space), qv(space.host()) {
    const auto ready = [this] { return seq() && workspace.pumping == 0; };
    Commands& commands = workspace.commands();
    commands.bind(
        "exportdaw", [this] { exportDaw(); }, ready);
    commands.bind(
        "importdaw", [this] { importDaw(); }, ready);
}

CSeq* ExchangeCommands::seq() const {
    return playableSongOf(qv);
}

void ExchangeCommands::exportDaw() {
    const CStr project = qv->projectFile;
    const CStr name =
        changeFileExt(project.empty() ? "untitled.qv" : extractFileName(project), dawFileExt);
    CFileWin dialog(workspace.mainWindow(), exportTitle, dawFileExt, workspace.dialogFolder(), name,
                    true);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    std::vector<CStr> lost;
    DawResult result = DawResult::good;
    {
        CProgressWin progress(workspace, exportTitle);
        result = exportDawProject(seq(), dialog.path, lost, watchBy(progress));
    }
    if (result == DawResult::notWritten)
        showMsg(workspace.mainWindow(), "Error", CStr("Could not write file ") + dialog.path);
    if (result != DawResult::good) return;
    setStatus(CStr("Exported ") + dialog.path);
    showList(workspace.mainWindow(), exportTitle, "The file does not hold:", lost);
}

void ExchangeCommands::importDaw() {
    CFileWin dialog(workspace.mainWindow(), importTitle, dawFileExt, workspace.dialogFolder(), "",
                    false);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    importFile(dialog.path);
}

bool ExchangeCommands::openFile(const CStr& path) {
    if (!sameText(extractFileExt(path), dawFileExt)) return false;
    waiting.push_back(path);
    return true;
}

void ExchangeCommands::serve() {
    if (waiting.empty() || workspace.pumping) return;
    const std::vector<CStr> paths = std::exchange(waiting, {});
    if (!seq()) return setStatus("There is no song to bring files into");
    if (qv->recording || qv->recUndo) return setStatus("Nothing can be imported while recording");
    for (const CStr& path : paths) importFile(path);
}

void ExchangeCommands::importFile(const CStr& path) {
    std::vector<CStr> lost;
    DawResult result = DawResult::good;
    {
        CProgressWin progress(workspace, importTitle);
        result =
            importDawProject(seq(), path, lost, watchBy(progress), &workspace.pluginShelf().list);
    }
    if (result == DawResult::unreadable)
        showMsg(workspace.mainWindow(), "Error", CStr("No DAWproject, or damaged: ") + path);
    if (result == DawResult::noRoom)
        showMsg(workspace.mainWindow(), "Error", CStr("There is no room for all of ") + path);
    if (result != DawResult::good) return;
    setStatus(CStr("Imported ") + path);
    showList(workspace.mainWindow(), importTitle, "What could not be brought in:", lost);
}
