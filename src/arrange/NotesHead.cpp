#include "arrange/NotesHead.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/TrackNotes.h"
#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Drawing.h"
#include "gui/Keys.h"
#include "instruments/CDrumSound.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int stripLeft = RowHead::headWidth - 56, nameHeight = 10, pressVelocity = 100;
constexpr double sunken = 0.35; ///< of the window's colour in the ground

} // namespace

NotesHead::NotesHead(HeadList& owner, const ArrangeRow& row) : RowHead(owner, "notes", row) {
    hint = "Press a key to hear it; E closes the row";
    show(row);
}

void NotesHead::show(const ArrangeRow& row) {
    topKey = row.topKey;
    keyHeight = row.keyHeight;
}

CPart* NotesHead::anyPart() const {
    for (auto* part : track->parts)
        if (part->type != partAudio) return part;
    return nullptr;
}

EventRows NotesHead::rows() const {
    ArrangeRow row{.songTrack = track, .notes = true};
    row.topKey = topKey;
    row.keyHeight = keyHeight;
    return notesRows(row, anyPart());
}

void NotesHead::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = list.palette();
    g->fillRect(fadeCol(clTrack.fillCol, colours.window, sunken), clientRect());
    if (anyPart()) track->track->kind == trackDrum ? paintSounds(g) : paintKeys(g);
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void NotesHead::paintKeys(CGraphic* g) const {
    const EventRows shown = rows();
    const int last = shown.rowAt(height - 2);
    for (int key = topKey; key >= last; key--) {
        const int y = shown.top(key), foot = asMin(height - 1, y + keyHeight);
        const bool black = EventRows::blackKey(key);
        g->fillRect(black ? hexColor(0x202020) : hexColor(0xe8e6de),
                    asRect(stripLeft, y, width - 2, foot));
        if (key % EventRows::octave == 0)
            g->drawText(list.palette().dimText, noteToStr(key),
                        asRect(0, foot - nameHeight - 2, stripLeft - gap, foot), textRight);
        if (!black) g->fillLine(hexColor(0xb0aea6), asRect(stripLeft, foot - 1, width - 2, foot));
    }
}

void NotesHead::paintSounds(CGraphic* g) const {
    const EventRows shown = rows();
    for (int i = 0; i < shown.count(); i++) {
        const int y = shown.top(i);
        if (y >= height) break;
        g->drawText(list.palette().text, track->track->drumSound(i)->getId(),
                    asRect(stripe + gap, y, width - gap, y + CDrumSound::closedHeight), textRight);
    }
}

void NotesHead::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    list.choose(track, btn);
    if (!anyPart() || rows().count() == 0) return;
    const int row = rows().rowAt(y);
    track->track->preview.mute();
    track->track->preview.addNote(track->track->kind == trackDrum ? firstDrumKey + row : row,
                                  pressVelocity);
}

void NotesHead::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    track->track->preview.mute();
}

void NotesHead::mouseMove(int x, int y, int btn) {
    CGroup::mouseMove(x, y, btn);
    cursor = cursorPlain;
}

void NotesHead::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = ("Notes of " + track->track->id).asChar();
}
