#include "notes/KeyStrip.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PanZoom.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"

#include <climits>

namespace {

constexpr int octave = EventRows::octave, nameHeight = 12, gap = 6;
constexpr int pressVelocity = 100;

} // namespace

KeyStrip::KeyStrip(CWin* owner, NoteState& shared)
    : CCtrl(owner, "keys", 0, 0, stripWidth, 1), state(shared) {
    hint =
        "Press to hear it, with Ctrl it selects the notes of the key; the wheel scrolls, with Ctrl "
        "it makes keys higher";
}

int KeyStrip::rowAt(int y) const {
    const EventRows rows = state.rows();
    const int at = y + state.edit.scrollY;
    return at < 0 || at >= rows.total() ? -1 : rows.rowAt(at);
}

CRect KeyStrip::rowBox(const EventRows& rows, int row) const {
    const int y = rows.top(row) - state.edit.scrollY;
    return asRect(0, y, width, y + rows.height(row));
}

void KeyStrip::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, asked);
    if (state.part && state.seq()) paintKeys(g, state.rows(), asked);
    g->fillLine(palette.frame, asRect(width - 1, 0, width, height));
}

void KeyStrip::paintKeys(CGraphic* g, const EventRows& rows, CRect asked) const {
    const CPalette& palette = win->app->gui->palette;
    const int white = hexColor(0xe8e6e1), black = hexColor(0x24262a), edge = hexColor(0x9a9892);
    const std::map<int, CStr> drums = drumKeys(state.track);
    const bool plain = !drums.empty(); // black keys would lie in the names
    for (int key = 0; key < EventRows::keys; key++) {
        const CRect box = rowBox(rows, key);
        if (intersect(box, asked).empty()) continue;
        const bool dark = EventRows::blackKey(key);
        g->fillRect(key == sounding ? palette.accent : white, box);
        const int right = plain ? width : width * 3 / 5;
        if (dark && key != sounding)
            g->fillRect(plain ? hexColor(0xd2cfc8) : black, asRect(0, box.top, right, box.bottom));
        if (key % octave == 0 || key % octave == 5)
            g->fillLine(edge, asRect(0, box.bottom - 1, width, box.bottom));
    }
    paintNames(g, rows, drums, asked);
}

/// Of drums, else of each C, or of every key where keys are folded away.
void KeyStrip::paintNames(CGraphic* g, const EventRows& rows, const std::map<int, CStr>& drums,
                          CRect asked) const {
    const CPalette& palette = win->app->gui->palette;
    const int black = hexColor(0x24262a);
    int written = INT_MAX; // top of the name above
    for (int key = 0; key < EventRows::keys; key++) {
        const auto drum = drums.find(key);
        const bool named = drum != drums.end() || key % octave == 0 || state.folded;
        const CRect box = rowBox(rows, key);
        const int over = asMax(0, nameHeight - box.height());
        const CRect at = asRect(gap, box.top - over, width - gap, box.bottom);
        if (!named || box.height() == 0 || at.bottom > written ||
            intersect(asRect(0, at.top, width, at.bottom), asked).empty())
            continue;
        written = at.top;
        if (drum != drums.end())
            g->drawText(key == sounding ? textOn(palette.accent) : black, drum->second, at,
                        textLeft);
        if (key % octave == 0 || state.folded)
            g->drawText(key == sounding ? textOn(palette.accent) : black, noteToStr(key), at,
                        textRight);
    }
}

// The mouse.

void KeyStrip::play(int row) {
    if (row == sounding) return;
    recordStep(state, sounding, 0);
    recordStep(state, row, pressVelocity);
    state.track->preview.mute();
    sounding = row;
    if (row >= 0) state.track->preview.addNote(row, pressVelocity);
    redraw();
}

void KeyStrip::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!state.part || !state.seq()) return;
    if (!(btn & modLeft)) return;
    if (btn & modControl) return selectRow(rowAt(y), btn & modShift);
    play(rowAt(y));
}

void KeyStrip::selectRow(int row, bool more) {
    int found = 0;
    for (CPart* part : state.parts())
        for (CBaseEvent* e = part->getEvents(); e; e = e->next) {
            const bool wanted = row >= 0 && rowOf(part, e) == row;
            found += wanted;
            if (wanted || !more) select(e, wanted);
        }
    state.workspace.setStatus(asStr(found) + (found == 1 ? " note selected" : " notes selected"));
    state.shownChanged();
}

void KeyStrip::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (isPushed() && sounding >= 0 && state.part) play(rowAt(asMinMax(y, 0, height - 1)));
}

void KeyStrip::mouseUp(int x, int y, int btn) {
    CCtrl::mouseUp(x, y, btn);
    if (state.part && sounding >= 0) play(-1);
}

bool KeyStrip::mouseWheel(int, int y, int btn, int dy, int) {
    if (!state.part || dy == 0) return false;
    if (btn & modControl)
        state.setVertZoom(y, state.noteHeight + (dy < 0 ? 1 : -1));
    else
        state.scrollTo(state.axis().scroll(),
                       state.edit.scrollY + dy * PanZoom::notchPixels / PanZoom::notch);
    return true;
}

// What it tells.

int KeyStrip::accessParts() const {
    return state.part && state.seq() ? state.rows().count() : 0;
}

void KeyStrip::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::button;
    d.name = "Keys";
    if (part == wholeCtrl) return;
    const std::map<int, CStr> drums = drumKeys(state.track);
    const auto drum = drums.find(part);
    d.name = noteToStr(part).asChar();
    if (drum != drums.end()) d.name += std::string(", ") + drum->second.asChar();
    d.action = "play";
    d.bounds = intersect(rowBox(state.rows(), part), clientRect());
}

bool KeyStrip::pressPart(int part) {
    if (part == wholeCtrl || part >= accessParts()) return false;
    play(part);
    recordStep(state, part, 0);
    sounding = -1;
    redraw();
    return true;
}
