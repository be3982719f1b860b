#include "shell/CWelcomeWin.h"

#include "base/CStringList.h"
#include "base/Paths.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CFileWin.h"
#include "shell/ProjectKinds.h"
#include "ui/ThemePictures.h"

namespace {

constexpr int contentWidth = 520, contentHeight = 300;
constexpr int titleHeight = 20, rowHeight = 24;
constexpr int kindsWidth = 196;
constexpr const char* demoName = "Demo song";

/// What a theme's logo takes above the lists.
int logoRoom() {
    const int height = CLogo::pictureHeight();
    return height ? height + CDialogWin::gap : 0;
}

} // namespace

CWelcomeWin::CWelcomeWin(CWin* owner, const CStringList& recent, int chosenKind)
    : CDialogWin(owner, "Welcome", contentWidth, contentHeight + logoRoom(),
                 winCaption | winCentre | winEscape),
      kind(kindEmpty), recentPaths(recent) {
    addControl(new CLogo(this, margin, margin));
    addButton("Create Project");
    addButton("Open...", new _COnChange<CWelcomeWin>(this, &CWelcomeWin::browseClicked));
    const int right = margin + kindsWidth + gap;
    kinds = addList("kinds", "Select Project", margin, kindsWidth);
    files = addList("recent", "Recent projects", right, contentWidth - margin - right);
    fill(chosenKind);
    wire(kinds->onChange,
         static_cast<COnChange*>(new _COnChange<CWelcomeWin>(this, &CWelcomeWin::kindChanged)));
    wire(files->onChange,
         static_cast<COnChange*>(new _COnChange<CWelcomeWin>(this, &CWelcomeWin::recentChanged)));
    startCtrl = kinds;
}

CListbox* CWelcomeWin::addList(const char* name, const char* title, int x, int wide) {
    const int titleTop = margin + logoRoom(), top0 = titleTop + titleHeight;
    auto* heading = new CLabel(this, title, x, titleTop, wide, titleHeight);
    addControl(heading);
    auto* list = new CListbox(this, name, x, top0, wide, contentBottom() - top0);
    heading->field = list;
    list->itemHeight = rowHeight;
    list->tabStop = true;
    wire(list->onDoubleClick,
         static_cast<COnChange*>(new _COnChange<CWelcomeWin>(this, &CWelcomeWin::opened)));
    addControl(list);
    return list;
}

void CWelcomeWin::fill(int chosenKind) {
    for (int i = 0; i < offeredKinds; i++) kinds->add(projectKindName(i));
    for (int i = 0; i < recentPaths.count(); i++)
        files->add(changeFileExt(extractFileName(recentPaths.get(i)), ""));
    files->add(demoName);
    kinds->setIndex(chosenKind >= 0 && chosenKind < offeredKinds ? chosenKind : kindDefault);
}

bool CWelcomeWin::keyDown(int key, int mods) {
    const bool inList = keyCtrl && (keyCtrl == kinds || keyCtrl == files);
    if (key == ' ' && !mods && inList && onKeyDown) return (*onKeyDown)(this, key, mods);
    return CDialogWin::keyDown(key, mods);
}

// One choice out of both lists.

void CWelcomeWin::kindChanged(CObject*) {
    files->setIndex(-1);
    firstButton->setText("Create Project");
}

void CWelcomeWin::recentChanged(CObject*) {
    kinds->setIndex(-1);
    firstButton->setText("Open Project");
}

void CWelcomeWin::opened(CObject*) {
    accept();
}

void CWelcomeWin::accept() {
    const int file = files->index;
    if (file < 0 && kinds->index < 0) return;
    kind = file < 0 ? kinds->index : file < recentPaths.count() ? kindFile : kindDemo;
    path = kind == kindFile ? recentPaths.get(file) : CStr();
    CDialogWin::accept();
}

void CWelcomeWin::browseClicked(CObject*) {
    const CStr folder = extractFilePath(recentPaths.first());
    CFileWin dialog(this, "Open", ".qv", folder, "", false);
    dialog.showModal();
    if (!dialog.result) return;
    kind = kindFile;
    path = dialog.path;
    CDialogWin::accept();
}
