#include "notes/EditorBar.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/controls/CButton.h"
#include "notes/EditedPart.h"
#include "notes/EditorBody.h"
#include "sequencer/song/CSeq.h"
#include "ui/Commands.h"
#include "ui/GridButton.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/ScaleItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 1, group = 4, buttonTop = 4, high = 18;

} // namespace

EditorBar::EditorBar(CWin* owner, const EditedPart& edited)
    : CGroup(owner, "editorbar", 0, 0, 1, int(barHeight)), shown(edited) {
    arrowsWalk = true;
    addSwitch("eventlist", "List", 34);
    addSwitch("objectbar", "Object", 46)->hint = "Show object-bar";
    addSwitch("steprec", "Steps", 40);
    addSwitch("computerkeys", "Keys", 36);
    addSwitch("painttool", "Paint", 38);
    addSwitch("knifetool", "Knife", 38);
    addSwitch("gluetool", "Glue", 34);
    addSwitch("foldrows", "Fold", 34);
    addSwitch("othernotes", "Others", 46);
    addSwitch("edittogether", "Together", 58);
    addSwitch("preview", "Hear", 38);
    addSwitch("notenames", "Names", 44);
    addSwitch("notelength", "Length", 46);
    addSwitch("snap", "Snap", 38);
    grid = new GridButton(win, shown.workspace, 0, buttonTop, high);
    scale = new ScaleButton(win, shown.workspace, 0, buttonTop, high);
    chord = new ChordButton(win, shown.workspace, 0, buttonTop, high);
    for (CButton* b : std::initializer_list<CButton*>{grid, scale, chord}) addControl(b);
    place();
}

/// Side by side, those that the body has.
void EditorBar::place() {
    nextX = group;
    const auto put = [this](CButton* b) {
        if (!b->visible) return;
        b->setBounds(nextX, buttonTop, b->width, high);
        nextX += b->width + gap;
    };
    for (CButton* s : switches) put(s);
    for (CButton* b : std::initializer_list<CButton*>{grid, scale, chord}) put(b);
    redraw();
}

void EditorBar::setBody(const EditorBody& body) {
    for (CButton* s : switches)
        s->visible = body.showsSwitch(static_cast<CAction*>(s->userPtr)->name);
    scale->visible = chord->visible = body.showsSwitch("scalesnap");
    place();
}

CButton* EditorBar::addSwitch(const char* action, const char* text, int wide) {
    CAction* known = shown.workspace.commands().getAction(action);
    auto* made = new CButton(win, action, text, 0, buttonTop, wide, high);
    made->hint = made->spokenName = known->label;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->userPtr = known;
    made->onChange = new _COnChange(this, &EditorBar::clicked);
    addControl(made);
    switches.push_back(made);
    return made;
}

void EditorBar::clicked(CButton* sender) {
    shown.workspace.runAction(static_cast<CAction*>(sender->userPtr));
    refresh();
}

void EditorBar::refresh() {
    for (CButton* s : switches) s->setLit(static_cast<CAction*>(s->userPtr)->isOn());
    grid->refresh();
    scale->refresh();
    chord->refresh();
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
