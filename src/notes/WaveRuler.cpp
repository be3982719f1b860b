#include "notes/WaveRuler.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/PanZoom.h"
#include "notes/WavePainter.h"
#include "notes/WaveState.h"
#include "sequencer/song/CSeq.h"
#include "ui/ProgramItems.h"

#include <cmath>

namespace {

constexpr int gap = 4, numberWidth = 72, tickHeight = 5, partHeight = 4;
constexpr int barsHeight = 18, timeRoom = 84; ///< pixels from one time to the next

/// The least round stretch of time that is at least `seconds`.
double roundSeconds(double seconds) {
    double step = std::pow(10.0, std::floor(std::log10(seconds)));
    for (const double times : {1.0, 2.0, 5.0, 10.0})
        if (step * times >= seconds) return step * times;
    return step;
}

double wheelFactor(int dy) {
    return dy < 0 ? PanZoom::notchFactor : 1 / PanZoom::notchFactor;
}

} // namespace

WaveRuler::WaveRuler(CWin* owner, WaveState& shared)
    : CCtrl(owner, "waveruler", 0, 0, 1, int(rulerHeight)), state(shared) {
    hint = "Press to move the position; the wheel zooms";
}

void WaveRuler::paint(CGraphic* g, CRect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(clMarkers.fillCol, asked);
    if (state.sample() && state.seq()) {
        const FrameRange all = state.heard();
        g->fillRect(clEvent.fillCol, intersect(asRect(state.axis.xOf(all.from), 0,
                                                      state.axis.xOf(all.to), partHeight),
                                               asked));
        state.eachBeat(asked.left - numberWidth, asked.right, [&](int x, int bar, int beat) {
            g->fillLine(palette.dimText, asRect(x, barsHeight - tickHeight, x + 1, barsHeight));
            const CStr text = beat > 1 ? asStr(bar) + "." + asStr(beat) : asStr(bar);
            g->drawText(beat > 1 ? palette.dimText : palette.text, text,
                        asRect(x + gap, partHeight, x + numberWidth, barsHeight), textLeft);
        });
        paintTimes(g, asked);
    }
    g->fillLine(palette.frame, asRect(asked.left, height - 1, asked.right, height));
}

/// In minutes and seconds; where frames stand far apart their numbers.
void WaveRuler::paintTimes(CGraphic* g, CRect asked) const {
    const CPalette& palette = win->app->gui->palette;
    const double rate = double(state.sample()->rate);
    const bool counts = state.axis.perPixel() * timeRoom < rate / 1000;
    const double unit = counts ? 1 : rate;
    const double step =
        std::max(counts ? 1.0 : 0.0, roundSeconds(state.axis.perPixel() * timeRoom / unit)) * unit;
    const double from = std::max(0.0, state.axis.frameAt(asked.left - timeRoom));
    for (double at = std::floor(from / step) * step; at <= state.frames(); at += step) {
        const int x = state.axis.xOf(at);
        if (x >= asked.right) break;
        g->fillLine(palette.dimText, asRect(x, height - tickHeight, x + 1, height));
        g->drawText(palette.dimText, counts ? asStr(asRound(at)) : timeText(at, rate),
                    asRect(x + gap, barsHeight, x + timeRoom, height - 1), textLeft);
    }
}

void WaveRuler::jumpTo(int x) {
    if (state.sample() && state.seq())
        state.qv->setPos(fLimit(state.tickOf(state.axis.frameAt(x)), 0.0, maxTicks));
}

void WaveRuler::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (btn & modLeft) jumpTo(x);
}

void WaveRuler::mouseMove(int x, int, int btn) {
    if (isPushed() && (btn & modLeft)) jumpTo(asMinMax(x, 0, width - 1));
}

bool WaveRuler::mouseWheel(int x, int, int, int dy, int) {
    if (dy == 0) return false;
    state.zoomAtPos(x, state.axis.perPixel() / wheelFactor(dy));
    return true;
}

void WaveRuler::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Bars and time of the sound";
}

// The levels.

LevelScale::LevelScale(CWin* owner, WaveState& shared)
    : CCtrl(owner, "levels", 0, 0, int(scaleWidth), 1), state(shared) {
    hint = "Level in dB; the wheel shows quiet sound larger";
}

void LevelScale::paint(CGraphic* g, CRect) {
    constexpr int half = 6;
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    const CSample* sample = state.sample();
    const TextScope small(g, {TextSize::small});
    for (int c = 0; sample && c < sample->chs; c++) {
        const CRect box = WavePainter::channelBox(clientRect(), c, sample->chs);
        int free = box.top + half;
        for (int db = 0; db >= -96; db -= 3) {
            const double value = std::pow(10.0, db / 20.0) * state.levelZoom;
            if (value > 1.0) continue;
            const int y = asRound((box.top + box.bottom) / 2.0 - value * (box.height() / 2.0 - 1));
            if (y < free) continue;
            if (y > (box.top + box.bottom) / 2 - half) break;
            g->drawText(palette.dimText, asStr(db), asRect(0, y - half, width - 4, y + half),
                        textRight);
            free = y + 2 * half + 2;
        }
    }
    g->fillLine(palette.frame, asRect(width - 1, 0, width, height));
}

bool LevelScale::mouseWheel(int, int, int, int dy, int) {
    if (dy == 0) return false;
    state.setLevelZoom(state.levelZoom * wheelFactor(dy));
    return true;
}

void LevelScale::describe(Description& d, int) const {
    d.role = Role::canvas;
    d.name = "Levels";
}
