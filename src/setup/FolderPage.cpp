#include "setup/FolderPage.h"

#include "base/CStringList.h"
#include "engine/CQV.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/dialogs/CFileWin.h"
#include "setup/CSetupWin.h"
#include "ui/IniFolders.h"

namespace {

constexpr int listHeight = 66; // four lines

} // namespace

FolderPage::FolderPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    addFolderSection(foldersProject, "Projects");
    addFolderSection(foldersPlugin, "Plugins");
    addFolderSection(foldersPreset, "Presets");
    addFolderSection(foldersClip, "Clips");
    addFolderSection(foldersSample, "Samples");
}

void FolderPage::addFolderSection(int mode, const CStr& title) {
    addHeading(title);
    CButton* add = newButton("Add", new _COnChange(this, &FolderPage::addFolder));
    CButton* del = newButton("Del", new _COnChange(this, &FolderPage::delFolder));
    const int buttonLeft = width - margin - add->width;
    auto* list = new CListbox(win, modeToSection(mode), margin, nextTop, buttonLeft - gap - margin,
                              listHeight);
    list->tag = mode;
    list->spokenName = title;
    list->setAlign(alignWidth, width - buttonLeft + gap, 0);
    list->data = del;
    wire(list->onChange, new _COnChange(this, &FolderPage::folderChosen));
    fill(list);
    addControl(list);
    int y = nextTop;
    for (CButton* button : {add, del}) {
        button->id = title + " " + button->text;
        button->spokenName = button->text + ", " + title;
        button->data = list;
        button->setBounds(buttonLeft, y, add->width, fieldHeight);
        button->setAlign(alignRight, margin, 0);
        addControl(button);
        y += fieldHeight + gap;
    }
    nextTop += listHeight;
}

void FolderPage::fill(CListbox* list) {
    list->clearRows();
    CStringList paths;
    readIniFolders(qv, modeToSection(list->tag), &paths);
    for (int i = 0; i < paths.count(); i++) list->add(paths.get(i));
    folderChosen(list);
}

void FolderPage::folderChosen(CListbox* list) {
    static_cast<CButton*>(list->data)->setEnabled(list->row(list->index) != nullptr);
}

void FolderPage::tell(const CListbox* list) {
    qv->changedFolders = list->tag;
    qv->hostNotices.raise(HostNotice::folders);
}

void FolderPage::addFolder(CButton* sender) {
    auto* list = static_cast<CListbox*>(sender->data);
    const CListRow* chosen = list->row(list->index);
    CFolderWin dialog(setup, "Add folder", chosen ? chosen->id : CStr());
    dialog.showModal();
    if (!dialog.result) return;
    addIniFolder(qv, modeToSection(list->tag), dialog.path);
    fill(list);
    tell(list);
}

void FolderPage::delFolder(CButton* sender) {
    auto* list = static_cast<CListbox*>(sender->data);
    const int at = list->index;
    const CListRow* chosen = list->row(at);
    if (!chosen) return;
    delIniFolder(qv, modeToSection(list->tag), chosen->id);
    fill(list);
    list->setIndex(at);
    folderChosen(list);
    tell(list);
}
