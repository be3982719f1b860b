#include "arrange/SnapBar.h"

#include "arrange/ArrangeState.h"
#include "engine/CSnap.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "sequencer/song/CSeq.h"
#include "ui/DragSnap.h"
#include "ui/GridCommands.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 2, group = 8, buttonTop = 4, high = 18;
constexpr int switchWidth = 22, snapWidth = 40, relativeWidth = 28, resolutionWidth = 28;
constexpr const char* resolutionTexts[] = {"128", "64", "32", "16", "8", "4", "Bar"};
enum Switch { switchSnap, switchRelative, switchTriplet, switchDotted, switchAdaptive };

} // namespace

SnapBar::SnapBar(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "snapbar", 0, 0, barWidth, barHeight), state(shared) {
    arrowsWalk = true;
    buttons[switchSnap] = add("snap", "Snap", "Snap to grid on/off", snapWidth);
    buttons[switchRelative] = add(
        "relative", "Rel", "Absolute/relative snap: by steps from where it stood", relativeWidth);
    buttons[switchTriplet] = add("triplet", "T", "Triplet on/off", switchWidth);
    buttons[switchDotted] = add("dotted", "D", "Dotted on/off", switchWidth);
    nextX += group;
    buttons[switchAdaptive] = add("adaptive", "Auto", "The grid follows the zoom", snapWidth);
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
    const int index = tagOf(sender);
    Options& options = state.workspace.options();
    if (index == switchRelative) return options.relativeSnap.toggle();
    if (index == switchAdaptive) return options.adaptiveGrid.toggle();
    if (index >= switches) {
        options.adaptiveGrid.set(0);
        return chooseSnap(seq, index - switches);
    }
    toggleSnap(seq, index == switchSnap      ? gridActive
                    : index == switchTriplet ? gridTriplet
                                             : gridDotted);
}

/// Of the resolutions the one in force is lit, though the zoom may have chosen it.
bool SnapBar::refresh() {
    CSeq* seq = state.seq();
    if (!seq) return false;
    const CSnap& snap = *seq->snap;
    bool changed = false;
    const auto show = [&](size_t i, bool on) {
        changed = changed || buttons[i]->lit != on;
        buttons[i]->setLit(on);
    };
    const Options& options = state.workspace.options();
    const bool adaptive = options.adaptiveGrid.on();
    show(switchSnap, snap.active);
    show(switchRelative, options.relativeSnap.on());
    show(switchTriplet, snap.triplet);
    show(switchDotted, snap.dotted);
    show(switchAdaptive, adaptive);
    const int now = adaptive ? adaptiveIndex(snap, state.axis()) : snap.asIndex();
    for (int i = 0; i < resolutions; i++) show(size_t(switches + i), now == i);
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
