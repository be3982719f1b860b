#include "ui/ScaleItems.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "ui/ActionItems.h"
#include "ui/PlaceText.h"
#include "ui/Workspace.h"

namespace {

constexpr int scaleWidth = 84, chordWidth = 52;

/// The start of the bar that plays.
int barHere(CSeq* seq) {
    return tickOf(seq, {.bar = barPlace(seq, asInt(seq->getPos())).bar});
}

/// That which holds at the song's position, with the numbers that tell it.
struct ScaleHere {
    StoredValue value;
    StoredValue::Numbers numbers;

    explicit ScaleHere(CSeq* seq)
        : value(scaleOf(seq, seq->scales.indexAt(seq->getPos()))), numbers(value.get()) {}
    void set(CSeq* seq) const { seq->host->values->set(value, numbers); }
    bool isFirst() const { return value.index == 0; }
    int from() const { return asInt(numbers[2]); }
};

} // namespace

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
    : SongMenuButton(owner, space, "scale",
                     "The scale at the song's position: press to choose another",
                     asRect(l, t, l + scaleWidth, t + h)) {
}

void ScaleButton::refresh() {
    CSeq* seq = song();
    if (!seq) return;
    setLit(seq->editorComp->snapsToScale);
    const CStr now = scaleText(seq->scales.at(seq->getPos()));
    tell(now, "Scale " + now);
}

void ScaleButton::fill(CPopup* popup, CSeq* seq) {
    const Scale scale = seq->scales.at(seq->getPos());
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
    popup->addSeparator();
    const ScaleHere here(seq);
    const auto addChange = [&](const char* title, int tick, void (ScaleButton::*run)(CObject*)) {
        popup->add(CStr(title) + asStr(barPlace(seq, tick).bar),
                   new _COnChange<ScaleButton>(this, run));
    };
    if (barHere(seq) > here.from() && seq->scales.unused() >= 0)
        addChange("Another one from bar ", barHere(seq), &ScaleButton::changeAdded);
    if (!here.isFirst())
        addChange("None of its own from bar ", here.from(), &ScaleButton::changeDropped);
    addActionItems(popup, workspace, {"scalesnap", "outofscale"});
}

void ScaleButton::rootChosen(CObject* sender) {
    CSeq* seq = song();
    if (!seq) return;
    ScaleHere here(seq);
    here.numbers[0] = tagOf(sender);
    here.set(seq);
    refresh();
}

void ScaleButton::kindChosen(CObject* sender) {
    CSeq* seq = song();
    if (!seq) return;
    ScaleHere here(seq);
    here.numbers[1] = tagOf(sender);
    here.set(seq);
    refresh();
}

/// With the scale that holds there so far.
void ScaleButton::changeAdded(CObject*) {
    CSeq* seq = song();
    const int change = seq ? seq->scales.unused() : -1;
    if (change < 0) return;
    StoredValue::Numbers numbers = ScaleHere(seq).numbers;
    numbers[2] = barHere(seq);
    seq->host->values->set(scaleOf(seq, change), numbers);
    refresh();
}

void ScaleButton::changeDropped(CObject*) {
    CSeq* seq = song();
    if (!seq) return;
    ScaleHere here(seq);
    here.numbers[2] = SongScales::never;
    if (!here.isFirst()) here.set(seq);
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
    if (CSeq* seq = song()) seq->editorComp->chord = tagOf(sender);
    refresh();
}
