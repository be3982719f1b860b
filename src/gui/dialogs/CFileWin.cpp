#include "gui/dialogs/CFileWin.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CFileList.h"
#include "gui/dialogs/CPathEdit.h"
#include "gui/dialogs/CTextWin.h"

#include <unistd.h>

namespace {

constexpr int contentWidth = 680, contentHeight = 464, placesWidth = 144, upWidth = 28;
constexpr int newFolderWidth = 104, placeHeight = 20, arrowSize = 4;

constexpr int margin = CDialogWin::margin, gap = CDialogWin::gap;
constexpr int fieldHeight = CDialogWin::fieldHeight;
constexpr int listLeft = margin + placesWidth + gap, listTop = margin + fieldHeight + gap;

const char* const okTexts[] = {"Open", "Save", "Select"};

CStr counted(int count, const char* one, const char* many) {
    return asStr(count) + " " + (count == 1 ? one : many);
}

} // namespace

CFileWin::CFileWin(CWin* owner, const CStr& title, const CStr& ext, const CStr& startFolder,
                   const CStr& name, bool save)
    : CFileWin(owner, title, ext, startFolder, name, save ? saveForm : openForm) {
}

CFileWin::CFileWin(CWin* owner, const CStr& title, const CStr& ext, const CStr& startFolder,
                   const CStr& name, Form wanted)
    : CDialogWin(owner, title, contentWidth, contentHeight), form(wanted) {
    makeTop();
    makeLists(ext);
    makeName(name);
    addOkCancel(okTexts[form]);
    startCtrl = nameEdit;
    CStringList names, paths;
    getDefaultFolders(&names, &paths);
    for (int i = 0; i < paths.count(); i++) addPlace(names.get(i), paths.get(i));
    if (app->onFileDialog) (*app->onFileDialog)(this);
    enterNearest(startFolder.empty() ? getHomeFolder() : startFolder);
    if (form == openForm) files->choose(name);
}

/// The button to the folder around, the path, and the button for a new folder.
void CFileWin::makeTop() {
    auto* up = new CButton(this, "up", "Up", margin, margin, upWidth, fieldHeight);
    up->tabStop = true;
    up->hint = "Parent folder";
    wire(up->onPaint, new _COnPaint(this, &CFileWin::paintUp));
    wire(up->onChange, new _COnChange<CFileWin>(this, &CFileWin::upClicked));
    addControl(up);
    const int left0 = margin + upWidth + gap;
    pathEdit = new CPathEdit(this, "path", left0, margin, gap, fieldHeight);
    pathEdit->setAlign(alignWidth, margin + newFolderWidth + gap, 0);
    pathEdit->completing = CPathEdit::completeFolders;
    pathEdit->selectOnFocus = true;
    pathEdit->spokenName = "Path";
    wire(pathEdit->onKeyDown, new _COnKey<CFileWin>(this, &CFileWin::pathKey));
    addControl(pathEdit);
    auto* create =
        new CButton(this, "newfolder", "New folder", 0, margin, newFolderWidth, fieldHeight);
    create->tabStop = true;
    create->setAlign(alignRight, margin, 0);
    wire(create->onChange, new _COnChange<CFileWin>(this, &CFileWin::newFolderClicked));
    addControl(create);
}

void CFileWin::makeLists(const CStr& ext) {
    const int below = clientGroup->height - contentBottom() + fieldHeight + gap;
    places = new CListbox(this, "places", margin, listTop, placesWidth, fieldHeight);
    places->itemHeight = placeHeight;
    places->spokenName = "Places";
    places->setAlign(alignHeight, 0, below);
    wire(places->onChange, new _COnChange<CFileWin>(this, &CFileWin::placeChanged));
    addControl(places);
    files = new CFileList(this, "files", listLeft, listTop, fieldHeight, fieldHeight);
    files->filter = ext;
    files->spokenName = "Files";
    files->foldersOnly = form == folderForm;
    files->setAlign(alignWidth | alignHeight, margin, below);
    wire(files->onChange, new _COnChange<CFileWin>(this, &CFileWin::rowChanged));
    wire(files->onDoubleClick, new _COnChange<CFileWin>(this, &CFileWin::rowOpened));
    wire(files->onUp, new _COnChange<CFileWin>(this, &CFileWin::upClicked));
    addControl(files);
}

/// The name with its label, and the line that tells what is there or went wrong.
void CFileWin::makeName(const CStr& name) {
    const int below = clientGroup->height - contentBottom();
    const CStr text = form == folderForm ? "Folder" : "Name";
    auto* label = new CLabel(this, text, margin, 0, placesWidth, fieldHeight);
    label->setAlign(alignBottom, 0, below);
    addControl(label);
    nameEdit = new CPathEdit(this, "name", listLeft, 0, gap, fieldHeight);
    nameEdit->setAlign(alignWidth | alignBottom, margin, below);
    label->field = nameEdit;
    nameEdit->filter = files->filter;
    nameEdit->completing = form == openForm   ? CPathEdit::completeAll
                           : form == saveForm ? CPathEdit::completeOnTab
                                              : CPathEdit::completeFolders;
    nameEdit->selectOnFocus = true;
    nameEdit->setText(name);
    addControl(nameEdit);
    status = new CLabel(this, "", margin, 0, gap, buttonHeight);
    status->setAlign(alignWidth | alignBottom, margin + 2 * (buttonWidth + gap) + gap, margin);
    addControl(status);
}

void CFileWin::addPlace(const CStr& name, const CStr& placePath) {
    const CStr full = addSep(placePath);
    if (full.empty() || placePaths.indexOf(full) >= 0) return;
    placePaths.append(full);
    places->add(name);
    places->setIndex(placePaths.indexOf(folder));
}

void CFileWin::showStatus(const CStr& text, bool isError) {
    const CPalette& colours = app->gui->palette;
    status->textCol = isError ? colours.meter[1] : colours.dimText;
    status->text = text;
    status->redraw();
}

void CFileWin::showCount() {
    CStr text = counted(files->folderCount, "folder", "folders");
    const int rest = files->items.getCount() - files->folderCount;
    if (form != folderForm) text += ", " + counted(rest, "file", "files");
    showStatus(text, false);
}

bool CFileWin::fail(const CStr& text) {
    showStatus(text, true);
    return false;
}

/// Shows a folder. One that cannot be read is told of, and the former one stays.
bool CFileWin::enter(const CStr& wanted) {
    const CStr target = addSep(wanted);
    const bool shown = files->setFolder(target, target == folder);
    if (shown) folder = target;
    pathEdit->base = nameEdit->base = folder;
    pathEdit->setText(folder);
    if (!shown)
        return fail((folderExists(target) ? "No permission to read " : "No such folder: ") +
                    target);
    if (form == folderForm) nameEdit->setText(folder);
    places->setIndex(placePaths.indexOf(folder));
    showCount();
    return true;
}

void CFileWin::enterNearest(const CStr& wanted) {
    CStr target = addSep(CPathEdit::fullPath(wanted, getHomeFolder()));
    while (!enter(target) && target != uplevel(target)) target = uplevel(target);
}

void CFileWin::upClicked(CObject*) {
    const CStr inner = folder.sub(0, folder.length() - 1);
    if (enter(uplevel(folder))) files->choose(extractFileName(inner));
}

void CFileWin::placeChanged(CObject*) {
    enter(placePaths.get(places->index));
}

void CFileWin::rowChanged(CObject*) {
    const CFileItem* row = files->chosen();
    if (!row) return;
    const bool file = form != folderForm && !row->folder;
    if (form == folderForm)
        nameEdit->setText(folder + row->id + CStr(folderSeparator));
    else if (file)
        nameEdit->setText(row->id);
    else if (form == openForm)
        nameEdit->setText("");
    if (file && onMarked) onMarked(folder + row->id);
}

void CFileWin::rowOpened(CObject*) {
    openRow();
}

bool CFileWin::openRow() {
    const CFileItem* row = files->chosen();
    if (!row) return false;
    const CStr target = folder + row->id;
    return row->folder ? enter(target) : chooseFile(target);
}

void CFileWin::newFolderClicked(CObject*) {
    CTextWin dialog(this, "New folder", "");
    dialog.showModal();
    if (!dialog.result) return;
    const CStr made = CPathEdit::fullPath(dialog.text, folder);
    if (createDir(made))
        enter(made);
    else
        fail("The folder could not be made: " + made);
}

bool CFileWin::pathKey(CObject*, int& key, int mods) {
    if (key != keyReturn || mods) return false;
    const CStr target = pathEdit->path();
    const bool isFile = form != folderForm && !folderExists(target) && fileExists(target);
    if (isFile)
        chooseFile(target);
    else if (enter(target))
        setKeyCtrl(files);
    return true;
}

bool CFileWin::keyDown(int key, int mods) {
    if (key == ::keyUp && (mods & modAlt)) {
        upClicked(this);
        return true;
    }
    if ((key == ::keyUp || key == ::keyDown) && !mods && keyCtrl == nameEdit) {
        setKeyCtrl(files);
        return files->keyDown(key, mods);
    }
    // Return in the name presses the button, as in the rest of the dialog.
    if (key == keyReturn && !mods && keyCtrl == nameEdit) {
        accept();
        return true;
    }
    return CDialogWin::keyDown(key, mods);
}

CStr CFileWin::extension(int index) const {
    CStr rest = files->filter.lowerCase();
    while (index-- > 0 && !rest.empty()) {
        const int bar = rest.pos("|");
        rest = bar < 0 ? CStr() : rest.sub(bar + 1, -1);
    }
    const int bar = rest.pos("|");
    return bar < 0 ? rest : rest.sub(0, bar);
}

bool CFileWin::hasExtension(const CStr& file) const {
    bool any = false;
    return hasFileExt(extractFileName(file), files->filter, any);
}

bool CFileWin::chooseFile(const CStr& file) {
    CStr found = file;
    if (form == saveForm) {
        if (!hasExtension(found)) found += extension(0);
        if (!canSave(found)) return false;
    } else {
        for (int i = 0; !fileExists(found) && !extension(i).empty(); i++)
            found = file + extension(i);
        if (!fileExists(found)) return fail("No such file: " + file);
    }
    path = found;
    folder = extractFilePath(found);
    CDialogWin::accept();
    return true;
}

bool CFileWin::canSave(const CStr& file) {
    const CStr around = extractFilePath(file);
    if (!folderExists(around)) return fail("No such folder: " + around);
    if (folderExists(file)) return fail("A folder has this name: " + file);
    if (!fileExists(file))
        return access(around.asChar(), W_OK) == 0 || fail("No permission to write to " + around);
    if (isReadOnly(file)) return fail("No permission to write to " + file);
    return showMsg(this, id, "File exists. Overwrite?", mbYes | mbNo) == mbYes;
}

void CFileWin::acceptFolder() {
    const CStr target = addSep(nameEdit->path());
    if (!folderExists(target)) {
        fail("No such folder: " + target);
        return;
    }
    path = folder = target;
    CDialogWin::accept();
}

void CFileWin::accept() {
    const CStr target = nameEdit->path();
    if (form == folderForm)
        acceptFolder();
    else if (nameEdit->text.trim().empty())
        openRow();
    else if (!folderExists(target))
        chooseFile(target);
    else if (enter(target))
        nameEdit->setText("");
}

void CFileWin::paintUp(CButton* sender, CGraphic* g, CRect rect) {
    drawArrow(g, sender->faceColour(), rect, dirUp, arrowSize);
}
