#include "arrange/SnapBar.h"

#include "arrange/ArrangeState.h"
#include "arrange/GridCommands.h"
#include "engine/CSnap.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "sequencer/CSeq.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int gap = 2, group = 8, buttonTop = 4, high = 18;
constexpr int switchWidth = 22, snapWidth = 40, resolutionWidth = 28;
constexpr const char* resolutionTexts[] = {"128", "64", "32", "16", "8", "4", "Bar"};

} // namespace

SnapBar::SnapBar(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "snapbar", 0, 0, barWidth, barHeight), state(shared) {
    arrowsWalk = true;
    buttons[0] = add("snap", "Snap", "Snap to grid on/off", snapWidth);
    buttons[1] = add("triplet", "T", "Triplet on/off", switchWidth);
    buttons[2] = add("dotted", "D", "Dotted on/off", switchWidth);
    nextX += group;
    for (int i = 0; i < resolutions; i++) {
        CButton* made =
            add("resolution", resolutionTexts[i], "Resolution of the grid", resolutionWidth);
        made->spokenName = CStr("Grid ") + (i + 1 < resolutions ? "1/" : "") + resolutionTexts[i];
        buttons[size_t(switches + i)] = made;
    }
    for (size_t i = 0; i < buttons.size(); i++) buttons[i]->tag = int(i);
}

CButton* SnapBar::add(const char* name, const char* text, const char* told, int wide) {
    auto* made = new CButton(win, name, text, nextX, buttonTop, wide, high);
    made->hint = made->spokenName = told;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<SnapBar>(this, &SnapBar::clicked);
    addControl(made);
    nextX += wide + gap;
    return made;
}

void SnapBar::clicked(CObject* sender) {
    CSeq* seq = state.seq();
    if (!seq) return;
    const int index = static_cast<CButton*>(static_cast<CCtrl*>(sender))->tag;
    constexpr GridNumber numbers[switches] = {gridActive, gridTriplet, gridDotted};
    if (index >= switches)
        chooseSnap(seq, index - switches);
    else
        toggleSnap(seq, numbers[index]);
}

bool SnapBar::refresh() {
    CSeq* seq = state.seq();
    if (!seq) return false;
    const CSnap& snap = *seq->snap;
    bool changed = false;
    const auto show = [&](size_t i, bool on) {
        changed = changed || buttons[i]->lit != on;
        buttons[i]->setLit(on);
    };
    show(0, snap.active);
    show(1, snap.triplet);
    show(2, snap.dotted);
    for (int i = 0; i < resolutions; i++) show(size_t(switches + i), snap.asIndex() == i);
    return changed;
}

void SnapBar::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    CGroup::paint(g, rect);
}

void SnapBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Snap bar";
}
