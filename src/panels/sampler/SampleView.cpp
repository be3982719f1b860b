#include "panels/sampler/SampleView.h"

#include "audiofiles/SampleMeasures.h"
#include "base/Numbers.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "instruments/CSampleClip.h"
#include "ui/WaveColumns.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int reach = 5, flagWidth = 14, flagHeight = 14, pad = 8;
constexpr int cursorPlain = 1, cursorSideways = 5;
constexpr double leastShown = 32.0; ///< frames
constexpr double zoomStep = 1.5, wheelShare = 0.1;
constexpr int zeroReach = 2048; ///< frames that the help may lead away
constexpr const char* letters[sampleMarks] = {"S", "L", "E"};

} // namespace

SampleView::SampleView(CWin* owner, ValueDoor* through, CSampleClip* of,
                       std::function<bool()> lives)
    : CCtrl(owner, "wave", 0, 0, 1, usualHeight), door(through), clip(of), alive(std::move(lives)) {
    hooverable = tabStop = true;
    hint = "Drag the lines: start, loop start and end; Ctrl + wheel zooms";
    refresh();
    shown = std::max(leastShown, double(shape.frames));
}

SampleView::Shape SampleView::present() const {
    Shape now{{}, int(clip->frames), clip->loop == loopForward};
    for (int i = 0; i < sampleMarks; i++)
        now.marks[size_t(i)] = asRound(sampleMark(clip, i).get()[0]);
    return now;
}

bool SampleView::refresh() {
    if (!alive()) return false;
    const Shape now = present();
    if (now == shape) return false;
    shape = now;
    redraw();
    return true;
}

double SampleView::perPixel() const {
    return shown / std::max(1, width - 2 * pad);
}

double SampleView::xOf(double frame) const {
    return pad + (frame - from) / perPixel();
}

double SampleView::frameAt(double x) const {
    return from + (x - pad) * perPixel();
}

void SampleView::paintWave(CGraphic* g) const {
    const CPalette& colours = win->app->gui->palette;
    const int middle = height / 2, high = height / 2 - pad;
    g->fillLine(colours.frame, asRect(pad, middle, width - pad, middle + 1));
    const CRect asked = g->asked();
    const WaveColumns columns(clip, from, from + shown, perPixel());
    const int dim = fadeCol(colours.window, colours.dimText, 0.5);
    for (int x = std::max(pad, asked.left); x < std::min(width - pad, asked.right); x++) {
        const double frame = frameAt(x);
        if (frame < 0.0 || frame >= shape.frames) continue;
        const bool played = frame >= shape.marks[sampleStart] && frame <= shape.marks[sampleEnd];
        paintColumn(g, played ? colours.accent : dim, columns.at(frame), x, middle, high);
    }
}

void SampleView::paintMark(CGraphic* g, int mark) const {
    const CPalette& colours = win->app->gui->palette;
    const int x = asRound(xOf(shape.marks[size_t(mark)]));
    if (x < 0 || x >= width) return;
    const bool marked = mark == held || (hasKeyFocus() && mark == current);
    const int colour = marked               ? colours.text
                       : mark == sampleLoop ? colours.meter[1]
                                            : colours.accent;
    g->fillLine(colour, asRect(x, 0, x + 1, height));
    const int side = mark == sampleEnd ? x - flagWidth : x + 1;
    const int y = mark == sampleLoop ? height - flagHeight : 0;
    const CRect flag = asRect(side, y, side + flagWidth, y + flagHeight);
    g->fillRect(colour, flag);
    const TextScope small(g, {.size = TextSize::small, .bold = true});
    g->drawText(textOn(colour), letters[mark], flag, 0);
}

void SampleView::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRound(colours.window, clientRect());
    if (alive() && shape.frames > 0) {
        paintWave(g);
        for (const int mark : {int(sampleLoop), int(sampleStart), int(sampleEnd)})
            if (mark != sampleLoop || shape.loops) paintMark(g, mark);
    }
    g->frameRound(hasKeyFocus() ? colours.accent : colours.frame, clientRect());
}

int SampleView::markAt(int x) const {
    int nearest = -1;
    double least = reach;
    for (const int mark : {int(sampleStart), int(sampleEnd), int(sampleLoop)}) {
        const double way = std::fabs(xOf(shape.marks[size_t(mark)]) - x);
        if (way > least || (mark == sampleLoop && !shape.loops)) continue;
        least = way;
        nearest = mark;
    }
    return nearest;
}

int SampleView::helped(int frame) const {
    return zeroHelp ? zeroCrossing(*clip, frame, zeroReach) : frame;
}

void SampleView::set(int mark, int frame) {
    door->set(sampleMark(clip, mark), std::clamp(frame, 0, std::max(0, shape.frames - 1)));
    refresh();
}

void SampleView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft) || !alive()) return;
    held = markAt(x);
    if (held >= 0) {
        current = held;
        win->app->drag.start(this, this, asPoint(x, y), btn, 1);
    } else if (btn & modDouble) {
        from = 0.0;
        shown = std::max(leastShown, double(shape.frames));
    }
    redraw();
}

void SampleView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    cursor = markAt(x) >= 0 ? cursorSideways : cursorPlain;
}

void SampleView::zoom(double factor, double around) {
    const double share = std::clamp((around - from) / shown, 0.0, 1.0);
    shown = std::clamp(shown * factor, leastShown, std::max(leastShown, double(shape.frames)));
    from = around - share * shown;
    scrollBy(0.0);
}

void SampleView::scrollBy(double frames) {
    from = std::clamp(from + frames, 0.0, std::max(0.0, shape.frames - shown));
    redraw();
}

bool SampleView::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CCtrl::mouseWheel(x, y, btn, dy, dx)) return true;
    if (btn & modControl) {
        zoom(dy > 0 ? 1.0 / zoomStep : zoomStep, frameAt(x));
        return true;
    }
    if (shown >= shape.frames) return false; // the page scrolls
    scrollBy((dx ? dx : -dy) > 0 ? wheelShare * shown : -wheelShare * shown);
    return true;
}

int SampleView::nextFrame(int frame, int way) const {
    return zeroHelp ? nextZeroCrossing(*clip, frame, way, zeroReach) : frame + way;
}

bool SampleView::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (!alive()) return false;
    if (key == '+' || key == '-') {
        zoom(key == '+' ? 1.0 / zoomStep : zoomStep, shape.marks[size_t(current)]);
        return true;
    }
    if (mods & ~(modControl | modShift)) return false;
    if (key >= '1' && key < '1' + sampleMarks) {
        current = key - '1';
        redraw();
        return true;
    }
    const int way = (key == keyRight) - (key == keyLeft);
    if (way == 0) return false;
    const int now = shape.marks[size_t(current)];
    const int byPixel = now + way * std::max(1, asRound(perPixel()));
    set(current, mods & modControl ? helped(byPixel)
                 : mods & modShift ? now + way
                                   : nextFrame(now, way));
    return true;
}

void SampleView::dragBegin(const DragPoint&) {
    door->begin();
}

void SampleView::dragMove(const DragPoint& point) {
    if (!door->dragging() || !alive()) return; // undone meanwhile
    const int frame = asRound(std::clamp(frameAt(point.at.x), 0.0, double(shape.frames - 1)));
    set(held, point.btn & modShift ? frame : helped(frame));
}

void SampleView::dragEnd(const DragPoint&) {
    door->end();
    held = -1;
    redraw();
}

void SampleView::dragCancel() {
    door->cancel();
    held = -1;
    refresh();
    redraw();
}

void SampleView::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Wave of the sample";
}
