#include "notes/NoteGrid.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "notes/NoteGesture.h"
#include "notes/NoteKeys.h"
#include "notes/NoteState.h"
#include "notes/RowEndDrag.h"
#include "sequencer/song/CSeq.h"
#include "ui/GridLines.h"
#include "ui/NoteDrawing.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/ScaleItems.h"
#include "ui/TrackPalette.h"
#include "ui/Workspace.h"

namespace {

constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr int shadowReach = 1;                             ///< of the play line to each side
constexpr int mostTold = 2000;                             ///< notes in the accessible tree
constexpr double beyond = 0.5;                             ///< how dark it is where the part is not
constexpr double otherStrength = 0.4, alongStrength = 0.8; ///< of notes of other parts
constexpr double stepShade = 0.25;
constexpr double behind = 0.35; ///< of notes whose copies are dragged
constexpr const char* freeHint =
    "Double click or Alt + drag puts a note in, drag selects, with Shift more; right drag scrolls";
constexpr const char* noteHint =
    "Drag moves, Ctrl copies, Alt changes length and velocity; the ends size; right click deletes";

constexpr const char* rowHint = "Drag the end of the row: it repeats until the part ends";

} // namespace

NoteGrid::NoteGrid(CWin* owner, NoteState& shared)
    : CCtrl(owner, "notes", 0, 0, 1, 1), state(shared), panZoom(this, this) {
    tabStop = true;
    hint = freeHint;
}

NoteGrid::~NoteGrid() {
    delete onMenu;
}

void NoteGrid::scrolled(int dx, int dy) {
    if (std::abs(dx) >= width || std::abs(dy) >= height) return redraw();
    shownX += dx;
    told.reset();
    scrollArea(clientRect(), dx, dy);
}

CPart* NoteGrid::shownPart(const CPart* of) const {
    return gesture && win->app->drag.of(this) ? gesture->draft(of) : nullptr;
}

bool NoteGrid::dragStands() const {
    return gesture && gesture->stands();
}

// What is shown.

int NoteGrid::playX() const {
    CSeq* seq = state.seq();
    return seq ? state.axis().xOf(seq->getPos()) : -1;
}

bool NoteGrid::refresh() {
    const int before = shownX;
    shownX = playX();
    if (shownX == before) return false;
    for (const int x : {before, shownX})
        redraw(asRect(x - shadowReach, 0, x + shadowReach + 1, height));
    return true;
}

void NoteGrid::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    if (asked.empty()) return;
    g->fillRect(clGrid.fillCol, asked);
    const CPalette& palette = win->app->gui->palette;
    if (state.part) {
        paintGround(g, asked);
        paintBounds(g, asked);
        paintOthers(g, asked);
        paintNotes(g, asked);
        paintStep(g, asked);
        if (gesture && win->app->drag.of(this)) gesture->paintOverlay(g, asked);
        const CRect shadow = asRect(shownX - shadowReach, 0, shownX + shadowReach + 1, height);
        if (!intersect(shadow, asked).empty()) {
            fillAlpha(g, shadow, hexColor(0), 0.35);
            g->fillLine(palette.accent, asRect(shownX, 0, shownX + 1, height));
        }
    } else {
        g->drawText(palette.dimText, "No part is open", clientRect(), 0);
    }
    if (hasKeyFocus()) g->frameRect(palette.accent, clientRect());
}

void NoteGrid::paintGround(CGraphic* g, CRect asked) const {
    const NotePlace place = state.place();
    const SongScales& scales = place.seq->scales;
    CRect stretch = asked;
    for (; stretch.left < asked.right; stretch.left = stretch.right) {
        const double tick = std::max(0.0, state.axis().ticksAt(stretch.left + 1));
        const int next = scales.nextAfter(tick);
        stretch.right = asMinMax(state.axis().xOf(next), stretch.left + 1, asked.right);
        drawPianoroll(g, stretch, place.rows, state.edit.scrollY, scales.at(tick));
    }
    drawGridLines(g, GridLines(place.seq, state.axis(), asked.left, asked.right, state.shownGrid()),
                  asked);
}

void NoteGrid::paintBounds(CGraphic* g, CRect asked) const {
    const int from = state.axis().xOf(state.part->pos);
    const int to = state.axis().xOf(double(state.part->pos) + state.seq()->getTicks(state.part));
    const CRect before = asRect(asked.left, asked.top, from, asked.bottom);
    const CRect after = asRect(to, asked.top, asked.right, asked.bottom);
    for (const CRect& dark : {intersect(before, asked), intersect(after, asked)})
        if (!dark.empty()) fillAlpha(g, dark, win->app->gui->palette.frame, beyond);
}

/// In the colours of their tracks.
void NoteGrid::paintOthers(CGraphic* g, CRect asked) const {
    if (state.others.empty()) return;
    PixelPaper paper(g, asked);
    for (CPart* other : state.others) {
        const NotePlace place = state.placeOf(other);
        const int own = other->colour < 0 ? int(place.track->colour) : int(other->colour);
        const int colour = own < 0 ? trackColour(state.seq()->tracks.indexed(place.track))
                                   : hexColor(unsigned(own));
        const bool along = state.editsAlong(other);
        const NoteLook look{colour, along ? clEventSelected.fillCol : colour, clGrid.fillCol,
                            along ? alongStrength : otherStrength};
        drawEvents(paper, place, state.eventsOf(place, state.shownPart(other)), state.edit, look,
                   asked);
    }
}

/// A press on a note of another part, where the part has none, turns to that part.
bool NoteGrid::pressOther(CPoint at, int btn) {
    if ((btn & ~modLeft) || NoteMouse::eventAt(state.place(), state.edit, at).event) return false;
    for (CPart* other : state.others) {
        const FoundEvent found = NoteMouse::eventAt(state.placeOf(other), state.edit, at);
        if (found.event && state.editsAlong(other)) return false;
        if (!found.event) continue;
        NoteMouse::unselect(other);
        select(found.event, true);
        state.turnTo(other);
        return true;
    }
    return false;
}

/// Where the next chord of a recording in steps goes.
void NoteGrid::paintStep(CGraphic* g, CRect asked) const {
    const CStepRec& steps = state.seq()->recorder.stepRec;
    if (steps.getPart() != state.part) return;
    const double from = double(state.part->pos) + steps.getPos();
    const int x = state.axis().xOf(from);
    const int right = state.axis().xOf(from + steps.stepTicks(state.seq()));
    fillAlpha(g, intersect(asRect(x, 0, right, height), asked), clStepRec.fillCol, stepShade);
    const EventRows rows = state.rows();
    const int row = asMin(steps.note, rows.count() - 1);
    if (row < 0) return;
    const int y = rows.top(row) - state.edit.scrollY;
    g->fillRect(clStepRec.fillCol, intersect(asRect(x, y, right, y + rows.height(row)), asked));
}

void NoteGrid::paintNotes(CGraphic* g, CRect asked) const {
    const NotePlace place = state.place();
    NoteLook look{clEvent.fillCol,
                  clEventSelected.fillCol,
                  clGrid.fillCol,
                  1.0,
                  place.seq->options.bytes[SongOptions::showNoteNames] != 0,
                  state.colours()};
    CPart* shown = state.shownPart(state.part);
    const EventIndex& events = state.eventsOf(place, shown);
    {
        PixelPaper paper(g, asked);
        if (shown != state.part && state.edit.mode == editCopy) {
            NoteLook faint = look;
            faint.strength = behind;
            drawEvents(paper, place, *place.events, state.edit, faint, asked);
        }
        drawRowLoops(paper, place, shown, state.edit, look, asked);
        drawEvents(paper, place, events, state.edit, look, asked);
    }
    drawNoteNames(g, place, events, state.edit, look, asked);
}

// The mouse.

void NoteGrid::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (panZoom.press(x, y, btn) || !state.part || !state.seq()) return;
    const CPoint at = asPoint(x, y);
    if (!state.seq()->recorder.stepRec.getPart() && pressOther(at, btn)) return;
    if (pressRowEnd(at, btn)) return;
    auto mouse = std::make_unique<NoteMouse>(state.edit, state.place(), state.placesAlong());
    state.edit.kind = state.part->type == partDrum ? kindDrums : kindNotes;
    state.edit.editPart = state.part;
    state.edit.editEvents = state.part->getEvents();
    const int mode = mouse->partMouseDown(at, btn);
    state.edit.setMode(mode, x, y, btn);
    if (mode == editPress)
        gesture = std::make_unique<NoteHand>(state, [this] { contextMenu(); });
    else if (mode == editErase)
        gesture = std::make_unique<NoteHand>(
            state, [held = std::shared_ptr<NoteMouse>(std::move(mouse))] { held->partMouseUp(); });
    else if (mode == editLasso)
        gesture = std::make_unique<NoteBand>(state, [this](CRect band) {
            for (CPart* part : state.parts())
                NoteMouse::selectWithin(state.placeOf(part), state.edit, band);
        });
    else if (mode != editIdle)
        gesture = std::make_unique<NoteDrag>(state, std::move(mouse));
    state.shownChanged();
    if (mode == editIdle) return;
    const bool right = mode == editPress || mode == editErase;
    win->app->drag.start(this, gesture.get(), at, btn, right ? NoteHand::handRoom : 0);
}

/// The end of a row, where no hit lies over it.
bool NoteGrid::pressRowEnd(CPoint at, int btn) {
    const NotePlace place = state.place();
    const int row = RowEndDrag::rowAt(place, state.edit, at);
    if ((btn & ~modDouble) != modLeft || row < 0 || state.track->locked ||
        state.seq()->recorder.stepRec.getPart() || NoteMouse::eventAt(place, state.edit, at).event)
        return false;
    gesture = std::make_unique<RowEndDrag>(state, row);
    state.edit.editEvents = state.part->getEvents();
    state.edit.setMode(editResizeEnd, at.x, at.y, btn);
    win->app->drag.start(this, gesture.get(), at, btn);
    return true;
}

void NoteGrid::hover(int x, int y) {
    const NotePlace place = state.place();
    const FoundEvent found = NoteMouse::eventAt(place, state.edit, asPoint(x, y));
    const bool ofRow = !found.event && RowEndDrag::rowAt(place, state.edit, asPoint(x, y)) >= 0;
    const bool edge = ofRow || found.zone == zoneStart || found.zone == zoneEnd;
    cursor = edge ? cursorSideways : cursorPlain;
    const char* text = ofRow ? rowHint : found.event ? noteHint : freeHint;
    if (hint == text) return;
    hint = text;
    win->app->updateHint(this);
}

void NoteGrid::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (state.part && state.seq() && !isPushed()) hover(x, y);
}

bool NoteGrid::keyDown(int key, int mods) {
    return noteKey(state, key, mods) || CCtrl::keyDown(key, mods);
}

bool NoteGrid::mouseWheel(int x, int y, int btn, int dy, int dx) {
    return panZoom.wheel(x, y, btn, dy, dx);
}

bool NoteGrid::touch(int x, int y, int btn, const TouchStep& step) {
    return panZoom.touch(x, y, btn, step);
}

CPoint NoteGrid::panBy(CPoint pixels) {
    return panView(state, pixels);
}

void NoteGrid::zoomAt(CPoint at, double factor, bool across) {
    if (across)
        state.setVertZoom(at.y, state.noteHeight + (factor > 1 ? 1 : -1));
    else
        state.zoomAtPos(at.x, state.axis().zoom() * factor);
}

bool NoteGrid::contextMenu() {
    if (onMenu) (*onMenu)(this);
    return onMenu;
}

// What it tells.

void NoteGrid::redraw() {
    told.reset();
    CCtrl::redraw();
}

const std::vector<NoteGrid::Told>& NoteGrid::inView() const {
    if (told) return *told;
    told.emplace();
    if (!state.part || !state.seq()) return *told;
    for (CPart* part : state.parts()) {
        const NotePlace place = state.placeOf(part);
        place.eachNear(*place.events, state.axis(), clientRect(), [&](const EventIndex::Entry& e) {
            if (int(told->size()) >= mostTold) return;
            const NoteFacts facts = factsOf(part, e.event, e.tick);
            const CRect box = place.boxOf(state.axis(), state.edit.scrollY, facts);
            if (!intersect(box, clientRect()).empty()) told->push_back({part, e.event, facts, box});
        });
    }
    return *told;
}

int NoteGrid::accessParts() const {
    return int(inView().size());
}

int NoteGrid::focusedPart() const {
    const auto& events = inView();
    for (size_t i = 0; i < events.size(); i++)
        if (isSelected(events[i].event)) return int(i);
    return wholeCtrl;
}

void NoteGrid::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::canvas : Role::item;
    d.name = "Notes";
    if (part == wholeCtrl) return;
    const Told& event = inView()[size_t(part)];
    d.name = state.placeOf(event.part).text(event.facts).asChar();
    d.action = "select";
    d.bounds = intersect(event.box, clientRect());
    d.set(stateSelectable, true);
    d.set(stateSelected, isSelected(event.event));
}

bool NoteGrid::pressPart(int part) {
    if (part == wholeCtrl || part >= accessParts()) return false;
    const Told event = inView()[size_t(part)];
    for (CPart* p : state.parts()) NoteMouse::unselect(p);
    select(event.event, true);
    win->setKeyCtrl(this);
    state.shownChanged();
    return true;
}
