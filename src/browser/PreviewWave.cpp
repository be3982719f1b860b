#include "browser/PreviewWave.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "browser/CBrowserPreview.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "ui/WaveColumns.h"

namespace {

constexpr int edge = 2, keySteps = 20;
constexpr double groundShare = 0.65; ///< of the ground, in a range

int framesOf(const CBrowserPreview* preview) {
    const CSample* sample = preview->getSample();
    return sample ? sample->getFrames() : 0;
}

std::string placeText(double seconds) {
    const int tenths = asRound(seconds * 10);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

} // namespace

PreviewWave::PreviewWave(CWin* owner, CBrowserPreview* player)
    : CCtrl(owner, "wave", 0, 0, 1, 1), preview(player) {
    spokenName = "Place in the file";
    tellRange();
    tabStop = hooverable = true;
}

int PreviewWave::xOf(int frame) const {
    const int frames = framesOf(preview);
    if (frame < 0 || frames < 1) return -1;
    return edge + int(int64_t(frame) * (width - 2 * edge) / frames);
}

CRect PreviewWave::lineAt(int x) const {
    return asRect(x, 1, x + 1, height - 1);
}

void PreviewWave::fileShown() {
    tellRange();
    redraw();
}

void PreviewWave::idle() {
    const int x = preview->isOn() ? xOf(preview->frame()) : -1;
    if (x == shownX) return;
    if (shownX >= 0) redraw(lineAt(shownX));
    shownX = x;
    if (shownX >= 0) redraw(lineAt(shownX));
}

void PreviewWave::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    const int frames = framesOf(preview), wide = width - 2 * edge, middle = height / 2;
    const CRect range =
        asRect(xOf(preview->rangeFrom()), 1, asMax(xOf(preview->rangeTo()), 0), height - 1);
    if (preview->hasRange())
        g->fillRect(fadeCol(colours.accent, colours.window, groundShare), range);
    if (frames > 0 && preview->getSample()->chs <= 2 && wide > 0) {
        const double step = double(frames) / wide;
        const WaveColumns columns(preview->getSample(), 0, frames, step);
        for (int i = 0; i < wide; i++) {
            const int x = edge + i;
            if (g->wants(lineAt(x)))
                paintColumn(g, inRange(x) ? colours.text : colours.accent, columns.at(i * step), x,
                            middle, middle - edge);
        }
    }
    if (shownX >= 0) g->fillLine(colours.text, lineAt(shownX));
    g->frameRect(hasKeyFocus() || isHovered() ? colours.accent : colours.frame, clientRect());
}

// The range.

int PreviewWave::frameAt(int x) const {
    const int wide = asMax(1, width - 2 * edge);
    return int(int64_t(asMinMax(x - edge, 0, wide)) * framesOf(preview) / wide);
}

bool PreviewWave::inRange(int x) const {
    return preview->hasRange() && x >= xOf(preview->rangeFrom()) && x <= xOf(preview->rangeTo());
}

void PreviewWave::choose(int from, int to) {
    preview->setRange(asMin(from, to), asMax(from, to));
    tellRange();
    redraw();
}

void PreviewWave::tellRange() {
    hint = preview->hasRange() ? "Drag the range out, or press Return to bring it to the song"
                               : "Press to listen from there, drag to choose a range";
}

void PreviewWave::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    win->setKeyCtrl(this);
    if (!(btn & modLeft) || !framesOf(preview)) return;
    win->app->drag.start(this, this, asPoint(x, y), btn);
}

void PreviewWave::dragBegin(const DragPoint& point) {
    formerFrom = preview->rangeFrom();
    formerTo = preview->rangeTo();
    out = inRange(point.anchor.x);
    if (out && onDragOut) onDragOut();
}

void PreviewWave::dragMove(const DragPoint& point) {
    if (!out) choose(frameAt(point.anchor.x), frameAt(point.at.x));
}

void PreviewWave::dragEnd(const DragPoint&) {
    if (!out) preview->playFrom(preview->rangeFrom());
}

void PreviewWave::dragCancel() {
    if (out)
        win->app->endDrag();
    else
        choose(formerFrom, formerTo);
}

void PreviewWave::dragClick(const DragPoint& point) {
    if (!inRange(point.anchor.x)) choose(0, 0);
    preview->playFrom(asMin(frameAt(point.anchor.x), framesOf(preview) - 1));
}

/// By the end that lies further on in the direction of the first step.
bool PreviewWave::grow(int by) {
    const int place = asMax(preview->frame(), 0);
    const int from = preview->hasRange() ? preview->rangeFrom() : place;
    const int to = preview->hasRange() ? preview->rangeTo() : place;
    choose(from, asMax(to + by, from));
    if (preview->hasRange()) preview->playFrom(preview->rangeFrom());
    return true;
}

bool PreviewWave::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    const int frames = framesOf(preview);
    const int by = ((key == keyRight) - (key == keyLeft)) * frames / keySteps;
    if (!frames || (mods && mods != modShift)) return false;
    if (mods) return by && grow(by);
    if (key == keyReturn && preview->hasRange() && onBring) {
        onBring();
    } else if (key == keyEscape && preview->hasRange()) {
        choose(0, 0);
    } else if (by || key == keyHome) {
        preview->playFrom(by ? asMax(preview->frame(), 0) + by : 0);
    } else {
        return false;
    }
    return true;
}

void PreviewWave::describe(Description& d, int) const {
    d.role = Role::slider;
    const CSample* sample = preview->getSample();
    const double rate = sample ? double(sample->rate) : 1.0;
    if (preview->hasRange())
        d.text =
            placeText(preview->rangeFrom() / rate) + " to " + placeText(preview->rangeTo() / rate);
    d.range =
        Description::Range{asMax(preview->frame(), 0) / rate, 0.0, framesOf(preview) / rate, 0.0};
}

bool PreviewWave::enterNumber(int, double to) {
    const CSample* sample = preview->getSample();
    if (!sample) return false;
    preview->playFrom(asInt(to * double(sample->rate)));
    return true;
}
