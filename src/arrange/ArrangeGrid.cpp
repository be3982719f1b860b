#include "arrange/ArrangeGrid.h"

#include "arrange/ArrangeKeys.h"
#include "arrange/ArrangeState.h"
#include "arrange/DropFiles.h"
#include "arrange/GridHints.h"
#include "arrange/Hit.h"
#include "arrange/LanePainter.h"
#include "arrange/LanePoints.h"
#include "arrange/LanePress.h"
#include "arrange/PartPainter.h"
#include "arrange/Press.h"
#include "arrange/RangePainter.h"
#include "arrange/SongRange.h"
#include "arrange/TakeRows.h"
#include "arrange/TrackNotes.h"
#include "arrange/gestures/ArrangeGesture.h"
#include "arrange/gestures/Overlay.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/PixelPaper.h"
#include "gui/Shapes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/take/Takes.h"
#include "ui/GridLines.h"
#include "ui/NameField.h"
#include "ui/Options.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr double wheelIn = 1.25, wheelOut = 0.75;
constexpr double loopShare = 0.06;
constexpr int tagMargin = 6, tagHeight = 18, tagAway = 16; ///< of what is told at the pointer
constexpr int nameMargin = 24;                             ///< around the name of a part
constexpr int shadowReach = 1;                             ///< of the play line to each side
constexpr int fieldWidth = 76, fieldHeight = 18;

} // namespace

ArrangeGrid::ArrangeGrid(CWin* owner, ArrangeState& shared)
    : CCtrl(owner, "grid", 0, 0, 1, 1), state(shared), panZoom(this, this) {
    tabStop = true;
    hint = gridHint(state, nullptr, {}, PartHandle::none, {});
}

ArrangeGrid::~ArrangeGrid() {
    delete onPartsMenu;
}

void ArrangeGrid::songChanged() {
    if (gesture && win->app->drag.of(this) && !gesture->stands()) win->app->drag.cancel();
    sketches.clear();
    heard = heardNow();
    redraw();
}

void ArrangeGrid::scrolled(int dx, int dy) {
    if (field && field->visible) win->setKeyCtrl(this);
    if (std::abs(dx) >= width || std::abs(dy) >= height) return redraw();
    shownX += dx;
    inView.reset();
    scrollArea(clientRect(), dx, dy);
    if (dx != 0) namesMoved(dx);
}

/// The name of a part that begins before the view stands at its edge, and not where it was moved.
void ArrangeGrid::namesMoved(int dx) {
    const TextFace* face = textFace({});
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = row.top - state.edit.scrollY;
        if (y >= height) break;
        if (!row.ofTrack() || y + row.height <= 0) continue;
        for (auto* part : row.songTrack->parts) {
            if (state.axis().xOf(part->pos.load()) >= asMax(0, dx)) break;
            const CRect box = partBox(state, row, part);
            if (box.right <= 0) continue;
            const int wide = face->textWidth(part->content()->id) + std::abs(dx) + nameMargin;
            redraw(asRect(0, box.top, asMin(wide, box.right), box.bottom));
        }
    }
}

// What is shown.

ArrangeGrid::Heard ArrangeGrid::heardNow() const {
    Heard now;
    CSeq* seq = state.seq();
    if (!seq) return now;
    seq->getLoopSection(now.loopFrom, now.loopTo);
    now.loop = seq->getLoop();
    now.step = seq->snap->active ? state.stepTicks() : 0;
    const bool anySolo = state.anySolo();
    for (const auto* t : seq->getProg()->tracks) now.tracks.push_back(heardAmong(t, anySolo));
    return now;
}

int ArrangeGrid::playX() const {
    CSeq* seq = state.seq();
    return seq ? state.axis().xOf(seq->getPos()) : -1;
}

void ArrangeGrid::idle() {
    NameField::dropLeft(field);
    Heard now = heardNow();
    if (now == heard) return;
    heard = std::move(now);
    redraw();
}

bool ArrangeGrid::refresh() {
    const int before = shownX;
    shownX = playX();
    if (shownX == before) return false;
    for (const int x : {before, shownX})
        redraw(asRect(x - shadowReach, 0, x + shadowReach + 1, height));
    return true;
}

void ArrangeGrid::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    if (asked.empty()) return;
    paintGround(g, asked);
    if (state.seq()) {
        paintRows(g, asked);
        paintParts(g, asked);
        if (const TimeRange* range = state.range.get()) paintRange(g, state, *range, asked);
        if (gesture && win->app->drag.of(this)) gesture->paintOverlay(g, asked);
        if (drops) drops->paint(g, asked);
        paintPlayLine(g, asked);
        if (gesture && win->app->drag.of(this) && !intersect(tagBox, asked).empty()) paintTag(g);
    }
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, clientRect());
}

void ArrangeGrid::paintGround(CGraphic* g, CRect asked) {
    g->fillRect(clGrid.fillCol, asked);
    CSeq* seq = state.seq();
    if (!seq) return;
    const CPalette& palette = win->app->gui->palette;
    const GridLines lines(seq, state.axis(), asked.left, asked.right, heard.step);
    for (const CRect& shade : lines.shades(asked.top, asked.bottom))
        g->fillRect(fadeCol(clGrid.fillCol, palette.panel, 0.5), shade);
    if (heard.loop) {
        const CRect loop = asRect(state.axis().xOf(heard.loopFrom), asked.top,
                                  state.axis().xOf(heard.loopTo), asked.bottom);
        fillAlpha(g, intersect(loop, asked), clLoop.fillCol, loopShare);
    }
    drawGridLines(g, lines, asked);
}

void ArrangeGrid::paintRows(CGraphic* g, CRect asked) {
    const int line = win->app->gui->palette.frame, scroll = state.edit.scrollY;
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = row.bottom() - scroll - 1;
        if (y >= asked.top && y < asked.bottom)
            g->fillLine(line, asRect(asked.left, y, asked.right, y + 1));
    }
}

void ArrangeGrid::paintParts(CGraphic* g, CRect asked) {
    auto paper = std::make_unique<PixelPaper>(g, asked);
    PartPainter painter(state, sketches, g, *paper, asked);
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = row.top - state.edit.scrollY;
        if (y >= asked.bottom) break;
        if (y + row.height <= asked.top) continue;
        if (row.lane) {
            paintLane(state, row, win->app->drag.of(this) ? gesture.get() : nullptr, *paper, asked);
            continue;
        }
        if (row.notes) continue;
        if (row.take >= 0) {
            for (auto* part : row.songTrack->parts) {
                const bool drags = gesture && win->app->drag.of(this);
                const Takes* draft = drags ? gesture->draftTakes(part->content()) : nullptr;
                painter.take(row, part, draft ? draft : takesOf(part));
            }
            continue;
        }
        const bool audible =
            heard.tracks.size() > size_t(row.track) && heard.tracks[size_t(row.track)];
        for (auto* part : row.songTrack->parts) {
            if (state.axis().xOf(part->pos.load()) >= asked.right) break;
            painter.part(row, part, audible);
        }
    }
    paper.reset();
    for (const ArrangeRow& row : state.rows.all()) {
        const int y = row.top - state.edit.scrollY;
        if (row.notes && y < asked.bottom && y + row.height > asked.top)
            paintNotes(state, row, win->app->drag.of(this) ? gesture.get() : nullptr, g, asked);
    }
    painter.names();
}

void ArrangeGrid::paintPlayLine(CGraphic* g, CRect asked) const {
    const CRect shadow = asRect(shownX - shadowReach, 0, shownX + shadowReach + 1, height);
    if (intersect(shadow, asked).empty()) return;
    fillAlpha(g, shadow, hexColor(0), 0.35);
    g->fillLine(win->app->gui->palette.accent, asRect(shownX, 0, shownX + 1, height));
}

void ArrangeGrid::paintTag(CGraphic* g) const {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.raised, tagBox);
    g->frameRect(palette.accent, tagBox);
    g->drawText(palette.text, gesture->told(), tagBox, 0);
}

/// Below the pointer, or over it at the lower edge, and within the view.
void ArrangeGrid::tagMoved() {
    const CStr& text = gesture->told();
    const CPoint at = state.edit.current;
    const int wide = text.empty() ? 0 : textFace({})->textWidth(text) + 2 * tagMargin;
    const int x = asMinMax(at.x + tagAway, 0, asMax(0, width - wide));
    const int y = at.y + tagAway + tagHeight < height ? at.y + tagAway : at.y - tagAway - tagHeight;
    const CRect now = asRect(x, y, x + wide, y + tagHeight);
    if (!tagBox.empty()) redraw(tagBox);
    tagBox = now;
    if (!tagBox.empty()) redraw(tagBox);
}

// The mouse.

void ArrangeGrid::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!state.seq()) return;
    Press press = pressed(*this, state, asPoint(x, y), btn);
    if (!press.gesture) return;
    gesture = std::move(press.gesture);
    state.edit.kind = kindParts;
    state.edit.setMode(press.mode, x, y, btn);
    win->app->drag.start(this, gesture.get(), asPoint(x, y), btn, press.room);
}

void ArrangeGrid::gestureDone() {
    tagBox = {};
    redraw();
}

void ArrangeGrid::hover(int x, int y) {
    const ArrangeRow* row = state.rows.at(y + state.edit.scrollY);
    const PartHit hit = row && row->ofTrack() ? partAtPos(state, *row, x) : PartHit();
    const bool edge = row && row->notes ? onNoteEdge(state, *row, asPoint(x, y))
                                        : hit.part && hit.zone != zoneBody;
    cursor = edge ? cursorSideways : cursorPlain;
    const PartHandle handle =
        hit.part ? handleAt(hit.part, partBox(state, *row, hit.part), asPoint(x, y))
                 : PartHandle::none;
    const CStr text = gridHint(state, row, hit, handle, asPoint(x, y));
    if (text == hint) return;
    hint = text;
    win->app->updateHint(this);
}

void ArrangeGrid::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (state.seq() && !isPushed()) hover(x, y);
}

bool ArrangeGrid::keyDown(int key, int mods) {
    if (key == keyReturn && mods == 0 && typeValue()) return true;
    if (key == keyEscape && state.range.get()) {
        state.range.clear();
        return true;
    }
    return walkKey(state, key, mods) || CCtrl::keyDown(key, mods);
}

bool ArrangeGrid::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (!(btn & modControl) || (btn & modAlt)) return panZoom.wheel(x, y, btn, dy, dx);
    const bool in = ((dy ? dy : dx) < 0) != state.workspace.options().invertZoom.on();
    if (btn & modShift)
        state.zoomRowsAt(y, in ? wheelIn : 1 / wheelIn);
    else
        state.zoomAtPos(x, state.axis().zoom() * (in ? wheelIn : wheelOut));
    return true;
}

bool ArrangeGrid::touch(int x, int y, int btn, const TouchStep& step) {
    return panZoom.touch(x, y, btn, step);
}

CPoint ArrangeGrid::panBy(CPoint pixels) {
    return panView(state, pixels);
}

void ArrangeGrid::zoomAt(CPoint at, double factor, bool across) {
    if (across)
        state.zoomRowsAt(at.y, factor);
    else
        state.zoomAtPos(at.x, state.axis().zoom() * factor);
}

bool ArrangeGrid::contextMenu() {
    if (onPartsMenu) (*onPartsMenu)(this);
    return onPartsMenu;
}

/// Of the selected points, over the first of them.
bool ArrangeGrid::typeValue() {
    if (!state.seq()) return false;
    const std::vector<LanePoint> chosen = selectedLanePoints(state);
    NameField::dropLeft(field);
    if (chosen.empty() || field) return !chosen.empty();
    const LanePoint& point = chosen.front();
    const PartLane lane = laneOf(state, *point.row, point.part);
    const int y =
        asMinMax(lane.yOf(double(point.point->value)) - fieldHeight / 2, 0, height - fieldHeight);
    const int x = asMinMax(state.axis().xOf(point.tick) - fieldWidth / 2, 0, width - fieldWidth);
    const CRect box = asRect(left + x, top + y, left + x + fieldWidth, top + y + fieldHeight);
    field = new NameField(parent, box, typedValue(point), pointText(state, point), this);
    field->hint = "Type a value; Return takes it, Escape leaves the former one";
    field->onName = [this](const CStr& text) {
        const std::vector<LanePoint> now =
            state.seq() ? selectedLanePoints(state) : std::vector<LanePoint>();
        if (!now.empty() && !setTyped(state, now.front(), text))
            state.workspace.setStatus(CStr("No value: ") + text);
    };
    return true;
}

// What it tells.

void ArrangeGrid::redraw() {
    inView.reset();
    CCtrl::redraw();
}

const std::vector<ShownPart>& ArrangeGrid::shownParts() const {
    if (!inView) inView = state.seq() ? partsInView(state) : std::vector<ShownPart>();
    return *inView;
}

int ArrangeGrid::accessParts() const {
    return int(shownParts().size());
}

int ArrangeGrid::focusedPart() const {
    const auto& parts = shownParts();
    const bool inNotes = notesInHand(state).place.part;
    const auto wanted = [inNotes](const ShownPart& p) {
        return p.selected() && (p.event != nullptr) == inNotes;
    };
    const auto found = std::find_if(parts.begin(), parts.end(), wanted);
    return found == parts.end() ? wholeCtrl : int(found - parts.begin());
}

void ArrangeGrid::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::canvas : Role::item;
    d.name = "Parts";
    if (part == wholeCtrl) return;
    const ShownPart& shown = shownParts()[size_t(part)];
    const CStr name = shown.event ? notesOf(state, *shown.notesRow, shown.part)
                                        .text(factsOf(shown.part, shown.event, shown.tick))
                      : shown.takeRow     ? takeText(state, *shown.takeRow, shown.part)
                      : shown.point.point ? pointText(state, shown.point)
                                          : partText(state.seq(), shown.songTrack, shown.part);
    d.name = name.asChar();
    d.action = shown.takeRow ? "play" : "select";
    d.bounds = intersect(shown.box, clientRect());
    d.set(stateSelectable, true);
    d.set(stateSelected, shown.selected());
}

bool ArrangeGrid::pressPart(int part) {
    if (part == wholeCtrl || part >= accessParts()) return false;
    const ShownPart shown = shownParts()[size_t(part)];
    CSeq* seq = state.seq();
    win->setKeyCtrl(this);
    if (shown.event) {
        chooseNote(state, *shown.notesRow, shown.part, shown.event);
        return true;
    }
    if (shown.takeRow) {
        const TakeSpan all = takeSpan(state, *shown.takeRow, shown.part);
        compTake(seq, shown.part, shown.takeRow->take, all.from, all.to);
        return true;
    }
    if (shown.point.point) {
        choosePoint(state, shown.point, false);
        return true;
    }
    unselectPoints(state);
    seq->unselectParts();
    shown.part->setSelected(true);
    seq->unselectTracks();
    seq->selectTrack(shown.songTrack, true);
    redraw();
    return true;
}
