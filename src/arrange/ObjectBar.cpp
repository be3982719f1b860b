#include "arrange/ObjectBar.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/MidiBytes.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Senders.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/ClipEdits.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/edit/Slicing.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Events.h"
#include "ui/NameField.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int gap = 2, margin = 8, buttonTop = 4, high = 18;
constexpr int lengthWidth = 76, lengthLabel = 46, sliceWidth = 44, moreWidth = 24;
constexpr int leastText = 60;
enum Button { forward, reversed, normal, repitch, stretch };

struct Row {
    const char *name, *text, *hint;
    int width;
};

/// By `Button`.
constexpr Row rows[] = {
    {"forward", "Fwd", "Play the selected clips forward", 34},
    {"reversed", "Rev", "Play the selected clips backward", 34},
    {"normal", "Normal", "Clips keep their pitch and speed", 54},
    {"repitch", "Re-pitch", "Clips follow the tempo with their pitch", 60},
    {"stretch", "Stretch", "Clips follow the tempo and keep their pitch", 54},
};

const char* wordOf(const CPart* part) {
    return part->type == partAudio ? "Sample" : part->type == partDrum ? "Drum" : "Note";
}

/// The only event of a part that is selected, with its tick in the part.
struct SingleEvent {
    CBaseEvent* event = nullptr;
    int tick = 0;
};

/// Of what a MIDI part has, notes alone.
bool isTold(const CPart* part, const CBaseEvent* event) {
    return part->type != partMIDI || isNote(part->type, event);
}

SingleEvent singleEvent(CPart* part) {
    SingleEvent found;
    int count = 0;
    eachEvent(part->getEvents(), [&](CBaseEvent* e, int tick) {
        if (!(e->flags & eventSelected) || !isTold(part, e) || count++ > 0) return;
        found = {e, tick};
    });
    return count == 1 ? found : SingleEvent();
}

CStr nameOf(const CTrack* track, const CPart* part, const CBaseEvent* event) {
    if (part->type == partAudio) {
        const CSample* sample = asClip(event)->sample;
        return sample ? extractFileName(sample->filename) : CStr();
    }
    if (part->type == partDrum) {
        const CDrumSound* drum = track->drumSound(asHit(event)->sound);
        return drum ? drum->getId() : CStr();
    }
    return noteToStr(asByte1(asMessage(event)->data));
}

/// Of what the bar is about, in ticks: of notes and hits their own, of all else that of the part.
int lengthOf(CSeq* seq, CPart* part) {
    const SingleEvent single = singleEvent(part);
    const int* own = single.event ? eventLength(part->type, single.event) : nullptr;
    return own ? *own : seq->getTicks(part);
}

CStr textOf(CSeq* seq, CPart* part) {
    const CSongTrack* songTrack = seq->partToSongTrack(part);
    const SingleEvent single = singleEvent(part);
    const CStr word = CStr(wordOf(part)) + ": ";
    if (single.event)
        return word + nameOf(songTrack->track, part, single.event) + ", " +
               placeText(seq, limitTicks(int64_t(part->pos) + part->offset + single.tick)) + ", " +
               part->content()->id;
    CStr text = word + partText(seq, songTrack, part);
    if (CList all; seq->getProg()->getSelectedParts(&all), all.getCount() > 1)
        text += ", and " + asStr(all.getCount() - 1) + " more";
    return text;
}

} // namespace

ObjectBar::ObjectBar(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "objectbar", 0, 0, 1, 1), state(shared) {
    arrowsWalk = true;
    for (const Row& row : rows) {
        CButton* made = add(row.name, row.text, row.hint, row.width);
        made->tag = int(buttons.size());
        made->visible = false;
        buttons.push_back(made);
    }
    slice = add("slice", "Slice", "Cut the selected clips at the steps of the grid", sliceWidth);
    length = add("length", "", "Length in bars.beats.ticks: press and type", lengthWidth);
    more = add("more", "...", "What else can be set of the selected clips", moreWidth);
    slice->visible = length->visible = more->visible = false;
    wire(slice->onChange, new _COnChange<ObjectBar>(this, &ObjectBar::sliceClicked));
    wire(more->onChange, new _COnChange<ObjectBar>(this, &ObjectBar::moreClicked));
    wire(length->onChange, new _COnChange<ObjectBar>(this, &ObjectBar::lengthClicked));
}

CButton* ObjectBar::add(const char* name, const char* text, const char* told, int wide) {
    auto* made = new CButton(win, name, text, 0, buttonTop, wide, high);
    made->hint = made->spokenName = told;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<ObjectBar>(this, &ObjectBar::clicked);
    addControl(made);
    return made;
}

/// From the right; what has no room goes to the menu, first how clips play.
void ObjectBar::resized() {
    int x = width - margin;
    const auto put = [&](CButton* button, int before) {
        x -= button->width + before;
        button->setBounds(x, buttonTop, button->width, high);
    };
    put(length, gap);
    x -= lengthLabel;
    put(slice, margin);
    for (size_t i = buttons.size(); i-- > 0;) put(buttons[i], i == normal ? margin : gap);
}

/// All of them have room, or this one has it beside the button of the menu.
bool ObjectBar::fits(const CCtrl* button) const {
    const bool all = buttons.front()->left >= leastText;
    return all || button->left - (button == length ? 0 : moreWidth + gap) >= leastText;
}

void ObjectBar::moreClicked(CObject*) {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    for (CButton* button : buttons) {
        if (fits(button)) continue;
        CMenuItem* item =
            popup->add(button->hint, new _COnChange<ObjectBar>(this, &ObjectBar::entryClicked));
        item->tag = button->tag;
        item->checked = button->lit;
    }
    if (!fits(slice))
        popup->add(slice->hint, new _COnChange<ObjectBar>(this, &ObjectBar::sliceClicked));
    const CPoint corner = win->getPos(true), in = win->controlPos(more);
    popup->popup(corner.x + in.x, corner.y + in.y + high, more->hasKeyFocus());
}

void ObjectBar::entryClicked(CObject* sender) {
    choose(tagOf(sender));
}

void ObjectBar::clicked(CObject* sender) {
    choose(tagOf(sender));
}

void ObjectBar::choose(int which) {
    CSeq* seq = state.seq();
    const CAudioEvent* clip = seq ? firstClip(seq->getProg()->getFirstSelectedPart()) : nullptr;
    if (!clip) return;
    if (which >= normal)
        setClips(seq, ClipSetting::mode, float(which - normal));
    else if ((clip->reverse != 0) != (which == reversed))
        reverseClips(seq);
}

void ObjectBar::sliceClicked(CObject*) {
    if (CSeq* seq = state.seq()) state.tell(beatsliceParts(seq));
}

void ObjectBar::lengthClicked(CObject*) {
    NameField::dropLeft(field);
    if (field) return;
    const CRect box = asRect(length->left, buttonTop, length->left + lengthWidth, buttonTop + high);
    field = new NameField(this, box, length->text, "Length");
    field->onName = [this](const CStr& text) { lengthTyped(text); };
}

/// All selected parts get it, or a single note or hit.
void ObjectBar::lengthTyped(const CStr& text) {
    CSeq* seq = state.seq();
    CPart* part = seq ? seq->getProg()->getFirstSelectedPart() : nullptr;
    const int ticks = part ? spanOf(seq, text) : 0;
    if (ticks < 1) return;
    const SingleEvent single = singleEvent(part);
    if (single.event && eventLength(part->type, single.event))
        resizeEvents(seq, part, ticks - lengthOf(seq, part));
    else
        resizeParts(seq, ticks, false);
}

bool ObjectBar::refresh() {
    CSeq* seq = state.seq();
    CPart* part = seq ? seq->getProg()->getFirstSelectedPart() : nullptr;
    const CStr now = part ? textOf(seq, part) : CStr("Nothing is selected");
    const CStr span = part ? spanText(seq, lengthOf(seq, part)) : CStr();
    const CAudioEvent* clip = firstClip(part);
    NameField::dropLeft(field);
    bool changed = now != shown || span != length->text;
    const auto show = [&](CButton* button, bool seen) {
        changed = changed || button->visible != seen;
        button->visible = seen;
    };
    for (CButton* button : buttons) {
        const int which = button->tag;
        const bool lit = clip && (which >= normal ? clip->mode == which - normal
                                                  : (clip->reverse != 0) == (which == reversed));
        changed = changed || button->lit != lit;
        button->lit = lit;
        show(button, clip && fits(button));
    }
    show(slice, clip && fits(slice));
    show(length, part && fits(length));
    int leftmost = length->left - lengthLabel;
    if (slice->visible) leftmost = slice->left;
    for (const CButton* button : buttons)
        if (button->visible) leftmost = asMin(leftmost, button->left);
    more->setBounds(leftmost - gap - moreWidth, buttonTop, moreWidth, high);
    show(more, clip && !fits(buttons.front()));
    if (!changed) return false;
    length->text = span;
    length->spokenName = "Length " + span;
    shown = now;
    redraw();
    return true;
}

void ObjectBar::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    int right = width;
    for (const auto* c : controls)
        if (c->visible) right = asMin(right, c->left - (c == length ? lengthLabel : 0));
    const CRect room = asRect(margin, 0, right - margin, height - 1);
    g->drawText(palette.dimText, textFace({})->shortened(shown, room.width()), room, textLeft);
    if (length->visible)
        g->drawText(palette.dimText, "Length",
                    asRect(length->left - lengthLabel, 0, length->left, height - 1), textLeft);
    CGroup::paint(g, rect);
}

void ObjectBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Object bar";
    d.text = shown.asChar();
}
