#include "setup/PluginFoldersWin.h"

#include "base/CStringList.h"
#include "base/Messages.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/dialogs/CFileWin.h"
#include "ui/IniFolders.h"
#include "ui/Workspace.h"

#include <utility>

namespace {

constexpr int contentWide = 320, contentHigh = 240, buttonWide = 64;

} // namespace

PluginFoldersWin::PluginFoldersWin(CWin* owner, CQV* of)
    : CDialogWin(owner, "Plug-in folders", contentWide, contentHigh), host(of),
      list(new CListbox(this, "folders", margin, margin,
                        clientGroup->width - 2 * margin - gap - buttonWide,
                        contentBottom() - margin)),
      del(new CButton(this, "del", "Del", 0, margin + fieldHeight + gap, buttonWide, fieldHeight)) {
    list->spokenName = "Folders";
    list->setAlign(alignWidth | alignHeight, margin + gap + buttonWide,
                   clientGroup->height - contentBottom());
    wire(list->onChange, new _COnChange<PluginFoldersWin>(this, &PluginFoldersWin::rowChosen));
    auto* add = new CButton(this, "add", "Add", 0, margin, buttonWide, fieldHeight);
    wire(add->onChange, new _COnChange<PluginFoldersWin>(this, &PluginFoldersWin::addClicked));
    wire(del->onChange, new _COnChange<PluginFoldersWin>(this, &PluginFoldersWin::delClicked));
    addControl(list);
    for (CButton* b : {add, del}) {
        b->tabStop = true;
        b->setAlign(alignRight, margin, 0);
        addControl(b);
    }
    addButton("OK");
    startCtrl = add;
    fill();
}

void PluginFoldersWin::fill() {
    CStringList paths;
    readIniFolders(host, modeToSection(foldersPlugin), &paths);
    list->clearRows();
    for (int i = 0; i < paths.count(); i++) list->add(paths.get(i));
    rowChosen(nullptr);
    list->redraw();
}

void PluginFoldersWin::rowChosen(CObject*) {
    del->setEnabled(list->row(list->index) != nullptr);
}

void PluginFoldersWin::addClicked(CObject*) {
    CFolderWin dialog(this, "Add folder", "");
    dialog.showModal();
    if (!dialog.result) return;
    addIniFolder(host, modeToSection(foldersPlugin), dialog.path);
    fill();
}

void PluginFoldersWin::delClicked(CObject*) {
    const CListRow* chosen = list->row(list->index);
    if (chosen) delIniFolder(host, modeToSection(foldersPlugin), chosen->id);
    fill();
}

AskPluginFolders::AskPluginFolders(Workspace& space, std::shared_ptr<PluginProcesses> of)
    : PlacePlugins(std::move(of)), workspace(space) {
}

void AskPluginFolders::called() {
    takeErrors();
}

bool AskPluginFolders::askFolders(const CStr& name) {
    if (refused.count(name.asChar())) return false;
    const CStr question =
        "Plugin '" + name + "' not found. Do you want to setup your plugin folder now?";
    if (showMsg(workspace.mainWindow(), "File not found", question, mbYes | mbNo) != mbYes) {
        refused.insert(name.asChar());
        return false;
    }
    PluginFoldersWin(workspace.mainWindow(), workspace.host()).showModal();
    return true;
}
