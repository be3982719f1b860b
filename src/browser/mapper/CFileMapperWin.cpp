#include "browser/mapper/CFileMapperWin.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "browser/mapper/CFileMapper.h"
#include "gui/CApp.h"
#include "gui/Drawing.h"
#include "gui/GuiItem.h"
#include "gui/Selections.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "gui/dialogs/CTextWin.h"

#include <cstdio>

namespace {

constexpr int winWide = 300, winHigh = 360, leastSide = 128;
constexpr int winStyle = winCaption | winSizable | winKeysToOwner;
constexpr int margin = 8, gap = 4, rowHeight = 20, listTop = 36;
constexpr int mapsWide = 128, arrowSize = 3;
constexpr const char* section = "file mapper";

CStr rowText(int place, const CStr& path) {
    char number[16];
    std::snprintf(number, sizeof number, "%.2d - ", place);
    return CStr(number) + extractFileName(path);
}

} // namespace

CFileMapperWin::CFileMapperWin(CFileMapper* model, CWin* owner)
    : CWin(owner->app, owner, "Playlist", 0, 0, winWide, winHigh, winStyle), mapper(model) {
    minWidth = minHeight = leastSide;
    mapper->win = this;
    wire(onDrop, new _COnMouse<CFileMapperWin>(this, &CFileMapperWin::fileDrop));
    setup();
}

CFileMapperWin::~CFileMapperWin() {
    mapper->win = nullptr;
}

CButton* CFileMapperWin::addButton(const char* name, const char* text, const char* told, int wide,
                                   void (CFileMapperWin::*clicked)(CObject*)) {
    auto* button = new CButton(this, name, text, nextLeft, margin, wide, rowHeight);
    nextLeft += wide + gap;
    button->hint = button->spokenName = told;
    button->tabStop = button->hooverable = true;
    wire(button->onChange, new _COnChange<CFileMapperWin>(this, clicked));
    addControl(button);
    return button;
}

void CFileMapperWin::setup() {
    const CStr focused = keyCtrl ? keyCtrl->id : CStr();
    clear();
    nextLeft = margin + mapsWide + gap;
    mapsDropdown = new CDropdown(this, "maps", margin, margin, mapsWide, rowHeight);
    for (int i = 0; i < mapper->numFilemaps(); i++) mapsDropdown->add(mapper->getFilemap(i));
    mapsDropdown->setIndex(mapper->getIndex());
    mapsDropdown->dropMode = CDropdown::dropLeft;
    mapsDropdown->spokenName = "Playlist";
    mapsDropdown->hint = "The playlist; the sign at its right offers new ones";
    mapsDropdown->tabStop = true;
    wire(mapsDropdown->onChange,
         new _COnChange<CFileMapperWin>(this, &CFileMapperWin::mapsChanged));
    wire(mapsDropdown->onIconClick,
         new _COnChange<CFileMapperWin>(this, &CFileMapperWin::mapsMenuClicked));
    addControl(mapsDropdown);
    constexpr int addWide = 32, removeWide = 52;
    addButton("add", "Add", "Add a project", addWide, &CFileMapperWin::addClicked);
    CButton* del = addButton("remove", "Remove", "Remove the project", removeWide,
                             &CFileMapperWin::deleteClicked);
    CButton* up = addButton("up", "", "Move up", rowHeight, &CFileMapperWin::upClicked);
    CButton* down = addButton("down", "", "Move down", rowHeight, &CFileMapperWin::downClicked);
    for (CButton* arrow : {up, down})
        wire(arrow->onPaint, new _COnPaint<CFileMapperWin>(this, &CFileMapperWin::btnPaint));
    for (CButton* needsRow : {del, up, down}) needsRow->setEnabled(mapper->numProjects() > 0);
    projectsList = new CListbox(this, "projects", margin, listTop, clientGroup->width - 2 * margin,
                                clientGroup->height - listTop - margin);
    projectsList->setAlign(alignWidth | alignHeight, margin, margin);
    projectsList->spokenName = "Projects";
    projectsList->hint = "Return or a double click opens a project, a program change too";
    projectsList->tabStop = true;
    for (int i = 0; i < mapper->numProjects(); i++)
        projectsList->add(rowText(i + 1, mapper->getProject(i)));
    projectsList->setIndex(mapper->getProgram() < mapper->numProjects() ? mapper->getProgram()
                                                                        : -1);
    wire(projectsList->onChange,
         new _COnChange<CFileMapperWin>(this, &CFileMapperWin::projectChanged));
    wire(projectsList->onDoubleClick,
         new _COnChange<CFileMapperWin>(this, &CFileMapperWin::playProjectClicked));
    addControl(projectsList);
    for (auto* ctrl : clientGroup->controls)
        if (!focused.empty() && ctrl->id == focused && ctrl->enabled) setKeyCtrl(ctrl);
    redraw();
}

// Playlists.

void CFileMapperWin::setCurrentMap(int i) {
    mapper->setFilemap(i);
    CIniFile(inifile).writeString(section, "map", mapper->getFilemap(-1));
    setup();
}

void CFileMapperWin::mapsChanged(CObject*) {
    setCurrentMap(mapsDropdown->index);
}

void CFileMapperWin::mapsMenuClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    popup->add("New...", new _COnChange<CFileMapperWin>(this, &CFileMapperWin::newMapClicked));
    popup->addSeparator();
    popup->add("Delete", new _COnChange<CFileMapperWin>(this, &CFileMapperWin::deleteMapClicked))
        ->enabled = mapper->getIndex() >= 0;
    popup->popupBelow(mapsDropdown);
}

void CFileMapperWin::newMapClicked(CObject*) {
    CTextWin dialog(this, "Filemap name", "");
    dialog.showModal();
    if (!dialog.result) return;
    const CStr name = dialog.text.trim(), root = CFileMapper::getRootFolder();
    createDir(root);
    if (!folderExists(root)) {
        showMsg(this, "Error", "Could not create folder: " + root);
        return;
    }
    if (!CFileMapper::canNameMap(name)) {
        showMsg(this, "Error", "This name cannot be stored in a playlist");
        return;
    }
    if (!mapper->newMap(name)) {
        showMsg(this, "Error", "Could not create " + name);
        return;
    }
    setCurrentMap(mapper->getIndex());
}

void CFileMapperWin::deleteMapClicked(CObject*) {
    if (showMsg(this, "Delete", "Are you sure?", mbYes | mbNo) != mbYes) return;
    mapper->deleteMap(mapper->getIndex());
    setCurrentMap(mapper->getIndex());
}

// Projects.

/// The first project makes the first list.
bool CFileMapperWin::needsList() {
    if (mapper->getIndex() >= 0) return true;
    createDir(CFileMapper::getRootFolder());
    if (!mapper->newMap("Playlist")) {
        showMsg(this, "Error", "Could not create folder: " + CFileMapper::getRootFolder());
        return false;
    }
    CIniFile(inifile).writeString(section, "map", mapper->getFilemap(-1));
    return true;
}

void CFileMapperWin::addProject(const CStr& path) {
    if (!CFileMapper::canStore(path)) {
        showMsg(this, "Error", "This name cannot be stored in a playlist");
        return;
    }
    mapper->addProject(path);
}

void CFileMapperWin::addClicked(CObject*) {
    CFileWin dialog(this, "Open", ".qv", folder, "", false);
    dialog.showModal();
    if (!dialog.result) return;
    folder = dialog.folder;
    if (!needsList()) return;
    addProject(dialog.path);
    mapper->setProgram(mapper->numProjects() - 1, false);
    mapper->saveMap();
    setup();
}

void CFileMapperWin::deleteClicked(CObject*) {
    mapper->removeProject(projectsList->index);
    mapper->saveMap();
    setup();
}

void CFileMapperWin::upClicked(CObject*) {
    move(-1);
}

void CFileMapperWin::downClicked(CObject*) {
    move(1);
}

void CFileMapperWin::move(int by) {
    mapper->moveProject(projectsList->index, by);
    mapper->setProgram(mapper->getProgram() + by, false);
    mapper->saveMap();
    setup();
}

void CFileMapperWin::projectChanged(CObject*) {
    mapper->setProgram(projectsList->index, false);
}

void CFileMapperWin::playProjectClicked(CObject*) {
    mapper->setPlayNext(mapper->getProject(projectsList->index));
}

void CFileMapperWin::btnPaint(CObject* sender, CGraphic* g, CRect rect) {
    const auto* button = static_cast<CButton*>(sender);
    drawArrow(g, button->faceColour(), rect, button->id == "up" ? dirUp : dirDown, arrowSize);
}

/// Projects are taken out of the list, what is left is for others.
void CFileMapperWin::fileDrop(CObject*, int, int, int) {
    std::vector<CDropItem*> taken;
    for (auto* item : *app->dragList)
        if (item->type == dropFile && sameText(extractFileExt(item->path), ".QV"))
            taken.push_back(item);
    for (CDropItem* item : taken) {
        if (needsList()) addProject(item->path);
        app->dragList->remove(item);
        delete item;
    }
    if (taken.empty()) return;
    mapper->saveMap();
    setup();
}
