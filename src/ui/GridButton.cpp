#include "ui/GridButton.h"

#include "engine/CSnap.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CSeq.h"
#include "ui/ActionItems.h"
#include "ui/GridCommands.h"
#include "ui/Options.h"
#include "ui/Workspace.h"

GridButton::GridButton(CWin* owner, Workspace& space, int l, int t, int h)
    : SongMenuButton(owner, space, "grid", "The grid: press to choose another",
                     asRect(l, t, l + usualWidth, t + h)) {
}

void GridButton::refresh() {
    const CSeq* seq = song();
    if (!seq) return;
    const CSnap& snap = *seq->snap;
    CStr now = workspace.options().adaptiveGrid.on() ? CStr("Auto") : gridName(snap.asIndex());
    if (snap.triplet || snap.dotted) now += snap.dotted ? " D" : " T";
    tell(now, "Grid " + now);
}

void GridButton::fill(CPopup* popup, CSeq* seq) {
    const CSnap& snap = *seq->snap;
    const bool adaptive = workspace.options().adaptiveGrid.on();
    for (int i = 0; i < gridCount; i++) {
        CMenuItem* item =
            popup->add(gridName(i), new _COnChange<GridButton>(this, &GridButton::chosen));
        item->tag = i;
        item->checked = !adaptive && snap.asIndex() == i;
    }
    popup->addSeparator();
    const auto addKind = [&](const char* kindName, GridNumber kind, bool on) {
        CMenuItem* item =
            popup->add(kindName, new _COnChange<GridButton>(this, &GridButton::kindChosen));
        item->tag = int(kind);
        item->checked = on;
    };
    addKind("Triplet", gridTriplet, snap.triplet);
    addKind("Dotted", gridDotted, snap.dotted);
    popup->addSeparator();
    for (const char* action : {"snapadaptive", "snaprelative"})
        addActionItem(popup, workspace, action);
}

void GridButton::chosen(CObject* sender) {
    workspace.options().adaptiveGrid.set(0);
    if (CSeq* seq = song()) chooseSnap(seq, tagOf(sender));
    refresh();
}

void GridButton::kindChosen(CObject* sender) {
    if (CSeq* seq = song()) toggleSnap(seq, GridNumber(tagOf(sender)));
    refresh();
}
