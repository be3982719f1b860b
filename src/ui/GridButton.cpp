#include "ui/GridButton.h"

#include "engine/CSnap.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "sequencer/CSeq.h"
#include "ui/ActionItems.h"
#include "ui/GridCommands.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

GridButton::GridButton(CWin* owner, Workspace& space, int l, int t, int h)
    : CButton(owner, "grid", "", l, t, int(usualWidth), h), workspace(space) {
    hint = "The grid: press to choose another";
    skin = &clTrackControls;
    litSkin = &clTrackControlsPushed;
    onChange = new _COnChange<GridButton>(this, &GridButton::clicked);
}

void GridButton::refresh() {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    const CSnap& snap = *seq->snap;
    CStr now = workspace.options().adaptiveGrid.on() ? CStr("Auto") : gridName(snap.asIndex());
    if (snap.triplet || snap.dotted) now += snap.dotted ? " D" : " T";
    if (now == text) return;
    text = now;
    spokenName = "Grid " + now;
    redraw();
}

void GridButton::clicked(CObject*) {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    const CSnap& snap = *seq->snap;
    const bool adaptive = workspace.options().adaptiveGrid.on();
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    for (int i = 0; i < gridCount; i++) {
        CMenuItem* item =
            popup->add(gridName(i), new _COnChange<GridButton>(this, &GridButton::chosen));
        item->tag = i;
        item->checked = !adaptive && snap.asIndex() == i;
    }
    popup->addSeparator();
    const auto addKind = [&](const char* name, GridNumber kind, bool on) {
        CMenuItem* item =
            popup->add(name, new _COnChange<GridButton>(this, &GridButton::kindChosen));
        item->tag = int(kind);
        item->checked = on;
    };
    addKind("Triplet", gridTriplet, snap.triplet);
    addKind("Dotted", gridDotted, snap.dotted);
    popup->addSeparator();
    for (const char* action : {"snapadaptive", "snaprelative"})
        addActionItem(popup, workspace, action);
    const CPoint corner = win->getPos(true), in = win->controlPos(this);
    popup->popup(corner.x + in.x, corner.y + in.y + height, hasKeyFocus());
}

void GridButton::chosen(CObject* sender) {
    CSeq* seq = playableSongOf(workspace.host());
    workspace.options().adaptiveGrid.set(0);
    if (seq) chooseSnap(seq, static_cast<CMenuItem*>(sender)->tag);
    refresh();
}

void GridButton::kindChosen(CObject* sender) {
    CSeq* seq = playableSongOf(workspace.host());
    if (seq) toggleSnap(seq, GridNumber(static_cast<CMenuItem*>(sender)->tag));
    refresh();
}
