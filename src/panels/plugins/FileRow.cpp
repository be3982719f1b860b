#include "panels/plugins/FileRow.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/dialogs/CFileWin.h"
#include "panels/plugins/ParamRow.h"
#include "plugins/CVST.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

FileRow::FileRow(CWin* owner, Workspace& space, CVST& of, int number)
    : CButton(owner, "file " + asStr(number), "", 0, 0, 1, ParamRow::usualHeight), workspace(space),
      plugin(of), index(number) {
    skin = &clTrackControls;
    tabStop = true;
}

void FileRow::show(const Plugin::File& file) {
    const CStr now =
        file.name + ": " + (file.path.empty() ? CStr("none") : extractFileName(file.path));
    if (now == text) return;
    setText(now);
    spokenName = now;
    hint = "Chooses a file" + (file.path.empty() ? CStr() : " in place of " + file.path);
}

void FileRow::click() {
    CFileWin dialog(win, "Choose file", "", workspace.dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    plugin.giveFile(index, dialog.path);
}
