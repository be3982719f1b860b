#include "setup/ShortcutPage.h"

#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CTree.h"
#include "setup/CSetupWin.h"
#include "ui/Commands.h"
#include "ui/Shortcuts.h"
#include "ui/Workspace.h"

namespace {

constexpr int treeShare = 60; // percent of the page
constexpr int keyWidth = 104, lineHeight = 20;

struct Group {
    const char* name;
    int group;
};
constexpr Group groups[] = {{"Common", groupGlobal},     {"File", groupFile},
                            {"Edit", groupEdit},         {"Transporter", groupTransport},
                            {"Sequencer", groupArrange}, {"Modular", groupModular}};

/// Whether both are active in one window.
bool meet(const CAction* a, const CAction* b) {
    return a->group <= groupGlobal || b->group <= groupGlobal || a->group == b->group;
}

} // namespace

ShortcutPage::ShortcutPage(CSetupWin* window, CRect place) : SetupPage(window, place) {
    const int treeWidth = (width - 2 * margin) * treeShare / 100;
    addHeading("Actions");
    setupActionTree(treeWidth);
    addKeyFields(margin + treeWidth + margin);
    showAction();
}

void ShortcutPage::setupActionTree(int treeWidth) {
    tree = new CTree(win, "actions", margin, nextTop, treeWidth, height - nextTop - margin);
    tree->tabStop = true;
    tree->spokenName = "Actions";
    tree->setAlign(alignHeight, 0, margin);
    for (const Group& g : groups) {
        CTreeNode* node = tree->root.add(g.name);
        node->kind = g.group;
        addActions(node);
    }
    tree->update();
    wire(tree->onChange, new _COnChange<ShortcutPage>(this, &ShortcutPage::actionChanged));
    addControl(tree);
}

void ShortcutPage::addActions(CTreeNode* node) {
    for (auto* a : setup->workspace.commands().actions)
        if (a->bound() && a->group == node->kind) node->add(a->label)->data = a;
}

void ShortcutPage::addKeyFields(int x) {
    const int wide = width - margin - x;
    int y = nextTop;
    title = new CLabel(win, "", x, y, wide, fieldHeight);
    title->id = "title";
    addControl(title);
    y += fieldHeight + gap;
    auto* keyLabel = new CLabel(win, "Key", x, y, wide, lineHeight);
    addControl(keyLabel);
    y += lineHeight;
    keyEdit = new CEdit(win, "key", x, y, keyWidth, fieldHeight);
    keyLabel->field = keyEdit;
    keyEdit->upperCase = true;
    keyEdit->selectOnFocus = true;
    wire(keyEdit->onChange, new _COnChange<ShortcutPage>(this, &ShortcutPage::actionKeyChanged));
    wire(keyEdit->onKeyDown, new _COnKey<ShortcutPage>(this, &ShortcutPage::keyPressed));
    addControl(keyEdit);
    y += fieldHeight + gap;
    auto* boxLabel = new CLabel(win, "Modifiers", x, y, wide, lineHeight);
    addControl(boxLabel);
    y += lineHeight;
    const struct {
        const char* text;
        CCheckbox** box;
    } boxes[] = {{"Shift", &shift}, {"Ctrl", &control}, {"Alt", &alt}};
    for (const auto& b : boxes) {
        *b.box = new CCheckbox(win, b.text, b.text, x, y, wide, fieldHeight);
        wire((*b.box)->onChange, new _COnChange<ShortcutPage>(this, &ShortcutPage::modKeyChanged));
        addControl(*b.box);
        y += fieldHeight + gap / 2;
    }
    y += gap / 2;
    boxLabel->field = shift;
    note = new CLabel(win, "", x, y, wide, height - margin - y);
    note->textCol = win->app->gui->palette.dimText;
    note->id = "note";
    addControl(note);
}

CAction* ShortcutPage::action() const {
    const CTreeNode* node = tree->selectedNode();
    return node ? static_cast<CAction*>(node->data) : nullptr;
}

/// The action that has the same shortcut, or how the field is used.
CStr ShortcutPage::otherUse() const {
    const CAction* chosen = action();
    if (!chosen) return "Choose an action to see\nand change its shortcut.";
    CStr text;
    for (const auto* a : setup->workspace.commands().actions)
        if (a != chosen && a->bound() && chosen->key && upperKey(a->key) == upperKey(chosen->key) &&
            a->mods == chosen->mods && meet(a, chosen))
            text += "\n" + a->label;
    if (!text.empty()) return "Also the shortcut of:" + text;
    return "Type a letter, a digit or a sign,\nor a name such as SPACE or DEL.\n"
           "Function keys can be pressed.\nEmpty is no shortcut.";
}

void ShortcutPage::showAction() {
    const CAction* chosen = action();
    title->setText(chosen ? chosen->label : CStr("No action chosen"));
    keyEdit->setText(chosen ? keyToStr(chosen->key) : CStr());
    keyEdit->enabled = keyEdit->tabStop = chosen != nullptr;
    const struct {
        CCheckbox* box;
        int flag;
    } boxes[] = {{shift, modShift}, {control, modControl}, {alt, modAlt}};
    for (const auto& b : boxes) {
        b.box->setChecked(chosen && (chosen->mods & b.flag));
        b.box->setEnabled(chosen != nullptr);
    }
    note->setText(otherUse());
    redraw();
}

void ShortcutPage::actionChanged(CObject*) {
    showAction();
}

void ShortcutPage::actionKeyChanged(CObject*) {
    CAction* chosen = action();
    if (!chosen) return;
    const CStr typed = keyEdit->text.trim();
    const int key = strToKey(typed);
    const bool known = key != 0 || typed.empty();
    if (known) Commands::setShortcut(chosen, key, chosen->mods);
    showAction();
    if (!known) note->setText(typed + " is no key.\nThe shortcut stays as it was.");
}

void ShortcutPage::modKeyChanged(CObject*) {
    CAction* chosen = action();
    if (!chosen) return;
    const int mods = (shift->checked ? modShift : 0) | (control->checked ? modControl : 0) |
                     (alt->checked ? modAlt : 0);
    Commands::setShortcut(chosen, chosen->key, mods);
    showAction();
}

/// Keys that a text field has no use for are taken as they are pressed, and so is "*", which
/// cannot be typed.
bool ShortcutPage::keyPressed(CObject*, int& key, int) {
    const bool taken = (key <= keyF1 && key >= keyF12) || key == keyPageUp || key == keyPageDown ||
                       key == keyInsert || key == keyAsterisk;
    if (!taken) return false;
    keyEdit->setText(keyToStr(key));
    keyEdit->selectAll();
    actionKeyChanged(nullptr);
    return true;
}
