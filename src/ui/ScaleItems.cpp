#include "ui/ScaleItems.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "sequencer/CEditorComp.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"
#include "ui/ActionItems.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* names[octaveKeys] = {"C",  "C#", "D",  "D#", "E",  "F",
                                           "F#", "G",  "G#", "A",  "A#", "B"};
constexpr int scaleWidth = 84, chordWidth = 52;

int tagOf(CObject* sender) {
    return static_cast<CMenuItem*>(static_cast<CCtrl*>(sender))->tag;
}

void dropBelow(CPopup* popup, CCtrl* ctrl) {
    const CPoint corner = ctrl->win->getPos(true), in = ctrl->win->controlPos(ctrl);
    popup->popup(corner.x + in.x, corner.y + in.y + ctrl->height, ctrl->hasKeyFocus());
}

void setScale(CSeq* seq, const Scale& to) {
    seq->host->values->set(scaleOf(seq), {double(to.root), double(to.kind)});
}

} // namespace

Scale scaleOfSong(const CSeq* seq) {
    return {seq->scaleRoot, seq->scaleKind};
}

CStr keyName(int key) {
    return names[(key % octaveKeys + octaveKeys) % octaveKeys];
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
    : CButton(owner, "scale", "", l, t, scaleWidth, h), workspace(space) {
    hint = "The scale of the song: press to choose another";
    skin = &clTrackControls;
    litSkin = &clTrackControlsPushed;
    onChange = new _COnChange<ScaleButton>(this, &ScaleButton::clicked);
}

void ScaleButton::refresh() {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    const CStr now = scaleText(scaleOfSong(seq));
    setLit(seq->editorComp->snapsToScale);
    if (now == text) return;
    text = now;
    spokenName = "Scale " + now;
    redraw();
}

void ScaleButton::clicked(CObject*) {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    const Scale scale = scaleOfSong(seq);
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
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
    dropBelow(popup, this);
}

void ScaleButton::rootChosen(CObject* sender) {
    CSeq* seq = playableSongOf(workspace.host());
    if (seq) setScale(seq, {tagOf(sender), seq->scaleKind});
    refresh();
}

void ScaleButton::kindChosen(CObject* sender) {
    CSeq* seq = playableSongOf(workspace.host());
    if (seq) setScale(seq, {seq->scaleRoot, tagOf(sender)});
    refresh();
}

// The chord.

ChordButton::ChordButton(CWin* owner, Workspace& space, int l, int t, int h)
    : CButton(owner, "chord", "", l, t, chordWidth, h), workspace(space) {
    hint = "What a drawn note becomes: press to choose a chord";
    skin = &clTrackControls;
    litSkin = &clTrackControlsPushed;
    onChange = new _COnChange<ChordButton>(this, &ChordButton::clicked);
}

void ChordButton::refresh() {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    const int kind = seq->editorComp->chord;
    const CStr now = kind < 0 ? CStr("1 note") : CStr("C") + chordKinds()[size_t(kind)].name;
    setLit(kind >= 0);
    if (now == text) return;
    text = now;
    spokenName = CStr("Draws ") + (kind < 0 ? "single notes" : chordKinds()[size_t(kind)].title);
    redraw();
}

void ChordButton::clicked(CObject*) {
    const CSeq* seq = playableSongOf(workspace.host());
    if (!seq) return;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    const auto add = [&](const CStr& title, int kind) {
        CMenuItem* item =
            popup->add(title, new _COnChange<ChordButton>(this, &ChordButton::chosen));
        item->tag = kind;
        item->checked = seq->editorComp->chord == kind;
    };
    add("Single notes", -1);
    popup->addSeparator();
    for (int i = 0; i < int(chordKinds().size()); i++) add(chordKinds()[size_t(i)].title, i);
    dropBelow(popup, this);
}

void ChordButton::chosen(CObject* sender) {
    CSeq* seq = playableSongOf(workspace.host());
    if (seq) seq->editorComp->chord = tagOf(sender);
    refresh();
}
