#include "notes/WaveView.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "notes/WaveEdits.h"
#include "notes/WaveGesture.h"
#include "notes/WaveKeys.h"
#include "notes/WavePainter.h"
#include "notes/WaveState.h"
#include "notes/WaveTexts.h"
#include "sequencer/edit/PinEdits.h"
#include "sequencer/song/CSeq.h"
#include "ui/PlaceText.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr int shadowReach = 1; ///< of the play line to each side
constexpr int gripReach = 4;   ///< pixels
constexpr int rangeParts = 2;  ///< its start, with all that there is to tell of it, and its end
constexpr const char* freeHint = "Drag selects, with Shift from where the range is, with Ctrl off "
                                 "the grid; double click takes what lies between two marks";
constexpr const char* markHint = "Drag moves the mark, right click takes it away";
constexpr const char* pinHint = "Drag to where this is to be heard, right click for more";
constexpr const char* stripHint = "A double click marks the place";
constexpr const char* edgeHint = "Drag moves this end of the range";
constexpr const char* fadeHint = "Drag makes the fade longer or shorter";

} // namespace

WaveView::WaveView(CWin* owner, WaveState& shared)
    : CCtrl(owner, "wave", 0, 0, 1, 1), state(shared), panZoom(this, this) {
    tabStop = true;
    hint = freeHint;
}

WaveView::~WaveView() {
    delete onMenu;
}

bool WaveView::refresh() {
    const double frame = state.playFrame();
    const int x = frame < 0 ? -1 : state.axis.xOf(frame);
    const CSample* sample = state.sample();
    const int peaks = sample ? sample->peaks.count() : 0;
    if (peaks != shownPeaks) redraw();
    shownPeaks = peaks;
    if (x == shownX) return false;
    for (const int at : {shownX, x})
        redraw(asRect(at - shadowReach, 0, at + shadowReach + 1, height));
    shownX = x;
    return true;
}

void WaveView::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    if (asked.empty()) return;
    g->fillRect(clGrid.fillCol, asked);
    const CPalette& palette = win->app->gui->palette;
    if (!state.clip())
        g->drawText(palette.dimText, state.part ? "The part is empty" : "No part is open",
                    clientRect(), 0);
    else if (!state.sample() || !state.seq())
        g->drawText(palette.dimText, "Sample not loaded", clientRect(), 0);
    else
        WavePainter(g, state, palette, clientRect(), asked).paint(shownX);
    if (hasKeyFocus()) g->frameRect(palette.accent, clientRect());
}

// The mouse.

WaveView::Held WaveView::heldAt(CPoint at) const {
    if (!state.sample() || !state.seq()) return {};
    const auto near = [&](int frame) {
        return std::abs(state.axis.xOf(frame) - at.x) <= gripReach;
    };
    for (size_t i = 0; at.y < stripHeight && i < state.marks.size(); i++)
        if (near(state.marks[i])) return {WaveGrip::mark, int(i)};
    const CAudioEvent* clip = state.clip();
    for (int i = 0; isPinned(clip) && i < clip->pins.count; i++)
        if (WavePainter::pinHandle(state, clientRect(), clip->pins.list[i].frame)
                .contains(at.x, at.y))
            return {WaveGrip::pin, i};
    for (const bool in : {true, false})
        if (WavePainter::fadeHandle(state, clientRect(), in).contains(at.x, at.y))
            return {in ? WaveGrip::fadeIn : WaveGrip::fadeOut};
    if (at.y < stripHeight || state.range.count() == 0) return {};
    if (near(state.range.to)) return {WaveGrip::rangeEnd};
    return {near(state.range.from) ? WaveGrip::rangeStart : WaveGrip::none};
}

void WaveView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    win->setKeyCtrl(this);
    if (panZoom.press(x, y, btn) || !state.sample() || !state.seq()) return;
    const CPoint at = asPoint(x, y);
    const Held held = heldAt(at);
    if (btn & modRight) {
        if (held.grip == WaveGrip::pin) { // the menu is about this one
            const int frame = state.clip()->pins.list[held.index].frame;
            state.setRange(frame, frame);
        }
        if (held.grip == WaveGrip::mark) {
            state.marks.erase(state.marks.begin() + held.index);
            return state.keepMarks();
        }
        gesture = std::make_unique<WaveHand>(state, [this] { contextMenu(); });
        win->app->drag.start(this, gesture.get(), at, btn, WaveHand::handRoom);
        return;
    }
    if (!(btn & modLeft)) return;
    const int frame = state.frameMeant(x, btn & modControl);
    const bool onMark = held.grip == WaveGrip::mark || held.grip == WaveGrip::pin;
    if (btn & modDouble && !onMark)
        return y < stripHeight ? addMarks(state, {frame}) : choosePiece(x);
    if (held.grip == WaveGrip::mark)
        gesture = std::make_unique<MarkDrag>(state, held.index);
    else if (held.grip == WaveGrip::pin)
        gesture = std::make_unique<PinDrag>(state, held.index);
    else if (held.grip == WaveGrip::fadeIn || held.grip == WaveGrip::fadeOut)
        gesture = std::make_unique<FadeDrag>(state, held.grip == WaveGrip::fadeIn);
    else
        gesture = std::make_unique<RangeDrag>(state, standingEnd(held.grip, frame, btn));
    win->app->drag.start(this, gesture.get(), at, btn);
}

/// The end of the range that stays when a drag begins at a frame.
int WaveView::standingEnd(WaveGrip grip, int frame, int btn) const {
    const FrameRange& range = state.range;
    if (grip == WaveGrip::rangeStart) return range.to;
    if (grip == WaveGrip::rangeEnd) return range.from;
    if (!(btn & modShift)) return frame;
    return std::abs(frame - range.from) < std::abs(frame - range.to) ? range.to : range.from;
}

/// Between two marks, else all that is heard.
void WaveView::choosePiece(int x) {
    const FrameRange all = state.heard();
    const int frame = asRound(state.axis.frameAt(x));
    FrameRange piece{0, state.frames()};
    for (const int edge : {all.from, all.to}) {
        if (edge <= frame) piece.from = asMax(piece.from, edge);
        if (edge > frame) piece.to = asMin(piece.to, edge);
    }
    for (const int mark : state.marks) {
        if (mark <= frame) piece.from = asMax(piece.from, mark);
        if (mark > frame) piece.to = asMin(piece.to, mark);
    }
    state.setRange(piece.from, piece.to);
}

void WaveView::hover(CPoint at) {
    const Held held = heldAt(at);
    cursor = held.grip == WaveGrip::none ? cursorPlain : cursorSideways;
    const char* text = held.grip == WaveGrip::mark     ? markHint
                       : held.grip == WaveGrip::pin    ? pinHint
                       : held.grip >= WaveGrip::fadeIn ? fadeHint
                       : held.grip != WaveGrip::none   ? edgeHint
                       : at.y < stripHeight            ? stripHint
                                                       : freeHint;
    if (hint == text) return;
    hint = text;
    win->app->updateHint(this);
}

void WaveView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (!isPushed()) hover(asPoint(x, y));
}

bool WaveView::keyDown(int key, int mods) {
    return waveKey(state, key, mods) || CCtrl::keyDown(key, mods);
}

bool WaveView::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (dx == 0 && !(btn & (modControl | modShift))) std::swap(dx, dy); // there is one way alone
    return panZoom.wheel(x, y, btn, dy, dx);
}

bool WaveView::touch(int x, int y, int btn, const TouchStep& step) {
    return panZoom.touch(x, y, btn, step);
}

CPoint WaveView::panBy(CPoint pixels) {
    const double before = state.axis.start();
    state.scrollTo(before - pixels.x * state.axis.perPixel());
    return asPoint(asRound((before - state.axis.start()) / state.axis.perPixel()), 0);
}

void WaveView::zoomAt(CPoint at, double factor, bool across) {
    if (across)
        state.setLevelZoom(state.levelZoom * factor);
    else
        state.zoomAtPos(at.x, state.axis.perPixel() / factor);
}

bool WaveView::contextMenu() {
    if (onMenu) (*onMenu)(this);
    return onMenu;
}

// What it tells.

int WaveView::accessParts() const {
    if (!state.sample() || !state.seq()) return 0;
    return firstPin() + (isPinned(state.clip()) ? state.clip()->pins.count : 0);
}

int WaveView::firstPin() const {
    return rangeParts + int(state.marks.size());
}

int WaveView::focusedPart() const {
    return accessParts() > 0 ? 0 : wholeCtrl;
}

int WaveView::frameOfPart(int part) const {
    if (part < rangeParts) return part == 0 ? state.range.from : state.range.to;
    if (part >= firstPin()) return state.clip()->pins.list[part - firstPin()].frame;
    return state.marks[size_t(part - rangeParts)];
}

void WaveView::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::canvas : Role::item;
    d.name = "Waveform";
    const CSample* sample = state.sample();
    if (!sample || !state.seq()) {
        if (state.clip()) d.text = "Sample not loaded";
        return;
    }
    if (part == wholeCtrl) {
        d.text = sampleText(*sample).asChar();
        return;
    }
    if (part >= firstPin()) return describePin(d, part - firstPin());
    const int frame = frameOfPart(part), x = state.axis.xOf(frame);
    const CStr time = timeText(frame, double(sample->rate));
    const CStr name = part == 0           ? rangeText(state)
                      : part < rangeParts ? "End of the range, " + time
                                          : "Mark at " + time;
    d.name = name.asChar();
    d.action = "select";
    d.range = {double(frame), 0.0, double(state.frames()), 1.0};
    d.set(stateSelectable, true);
    d.set(stateSelected, part < rangeParts);
    const int right = part == 0 ? state.axis.xOf(state.range.to) : x;
    d.bounds =
        intersect(asRect(x, 0, asMax(right, x + 1), part < rangeParts ? height : int(stripHeight)),
                  clientRect());
}

void WaveView::describePin(Description& d, int index) const {
    const ClipPin& pin = state.clip()->pins.list[index];
    const double tick = state.tickOf(pin.frame);
    d.name = ("Stretch marker " + asStr(index + 1)).asChar();
    d.text = (placeText(state.seq(), asRound(tick)) + ", " +
              asStrFormat(double(pin.pitch), "%+g semitones"))
                 .asChar();
    d.action = "select";
    d.range = {tick, 0.0, double(maxTicks), 1.0};
    d.bounds = intersect(WavePainter::pinHandle(state, clientRect(), pin.frame), clientRect());
}

/// A mark chooses what lies between it and the next one, a stretch marker is the place.
bool WaveView::pressPart(int part) {
    if (part < 0 || part >= accessParts()) return false;
    win->setKeyCtrl(this);
    if (part >= firstPin()) {
        state.setRange(frameOfPart(part), frameOfPart(part));
    } else if (part >= rangeParts) {
        const bool last = part + 1 == firstPin();
        state.setRange(frameOfPart(part), last ? state.heard().to : frameOfPart(part + 1));
    }
    state.scrollInView(frameOfPart(part));
    return true;
}

bool WaveView::enterNumber(int part, double to) {
    if (part < 0 || part >= accessParts()) return false;
    if (part >= firstPin())
        return movePin(state.seq(), state.place(), part - firstPin(), state.pinShare(to));
    const int frame = asMinMax(asRound(to), 0, state.frames());
    if (part >= rangeParts) {
        state.marks.erase(state.marks.begin() + (part - rangeParts));
        addMarks(state, {frame});
    } else if (part == 0) {
        state.setRange(frame, asMax(frame, state.range.to));
    } else {
        state.setRange(asMin(frame, state.range.from), frame);
    }
    return true;
}
