#include "base/CIniFile.h"
#include "base/CStringList.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "browser/BrowserTree.h"
#include "browser/CBrowser.h"
#include "browser/CPreviewPanel.h"
#include "browser/FileNames.h"
#include "browser/ListedFiles.h"
#include "effects/Inserts.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "gui/dialogs/CTextWin.h"
#include "sequencer/song/SampleUse.h"
#include "ui/IniFolders.h"
#include "ui/MenuDeed.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* rackExt = ".qve";

constexpr struct {
    const char* text;
    int mode;
} folderKinds[] = {{"Project Folder", foldersProject},
                   {"Plugin Folder", foldersPlugin},
                   {"Preset Folder", foldersPreset},
                   {"Clip Folder", foldersClip},
                   {"Sample Folder", foldersSample}};

bool isFolder(const CTreeNode* node) {
    return node->kind == nodeFolder || node->kind == nodePluginFolder;
}

} // namespace

void CBrowser::rightClicked(CObject* sender) {
    auto* from = static_cast<BrowserTree*>(sender);
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    fillMenu(popup, from->current);
    const CPoint at = win->app->menuPoint();
    popup->popup(at.x, at.y, win->app->menuCtrl);
}

void CBrowser::fillMenu(CPopup* popup, CTreeNode* node) {
    fillFile(popup, node);
    fillFolders(popup, node);
    popup->addSeparator();
    if (!searching) addDeed(popup, "Refresh", [this, node] { tree->refresh(node); });
    addDeed(popup, "Setup VST folder...", deeds.setUpPlugins);
    CMenuItem* unused = addDeed(popup, "Remove unused", [this] { removeUnused(); });
    unused->enabled = !unusedSamples(qv).empty();
    addDeed(popup, "Show preview", [this] { togglePreview(); })->checked = panel->height > 0;
}

// Files.

void CBrowser::fillFile(CPopup* popup, CTreeNode* node) {
    const bool file = BrowserTree::isFile(node);
    if (file || node->kind == nodeComponent || node->kind == nodeAction)
        addDeed(popup, node->kind == nodeAction ? "Run" : "Open", [this, node] { execute(node); });
    if (sameText(extractFileExt(node->path), rackExt))
        addDeed(popup, "Add as Send", [this, path = node->path] {
            if (!addSendFile(qv, path))
                showMsg(workspace.mainWindow(), "Error", "Could not read " + extractFileName(path));
        });
    if (!file && !isFolder(node)) return;
    const CStr path = node->path;
    popup->addSeparator();
    addDeed(popup, "Favourite", [this, path] { toggleFavourite(path); })->checked =
        onShelf(FileShelf::favourites, path);
    if (file && node->kind != nodePoolSample)
        addDeed(popup, "Tags...", [this, path] { editTags(path); });
    addDeed(popup, "Show in folder",
            [path] { showFolder(folderExists(path) ? path : extractFilePath(path)); });
    if (file && node->kind != nodePluginFile)
        addDeed(popup, "Rename...", [this, node] { rename(node); })->enabled = fileExists(path);
}

void CBrowser::toggleFavourite(const CStr& path) {
    if (onShelf(FileShelf::favourites, path))
        takeOffShelf(FileShelf::favourites, path);
    else
        putOnShelf(FileShelf::favourites, path);
    tree->refreshNode(nodeFavourites);
}

void CBrowser::editTags(const CStr& path) {
    FileTags tags = readTags();
    CTextWin dialog(workspace.mainWindow(), "Tags of " + extractFileName(path),
                    tags[path.asChar()].c_str(), "Words to find it by");
    dialog.mayBeEmpty = true;
    dialog.showModal();
    if (!dialog.result) return;
    setTags(path, dialog.text);
    tree->refreshNode(nodeTags);
    if (searching) look();
}

void CBrowser::rename(CTreeNode* node) {
    const CStr former = node->path;
    CTextWin dialog(workspace.mainWindow(), "Rename", extractFileName(former), "Name");
    dialog.showModal();
    if (!dialog.result) return;
    const CStr why = renameFile(qv, former, dialog.text.trim());
    if (!why.empty()) showMsg(workspace.mainWindow(), "Error", why);
    for (const int kind : {nodeFavourites, nodeRecent, nodeTags}) tree->refreshNode(kind);
    if (searching) look();
}

void CBrowser::removeUnused() {
    const int count = removeUnusedSamples(qv);
    workspace.setStatus(count == 1 ? CStr("One sample left the project")
                                   : asStr(count) + " samples left the project");
}

void CBrowser::togglePreview() {
    panel->height = panel->height > 0 ? 0 : usualPreview;
    resized();
    redraw();
}

// Folders.

int CBrowser::folderModeOf(CTreeNode* node) const {
    CTreeNode* top0 = BrowserTree::topOf(node);
    const BrowserKind* kind = top0 && top0 == node->parent ? topKind(top0->kind) : nullptr;
    return kind ? kind->folders : 0;
}

void CBrowser::fillFolders(CPopup* popup, CTreeNode* node) {
    popup->addSeparator();
    const BrowserKind* kind = topKind(node->kind);
    CTreeNode* top0 = BrowserTree::topOf(node);
    if (node->kind == nodeNote && top0 && top0 != node) kind = topKind(top0->kind);
    if (kind && kind->folders)
        addDeed(popup, "Add folder...", [this, mode = kind->folders] { askFolder(mode); });
    if (!isFolder(node)) return;
    CPopup* as = popup->addSub("Add as");
    for (const auto& k : folderKinds)
        addDeed(as, k.text, [this, mode = k.mode, path = node->path] { addFolder(mode, path); });
    if (folderModeOf(node) != 0)
        addDeed(popup, "Remove folder", [this, node] { removeFolder(node); });
}

void CBrowser::addFolder(int mode, const CStr& path) {
    addIniFolder(qv, modeToSection(mode), path);
    qv->changedFolders = mode;
    qv->hostNotices.raise(HostNotice::folders);
}

void CBrowser::askFolder(int mode) {
    CFolderWin dialog(workspace.mainWindow(), "Add folder", "");
    dialog.showModal();
    if (dialog.result) addFolder(mode, dialog.path);
}

void CBrowser::removeFolder(CTreeNode* node) {
    const int mode = folderModeOf(node);
    delIniFolder(qv, modeToSection(mode), node->path);
    qv->changedFolders = mode;
    qv->hostNotices.raise(HostNotice::folders);
}
