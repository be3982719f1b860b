#include "arrange/ObjectBar.h"

#include "arrange/ArrangeState.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "sequencer/CSeq.h"
#include "sequencer/ClipEdits.h"
#include "sequencer/Events.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int gap = 2, margin = 8, buttonTop = 4, high = 18;
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

const CAudioEvent* firstClip(CPart* part) {
    return part && part->type == partAudio ? static_cast<CAudioEvent*>(part->getEvents()) : nullptr;
}

const char* wordOf(const CPart* part) {
    return part->type == partAudio ? "Sample" : part->type == partDrum ? "Drum" : "Note";
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

void ObjectBar::resized() {
    int x = width - margin;
    for (size_t i = buttons.size(); i-- > 0;) {
        x -= buttons[i]->width + (i == normal ? margin : gap);
        buttons[i]->setBounds(x, buttonTop, buttons[i]->width, high);
    }
}

void ObjectBar::clicked(CObject* sender) {
    CSeq* seq = state.seq();
    const int which = static_cast<CButton*>(static_cast<CCtrl*>(sender))->tag;
    const CAudioEvent* clip = seq ? firstClip(seq->getProg()->getFirstSelectedPart()) : nullptr;
    if (!clip) return;
    if (which >= normal)
        setClips(seq, ClipSetting::mode, float(which - normal));
    else if ((clip->reverse != 0) != (which == reversed))
        reverseClips(seq);
}

bool ObjectBar::refresh() {
    CSeq* seq = state.seq();
    CPart* part = seq ? seq->getProg()->getFirstSelectedPart() : nullptr;
    CStr now = "Nothing is selected";
    if (part) {
        now = CStr(wordOf(part)) + ": " + partText(seq, seq->partToSongTrack(part), part);
        if (CList all; seq->getProg()->getSelectedParts(&all), all.getCount() > 1)
            now += ", and " + asStr(all.getCount() - 1) + " more";
    }
    const CAudioEvent* clip = firstClip(part);
    bool changed = now != shown;
    for (CButton* button : buttons) {
        const int which = button->tag;
        const bool lit = clip && (which >= normal ? clip->mode == which - normal
                                                  : (clip->reverse != 0) == (which == reversed));
        changed = changed || button->visible != (clip != nullptr) || button->lit != lit;
        button->visible = clip != nullptr;
        button->lit = lit;
    }
    if (!changed) return false;
    shown = now;
    redraw();
    return true;
}

void ObjectBar::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    const int right = buttons.front()->visible ? buttons.front()->left : width;
    g->drawText(palette.dimText, shown, asRect(margin, 0, right - margin, height - 1), textLeft);
    CGroup::paint(g, rect);
}

void ObjectBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Object bar";
    d.text = shown.asChar();
}
