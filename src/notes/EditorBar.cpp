#include "notes/EditorBar.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/controls/CButton.h"
#include "notes/EditedPart.h"
#include "sequencer/CSeq.h"
#include "ui/Commands.h"
#include "ui/GridButton.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 2, group = 8, buttonTop = 4, high = 18;

} // namespace

EditorBar::EditorBar(CWin* owner, const EditedPart& edited)
    : CGroup(owner, "editorbar", 0, 0, 1, int(barHeight)), shown(edited) {
    arrowsWalk = true;
    nextX = group;
    addSwitch("eventlist", "List", 40);
    addSwitch("objectbar", "Object", 52)->hint = "Show object-bar";
    addSwitch("steprec", "Steps", 46);
    addSwitch("computerkeys", "Keys", 42);
    addSwitch("othernotes", "Others", 52);
    addSwitch("preview", "Hear", 44);
    addSwitch("notenames", "Names", 48);
    addSwitch("notelength", "Keep length", 80);
    addSwitch("snap", "Snap", 44);
    grid = new GridButton(win, shown.workspace, nextX, buttonTop, high);
    addControl(grid);
    nextX += grid->width + gap;
}

CButton* EditorBar::addSwitch(const char* action, const char* text, int wide) {
    CAction* known = shown.workspace.commands().getAction(action);
    auto* made = new CButton(win, action, text, nextX, buttonTop, wide, high);
    made->hint = made->spokenName = known->label;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->userPtr = known;
    made->onChange = new _COnChange<EditorBar>(this, &EditorBar::clicked);
    addControl(made);
    switches.push_back(made);
    nextX += wide + gap;
    return made;
}

void EditorBar::clicked(CObject* sender) {
    shown.workspace.runAction(
        static_cast<CAction*>(static_cast<CButton*>(static_cast<CCtrl*>(sender))->userPtr));
    refresh();
}

void EditorBar::refresh() {
    for (CButton* s : switches) s->setLit(static_cast<CAction*>(s->userPtr)->isOn());
    grid->refresh();
    CStr now;
    if (shown.part && shown.seq()) {
        now = shown.part->content()->id + "  on  " + shown.track->id + ",  " +
              placeText(shown.seq(), shown.part->pos) + ",  " +
              lengthText(shown.seq(), shown.seq()->getTicks(shown.part));
        if (shown.part->ghostOf) now += "  (ghost)";
    }
    if (now == title) return;
    title = now;
    redraw();
}

void EditorBar::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
    g->drawText(palette.text, title, asRect(nextX + group, 0, width - group, height - 1), textLeft);
}

void EditorBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = title.empty() ? "Editor" : title.asChar();
}
