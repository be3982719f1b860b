#include "setup/LooksPanel.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CTree.h"
#include "gui/dialogs/CFileWin.h"
#include "setup/CGuiItemPanel.h"
#include "setup/LooksTree.h"
#include "ui/Skins.h"

namespace {

constexpr const char* themeExt = ".qvl";
constexpr int buttonWidth = 72, gap = 8, columnGap = 16;
constexpr int rowHeight = 24, treeTop = rowHeight + gap, treeWidth = 200, noteHeight = 24;
constexpr int editorWidth = 336;

CTreeNode* firstItem(const CTreeNode& root) {
    for (auto* area : root.children)
        if (area->data) return area;
    return nullptr;
}

} // namespace

LooksPanel::LooksPanel(CWin* owner, CQV* host, int l, int t, int w, int h)
    : CGroup(owner, "looks", l, t, w, h), qv(host) {
    addButtons();
    addTree();
    addEditor();
}

void LooksPanel::addButtons() {
    addButton("Light", &LooksPanel::lightClicked);
    addButton("Dark", &LooksPanel::darkClicked);
    addButton("Default", &LooksPanel::defaultClicked);
    addButton("Open", &LooksPanel::openClicked);
    addButton("Save", &LooksPanel::saveClicked);
}

void LooksPanel::addButton(const char* text, void (LooksPanel::*clicked)(CObject*)) {
    auto* button = new CButton(win, text, text, buttonX, 0, buttonWidth, rowHeight);
    button->onChange = new _COnChange<LooksPanel>(this, clicked);
    addControl(button);
    buttonX += buttonWidth + gap;
}

void LooksPanel::addTree() {
    tree = new CTree(win, "items", 0, treeTop, treeWidth, height - treeTop);
    tree->setAlign(alignHeight, 0, 0);
    tree->spokenName = "Items";
    tree->tabStop = true;
    int count = 0;
    const LooksNode* nodes = looksTree(count);
    CTreeNode* last[3] = {&tree->root}; // the open branch, by level
    for (int i = 0; i < count; i++) {
        if (nodes[i].awaited) continue;
        CTreeNode* above = nodes[i].level ? last[nodes[i].level - 1] : &tree->root;
        last[nodes[i].level] = above->add(nodes[i].label);
        last[nodes[i].level]->data = nodes[i].item;
    }
    tree->update();
    tree->onChange = new _COnChange<LooksPanel>(this, &LooksPanel::treeChanged);
    addControl(tree);
}

void LooksPanel::addEditor() {
    const int x = treeWidth + columnGap;
    scroll = new CScrollPanel(win, "editor", x, treeTop, width - x, height - treeTop - noteHeight);
    scroll->setAlign(alignWidth | alignHeight, 0, noteHeight);
    addControl(scroll);
    editor = new CGuiItemPanel(win, 0, 0, editorWidth);
    editor->onChange = new _COnChange<LooksPanel>(this, &LooksPanel::editorChanged);
    scroll->inner->addControl(editor);
    auto* note = new CLabel(win, "Save keeps changes in a theme file.", x, height - noteHeight,
                            width - x, noteHeight);
    note->setAlign(alignWidth | alignBottom, 0, 0);
    addControl(note);
    tree->select(firstItem(tree->root));
    treeChanged(nullptr);
}

void LooksPanel::treeChanged(CObject*) {
    const CTreeNode* node = tree->selectedNode();
    editor->setItem(node ? static_cast<CGuiItem2*>(node->data) : nullptr);
}

void LooksPanel::editorChanged(CObject*) {
    scroll->resized();
    scroll->redraw();
}

// Skins and files.

void LooksPanel::skinChosen(int look) {
    chooseSkin(win->app, qv, look);
    editor->setup();
}

void LooksPanel::lightClicked(CObject*) {
    skinChosen(lookLight);
}

void LooksPanel::darkClicked(CObject*) {
    skinChosen(lookDark);
}

void LooksPanel::defaultClicked(CObject*) {
    skinChosen(lookDefault);
}

CStr LooksPanel::themeFolder() const {
    const CStr& file = win->app->gui->fileName;
    return file.empty() ? getHomeFolder() : extractFilePath(file);
}

void LooksPanel::openClicked(CObject*) {
    CFileWin dialog(win, "Open theme", themeExt, themeFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    if (!openTheme(win->app, qv, dialog.path))
        showMsg(win, "Looks", "Unable to open \"" + extractFileName(dialog.path) + "\"");
    editor->setup();
}

void LooksPanel::saveClicked(CObject*) {
    const CStr name = extractFileName(win->app->gui->fileName);
    CFileWin dialog(win, "Save theme", themeExt, themeFolder(), name, true);
    dialog.showModal();
    if (!dialog.result) return;
    if (!saveTheme(win->app, qv, dialog.path))
        showMsg(win, "Looks", "Unable to save \"" + extractFileName(dialog.path) + "\"");
}
