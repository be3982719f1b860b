#include "mixer/MixerBar.h"

#include "engine/CMixer.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CToolbarButton.h"
#include "gui/dialogs/CTextWin.h"
#include "mixer/CMixerPanel.h"
#include "ui/ProgramItems.h"
#include "ui/RoundButton.h"

namespace {

constexpr int gap = 2, groupGap = 12, high = 20, textMargin = 16;
constexpr int programsWidth = 96;

constexpr struct {
    const char *name, *text, *hint;
    int bit;
} rowButtons[] = {
    {"inserts", "FX", "Show inserts or the equaliser on the strips", rowsInserts},
    {"sends", "Send", "Show the sends on the strips", rowsSends},
    {"routing", "Route", "Show program, trim and output on the strips", rowsRouting},
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

} // namespace

MixerBar::MixerBar(CWin* owner, CMixerPanel& below)
    : CGroup(owner, "mixerbar", 0, 0, 1, barHeight), panel(below) {
    arrowsWalk = true;
    for (int i = 0; i < stripSections; i++) {
        const CStr title = titleOf(StripSection(i));
        sections.push_back(add("section", title, "Show " + title, 0, &MixerBar::sectionClicked));
        sections.back()->tag = i;
    }
    nextX += groupGap;
    for (const auto& r : rowButtons) {
        rows.push_back(add(r.name, r.text, r.hint, 0, &MixerBar::rowsClicked));
        rows.back()->tag = r.bit;
    }
    nextX += groupGap;
    programs = add("programs", "", "Choices of sections: choose, add or delete one", programsWidth,
                   &MixerBar::programsClicked);
    nextX += groupGap;
    solo = add("unsolo", "Un-solo", "Take solo off all strips", 0, &MixerBar::soloClicked);
    solo->litSkin = &clMixSoloPushed;
}

CButton* MixerBar::add(const char* name, const CStr& text, const CStr& told, int wide,
                       void (MixerBar::*clicked)(CObject*)) {
    const bool word = clicked == &MixerBar::sectionClicked || clicked == &MixerBar::rowsClicked;
    if (wide == 0) wide = textFace({})->textWidth(text) + textMargin;
    const int y = (barHeight - high) / 2;
    CButton* made =
        word ? static_cast<CButton*>(new WordSwitch(win, name, text, nextX, y, wide, high))
             : new RoundButton(win, name, text, nextX, y, wide, high);
    made->hint = made->spokenName = told;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<MixerBar>(this, clicked);
    addControl(made);
    nextX += wide + gap;
    return made;
}

void MixerBar::refresh() {
    for (CButton* b : sections) b->setLit(panel.shows(StripSection(b->tag)));
    for (CButton* b : rows) b->setLit(panel.showsRows(b->tag));
    CMixer& mixer = panel.state.mixer;
    programs->setText(mixer.getProgName(mixer.curProg));
    solo->setLit(panel.anySolo());
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
    const auto which = StripSection(static_cast<CCtrl*>(sender)->tag);
    panel.show(which, !panel.shows(which));
    refresh();
}

void MixerBar::rowsClicked(CObject* sender) {
    const int which = static_cast<CCtrl*>(sender)->tag;
    panel.showRows(which, !panel.showsRows(which));
    refresh();
}

void MixerBar::soloClicked(CObject*) {
    panel.unSolo();
}

// Programs.

void MixerBar::programsClicked(CObject*) {
    CMixer& mixer = panel.state.mixer;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
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
    const CPoint corner = win->getPos(true), in = win->controlPos(programs);
    popup->popup(corner.x + in.x, corner.y + in.y + programs->height, programs->hasKeyFocus());
}

void MixerBar::progChanged(CObject* sender) {
    panel.state.door()->set(programOfComp(&panel.state.mixer),
                            static_cast<CMenuItem*>(sender)->tag);
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
