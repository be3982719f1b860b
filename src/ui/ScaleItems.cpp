#include "ui/ScaleItems.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "ui/ActionItems.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

namespace {

constexpr int scaleWidth = 84, chordWidth = 52;

void setScale(CSeq* seq, const Scale& to) {
    seq->host->values->set(scaleOf(seq), {double(to.root), double(to.kind)});
}

} // namespace

Scale scaleOfSong(const CSeq* seq) {
    return {seq->scaleRoot, seq->scaleKind};
}

CStr scaleText(const Scale& scale) {
    return scale.any() ? keyName(scale.root) + " " + scaleName(scale.kind) : CStr(scaleName(0));
}

CStr chordText(const FoundChord& of) {
    if (of.kind < 0) return "";
    const CStr text = keyName(of.root) + chordKinds()[size_t(of.kind)].name;
    return of.bass == of.root ? text : text + "/" + keyName(of.bass);
}

// The scale.

ScaleButton::ScaleButton(CWin* owner, Workspace& space, int l, int t, int h)
    : SongMenuButton(owner, space, "scale", "The scale of the song: press to choose another",
                     asRect(l, t, l + scaleWidth, t + h)) {
}

void ScaleButton::refresh() {
    const CSeq* seq = song();
    if (!seq) return;
    setLit(seq->editorComp->snapsToScale);
    const CStr now = scaleText(scaleOfSong(seq));
    tell(now, "Scale " + now);
}

void ScaleButton::fill(CPopup* popup, CSeq* seq) {
    const Scale scale = scaleOfSong(seq);
    CPopup* roots = popup->addSub("Root");
    for (int root = 0; root < octaveKeys; root++) {
        CMenuItem* item =
            roots->add(keyName(root), new _COnChange<ScaleButton>(this, &ScaleButton::rootChosen));
        item->tag = root;
        item->checked = scale.root == root;
    }
    popup->addSeparator();
    for (int kind = 0; kind < scaleCount; kind++) {
        CMenuItem* item = popup->add(scaleName(kind),
                                     new _COnChange<ScaleButton>(this, &ScaleButton::kindChosen));
        item->tag = kind;
        item->checked = scale.kind == kind;
    }
    addActionItems(popup, workspace, {"scalesnap", "outofscale"});
}

void ScaleButton::rootChosen(CObject* sender) {
    if (CSeq* seq = song()) setScale(seq, {chosenTag(sender), seq->scaleKind});
    refresh();
}

void ScaleButton::kindChosen(CObject* sender) {
    if (CSeq* seq = song()) setScale(seq, {seq->scaleRoot, chosenTag(sender)});
    refresh();
}

// The chord.

ChordButton::ChordButton(CWin* owner, Workspace& space, int l, int t, int h)
    : SongMenuButton(owner, space, "chord", "What a drawn note becomes: press to choose a chord",
                     asRect(l, t, l + chordWidth, t + h)) {
}

void ChordButton::refresh() {
    const CSeq* seq = song();
    if (!seq) return;
    const int kind = seq->editorComp->chord;
    const bool single = kind < 0;
    setLit(!single);
    tell(single ? CStr("1 note") : CStr("C") + chordKinds()[size_t(kind)].name,
         CStr("Draws ") + (single ? "single notes" : chordKinds()[size_t(kind)].title));
}

void ChordButton::fill(CPopup* popup, CSeq* seq) {
    const auto add = [&](const CStr& title, int kind) {
        CMenuItem* item =
            popup->add(title, new _COnChange<ChordButton>(this, &ChordButton::chosen));
        item->tag = kind;
        item->checked = seq->editorComp->chord == kind;
    };
    add("Single notes", -1);
    popup->addSeparator();
    for (int i = 0; i < int(chordKinds().size()); i++) add(chordKinds()[size_t(i)].title, i);
}

void ChordButton::chosen(CObject* sender) {
    if (CSeq* seq = song()) seq->editorComp->chord = chosenTag(sender);
    refresh();
}
