#include "mixer/MixerBar.h"

#include "engine/CMixer.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Fonts.h"
#include "gui/Senders.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CToolbarButton.h"
#include "gui/dialogs/CTextWin.h"
#include "mixer/CMixerPanel.h"
#include "ui/ProgramItems.h"
#include "ui/RoundButton.h"

#include <iterator>

namespace {

constexpr int gap = 2, groupGap = 8, high = 20, wordMargin = 16, leftMargin = 6;
constexpr int programsWidth = 80, scenesWidth = 72, filterWidth = 80, nameWidth = 80;
constexpr int soloWidth = 62;
constexpr const char* filterNames[] = {"All", "Sounding", "Routed to", "Selected"};
constexpr const char* filterTexts[] = {"All strips", "Sounding", "Routed to the selected",
                                       "The selected"};

constexpr struct {
    const char *name, *text, *hint;
    int bit;
} rowButtons[] = {
    {"inserts", "FX", "Show inserts or the equaliser on the strips", rowsInserts},
    {"sends", "Send", "Show the sends on the strips", rowsSends},
    {"routing", "Route", "Show program, trim and output on the strips", rowsRouting},
    {"loudnesses", "LUFS", "Show on the strips how loud they are, and their true peaks",
     rowsLoudness},
    {"loads", "Load", "Show on the strips what they cost", rowsLoad},
};

/// A word that is underlined while what it stands for shows.
class WordSwitch : public CToolbarButton {
public:
    using CToolbarButton::CToolbarButton;

    void paint(CGraphic* g, CRect rect) override {
        const CPalette& colours = win->app->gui->palette;
        if (isHovered() || isPushed())
            g->fillRound(fadeCol(colours.panel, colours.text, isPushed() ? 0.2 : 0.1), rect);
        g->drawText(lit ? colours.text : colours.dimText, text, rect, 0);
        g->fillRect(lit ? colours.accent : colours.frame,
                    asRect(4, rect.bottom - 2, rect.right - 4, rect.bottom));
        if (hasKeyFocus()) g->frameRound(colours.accent, rect);
    }
    void describe(Description& d, int part) const override {
        CToolbarButton::describe(d, part);
        d.role = Role::toggle;
    }
};

/// A field that says what it is for while nothing stands in it.
class FindField : public CEdit {
public:
    using CEdit::CEdit;

    void paint(CGraphic* g, CRect rect) override {
        CEdit::paint(g, rect);
        if (text.empty() && !hasKeyFocus())
            g->drawText(win->app->gui->palette.dimText, "Find", sizeRect(rect, textMargin, 0, 0, 0),
                        textLeft);
    }
};

} // namespace

MixerBar::MixerBar(CWin* owner, CMixerPanel& below)
    : CGroup(owner, "mixerbar", 0, 0, 1, barHeight), panel(below) {
    arrowsWalk = true;
    for (int i = 0; i < stripSections; i++) {
        const CStr title = titleOf(StripSection(i));
        addSwitch(sections, "section", title, "Show " + title, i, &MixerBar::sectionClicked);
    }
    for (const auto& r : rowButtons)
        addSwitch(rows, r.name, r.text, r.hint, r.bit, &MixerBar::rowsClicked);
    programs = addButton(choices, "programs", "", "Choices of sections: choose, add or delete one",
                         programsWidth, &MixerBar::programsClicked);
    scenes = addButton(choices, "scenes", "Scenes",
                       "Scenes of the whole mixer: recall, add, update or delete one", scenesWidth,
                       &MixerBar::scenesClicked);
    for (int i = 0; i < 2; i++) {
        const char* text = i ? "B" : "A";
        states[i] =
            addButton(choices, "state", text, CStr("Compare: state ") + text + " of the mixer",
                      high, &MixerBar::stateClicked);
        states[i]->tag = i;
    }
    filter = addButton(search, "filter", "",
                       "Which strips show: all, sounding, routed to the selected, selected",
                       filterWidth, &MixerBar::filterClicked);
    part = new FindField(win, "find", 0, 0, nameWidth, high);
    part->spokenName = part->hint = "Show strips with this in their names";
    enter(search, part);
    solo = addButton(ends, "unsolo", "Un-solo", "Take solo off all strips", soloWidth,
                     &MixerBar::soloClicked);
    solo->litSkin = &clMixSoloPushed;
    for (CButton* b : {programs, scenes, filter})
        b->onPaint = new _COnPaint(this, &MixerBar::paintChoice);
}

void MixerBar::enter(Group& group, CCtrl* made) {
    made->top = (barHeight - high) / 2;
    addControl(made);
    group.push_back(made);
}

CButton* MixerBar::addSwitch(Group& group, const char* name, const CStr& text, const CStr& told,
                             int number, Clicked clicked) {
    const int wide = textFace({})->textWidth(text) + wordMargin;
    auto* made = new WordSwitch(win, name, text, 0, 0, wide, high);
    made->hint = made->spokenName = told;
    made->tag = number;
    made->onChange = new _COnChange<MixerBar>(this, clicked);
    enter(group, made);
    return made;
}

CButton* MixerBar::addButton(Group& group, const char* name, const CStr& text, const CStr& told,
                             int wide, Clicked clicked) {
    auto* made = new RoundButton(win, name, text, 0, 0, wide, high);
    made->hint = made->spokenName = told;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<MixerBar>(this, clicked);
    enter(group, made);
    return made;
}

int MixerBar::widthOf(const Group& group) {
    int wide = groupGap - gap;
    for (const CCtrl* c : group) wide += c->width + gap;
    return wide;
}

void MixerBar::resized() {
    int over = leftMargin - width;
    for (const Group* g : {&sections, &rows, &choices, &search, &ends}) over += widthOf(*g);
    for (Group* g : {&rows, &sections}) {
        for (CCtrl* c : *g) c->visible = over <= 0;
        if (over > 0) over -= widthOf(*g);
    }
    int x = leftMargin;
    for (const Group* g : {&sections, &rows, &choices, &search, &ends}) {
        if (!g->front()->visible) continue;
        for (CCtrl* c : *g) {
            c->left = x;
            x += c->width + gap;
        }
        x += groupGap - gap;
    }
    redraw();
}

/// With a mark that tells of a menu.
void MixerBar::paintChoice(CButton* button, CGraphic* g, CRect rect) {
    const int colour = button->lit ? button->faceColour() : win->app->gui->palette.text;
    constexpr int arrowRoom = 14, arrowReach = 3, margin = 6;
    const CRect box = asRect(margin, 0, rect.right - arrowRoom, rect.bottom);
    g->drawText(colour, textFace({})->shortened(button->text, box.width()), box, textLeft);
    const int x = rect.right - arrowRoom / 2 - 1, y = rect.bottom / 2;
    drawArrow(g, colour, asRect(x - arrowReach, y - 2, x + arrowReach + 1, y + 2), dirDown,
              arrowReach);
}

void MixerBar::refresh() {
    for (CCtrl* c : sections) static_cast<CButton*>(c)->setLit(panel.shows(StripSection(c->tag)));
    for (CCtrl* c : rows) static_cast<CButton*>(c)->setLit(panel.showsRows(c->tag));
    const CMixer& mixer = panel.state.mixer;
    programs->setText(panel.state.mixer.getProgName(mixer.curProg));
    solo->setLit(panel.anySolo());
    for (int i = 0; i < 2; i++) states[i]->setLit(panel.scenes.state() == i);
    filter->setText(filterNames[panel.filter().kind()]);
    filter->setLit(panel.filter().kind() != StripFilter::all);
    panel.setNameFilter(part->text.trim());
}

void MixerBar::find() {
    win->setKeyCtrl(part);
    part->selectAll();
}

void MixerBar::scenesClicked(CObject*) {
    CPopup* popup = StripMenus::newPopup(this);
    panel.scenes.fill(popup);
    popup->popupBelow(scenes);
}

void MixerBar::stateClicked(CObject* sender) {
    panel.scenes.compare(tagOf(sender));
    refresh();
}

void MixerBar::filterClicked(CObject*) {
    CPopup* popup = StripMenus::newPopup(this);
    for (int i = 0; i < int(std::size(filterTexts)); i++) {
        CMenuItem* item =
            popup->add(filterTexts[i], new _COnChange<MixerBar>(this, &MixerBar::filterChosen));
        item->tag = i;
        item->checked = i == panel.filter().kind();
    }
    popup->popupBelow(filter);
}

void MixerBar::filterChosen(CObject* sender) {
    if (!panel.setFilter(StripFilter::Kind(tagOf(sender))))
        panel.state.tell("Select the strips first that it is about");
    refresh();
}

void MixerBar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
}

void MixerBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Mixer bar";
}

void MixerBar::sectionClicked(CObject* sender) {
    const auto which = StripSection(tagOf(sender));
    panel.show(which, !panel.shows(which));
    refresh();
}

void MixerBar::rowsClicked(CObject* sender) {
    const int which = tagOf(sender);
    panel.showRows(which, !panel.showsRows(which));
    refresh();
}

void MixerBar::soloClicked(CObject*) {
    panel.unSolo();
}

// Programs.

void MixerBar::programsClicked(CObject*) {
    CMixer& mixer = panel.state.mixer;
    CPopup* popup = StripMenus::newPopup(this);
    for (int i = 0; i < mixer.progs.getCount(); i++) {
        CMenuItem* item = popup->add(mixer.getProgName(i),
                                     new _COnChange<MixerBar>(this, &MixerBar::progChanged));
        item->tag = i;
        item->checked = i == mixer.curProg;
    }
    popup->addSeparator();
    const auto entry = [&](const char* text, void (MixerBar::*chosen)(CObject*)) {
        return popup->add(text, new _COnChange<MixerBar>(this, chosen));
    };
    entry("Add program", &MixerBar::addProgClicked);
    entry("Duplicate program", &MixerBar::duplicateProgClicked);
    entry("Rename...", &MixerBar::renameProgClicked);
    entry("Delete program", &MixerBar::deleteProgClicked)->enabled = mixer.progs.getCount() > 1;
    popup->popupBelow(programs);
}

void MixerBar::progChanged(CObject* sender) {
    panel.state.door()->set(programOfComp(&panel.state.mixer), tagOf(sender));
}

void MixerBar::addProgClicked(CObject*) {
    panel.state.mixer.addProg();
}

void MixerBar::duplicateProgClicked(CObject*) {
    panel.state.mixer.duplicateProg();
}

void MixerBar::renameProgClicked(CObject*) {
    CMixer& mixer = panel.state.mixer;
    CTextWin dialog(win, "Rename program", mixer.getProgName(mixer.curProg));
    dialog.showModal();
    if (dialog.result) mixer.renameProg(dialog.text);
}

void MixerBar::deleteProgClicked(CObject*) {
    panel.state.mixer.deleteProg();
}
