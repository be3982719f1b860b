#include "panels/ProgramBar.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ProgramEdits.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "ui/NameField.h"
#include "ui/PresetMenu.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 8, high = 24, arrowWidth = 24, nameWidth = 240;
constexpr int top = (ProgramBar::usualHeight - high) / 2;

} // namespace

ProgramBar::ProgramBar(CWin* owner, Workspace& space, CComp* of, Deeds offered)
    : CGroup(owner, "programs", 0, 0, 1, usualHeight), workspace(space), comp(of),
      deeds(std::move(offered)), name(new CButton(owner, "program", "", 0, 0, nameWidth, high)),
      before(new CButton(owner, "before", "", 0, 0, arrowWidth, high)),
      behind(new CButton(owner, "behind", "", 0, 0, arrowWidth, high)) {
    arrowsWalk = true;
    before->hint = before->spokenName = "Program before";
    behind->hint = behind->spokenName = "Next program";
    name->hint = "The program: press for the others";
    name->onChange = new _COnChange<ProgramBar>(this, &ProgramBar::nameClicked);
    for (CButton* b : {before, name, behind}) {
        b->skin = &clTrackControls;
        b->litSkin = &clTrackControlsPushed;
        b->tabStop = true;
        addControl(b);
    }
    for (CButton* b : {before, behind}) {
        b->onChange = new _COnChange(this, &ProgramBar::stepClicked);
        b->onPaint = new _COnPaint(this, &ProgramBar::paintArrow);
    }
    refresh();
}

ProgramBar::~ProgramBar() = default;

void ProgramBar::resized() {
    int x = gap;
    for (CButton* b : {before, name, behind}) {
        b->setBounds(x, ::top, b->width, high);
        x += b->width + gap / 2;
    }
}

void ProgramBar::refresh() {
    NameField::dropLeft(field);
    const int count = comp->numProgs(), now = comp->curProg;
    const CStr text = count ? asStr(now + 1) + "  " + comp->getProgName(now) : CStr("No program");
    if (text != name->text) {
        name->setText(text);
        name->spokenName = "Program " + text;
    }
    before->setEnabled(now > 0);
    behind->setEnabled(now + 1 < count);
}

void ProgramBar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
}

void ProgramBar::paintArrow(CButton* b, CGraphic* g, CRect rect) {
    drawArrow(g, b->faceColour(), rect, b == before ? dirLeft : dirRight, 4);
}

void ProgramBar::choose(int index) {
    if (index < 0 || index >= comp->numProgs()) return;
    comp->host->values->set(programOfComp(comp), index);
    refresh();
}

void ProgramBar::stepClicked(CCtrl* sender) {
    choose(comp->curProg + (sender == before ? -1 : 1));
}

void ProgramBar::programChosen(CObject* sender) {
    choose(tagOf(sender));
}

void ProgramBar::addMenuEntry(CPopup* popup, const char* text,
                              void (ProgramBar::*chosen)(CObject*)) {
    popup->add(text, new _COnChange<ProgramBar>(this, chosen));
}

void ProgramBar::nameClicked(CObject*) {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    for (int i = 0; i < comp->numProgs(); i++) {
        CMenuItem* item = popup->add(asStr(i + 1) + "  " + comp->getProgName(i),
                                     new _COnChange<ProgramBar>(this, &ProgramBar::programChosen));
        item->tag = i;
        item->checked = i == comp->curProg;
    }
    popup->addSeparator();
    if (deeds.add) addMenuEntry(popup, "Add program", &ProgramBar::addClicked);
    if (deeds.addKinds) deeds.addKinds(popup->addSub("Add program"));
    const int count = comp->numProgs();
    if (count > 0) addMenuEntry(popup, "Rename...", &ProgramBar::renameClicked);
    if (count > 1 && !deeds.rename)
        addMenuEntry(popup, "Delete program", &ProgramBar::removeClicked);
    popup->addSeparator();
    if (deeds.open) {
        addPresetMenu(popup, "Presets", comp->host, deeds.extension, [this](const CStr& path) {
            deeds.open(path);
            refresh();
        });
        addMenuEntry(popup, "Open preset...", &ProgramBar::openClicked);
    }
    if (deeds.save && count > 0) addMenuEntry(popup, "Save preset...", &ProgramBar::saveClicked);
    popup->popupBelow(name);
}

void ProgramBar::addClicked(CObject*) {
    deeds.add();
    refresh();
}

void ProgramBar::renameClicked(CObject*) {
    NameField::dropLeft(field);
    field = new NameField(this, ctrlBounds(name), comp->getProgName(comp->curProg),
                          "Name of the program", name);
    field->onName = [this](const CStr& to) {
        if (deeds.rename)
            deeds.rename(to);
        else
            renameProgram(comp, comp->curProg, to);
        refresh();
    };
}

void ProgramBar::removeClicked(CObject*) {
    removeProgram(comp, comp->curProg);
    refresh();
}

void ProgramBar::openClicked(CObject*) {
    CFileWin dialog(workspace.mainWindow(), "Open preset", deeds.extension,
                    workspace.dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    deeds.open(dialog.path);
    refresh();
}

void ProgramBar::saveClicked(CObject*) {
    CFileWin dialog(workspace.mainWindow(), "Save preset", deeds.extension,
                    workspace.dialogFolder(), comp->getProgName(comp->curProg), true);
    dialog.showModal();
    if (!dialog.result) return;
    workspace.projectFolder = dialog.folder;
    deeds.save(dialog.path);
}
