#include "notes/WavePainter.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Palette.h"
#include "gui/PixelPaper.h"
#include "gui/Scale.h"
#include "gui/Shapes.h"
#include "notes/WaveState.h"
#include "notes/WaveView.h"
#include "sequencer/song/CSeq.h"
#include "ui/ProgramItems.h"
#include "ui/WaveColumns.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pointsFrom = 3;  ///< pixels of a frame from which frames are points on a line
constexpr double dotsFrom = 7;    ///< and are drawn as dots
constexpr double valuesFrom = 44; ///< and are told as numbers
constexpr double peakShare = 0.55, lineShare = 0.35;
constexpr double beyond = 0.5; ///< how dark it is where the part does not play
constexpr double rangeShare = 0.22;
constexpr int shadowReach = 1, handleSize = 9, valueHigh = 12, nameWidth = 120;
constexpr int fadeSteps = 24;

} // namespace

WavePainter::WavePainter(CGraphic* g, const WaveState& shared, const CPalette& colours, CRect all,
                         CRect part)
    : graphic(g), state(shared), palette(colours), sample(*shared.sample()), view(all),
      asked(part) {
    const int ground = clGrid.fillCol, mark = clEvent.fillCol;
    ink = {clGridBeats.fillCol, clGridSnap.fillCol, fadeCol(ground, mark, peakShare), mark,
           fadeCol(ground, mark, lineShare)};
}

CRect WavePainter::channelBox(CRect view, int channel, int channels) {
    const int top = view.top + WaveView::stripHeight, high = view.bottom - top;
    return asRect(view.left, top + high * channel / channels, view.right,
                  top + high * (channel + 1) / channels);
}

double WavePainter::yOf(CRect box, float value) const {
    const double reach = box.height() / 2.0 - 1;
    const double shown = fLimit(double(value) * state.levelZoom, -1.0, 1.0);
    return (box.top + box.bottom) / 2.0 - shown * reach;
}

void WavePainter::paint(int playX) {
    ground();
    wave();
    dim();
    range();
    fades();
    marks();
    pins();
    const CRect shadow =
        asRect(playX - shadowReach, view.top, playX + shadowReach + 1, view.bottom);
    if (playX < 0 || intersect(shadow, asked).empty()) return;
    fillAlpha(graphic, shadow, hexColor(0), lineShare);
    graphic->fillLine(palette.accent, asRect(playX, view.top, playX + 1, view.bottom));
}

void WavePainter::ground() {
    state.eachBeat(asked.left, asked.right, [&](int x, int, int beat) {
        graphic->fillLine(beat == 1 ? ink.line : ink.beat,
                          asRect(x, asked.top, x + 1, asked.bottom));
    });
    for (int c = 0; c < sample.chs; c++) {
        const CRect box = channelBox(view, c, sample.chs);
        const int middle = (box.top + box.bottom) / 2;
        graphic->fillLine(ink.middle, asRect(asked.left, middle, asked.right, middle + 1));
        graphic->fillLine(palette.frame, asRect(asked.left, box.top, asked.right, box.top + 1));
    }
}

void WavePainter::readFew() {
    const double first = state.axis.frameAt(asked.left), end = state.axis.frameAt(asked.right);
    fewFrom = asMax(0, asInt(std::floor(first)) - 1);
    const int count = asMin(sample.frames, asInt(std::ceil(end)) + 2) - fewFrom;
    few.resize(size_t(asMax(0, count)) * size_t(sample.chs));
    if (count > 0) sample.readFrames(fewFrom, count, few.data());
}

void WavePainter::wave() {
    const double pixels = 1 / state.axis.perPixel();
    if (pixels >= pointsFrom) readFew();
    {
        PixelPaper paper(graphic, asked);
        if (pixels >= pointsFrom) {
            for (int c = 0; c < sample.chs; c++) points(paper, channelBox(view, c, sample.chs), c);
        } else {
            const double perDevice = state.axis.perPixel() * 100 / scalePercent;
            const WaveColumns source(&sample, state.axis.frameAt(asked.left),
                                     state.axis.frameAt(asked.right) + perDevice, perDevice);
            for (int c = 0; c < sample.chs; c++)
                columns(paper, source, c, channelBox(view, c, sample.chs));
        }
    }
    for (int c = 0; c < sample.chs && pixels >= valuesFrom; c++)
        values(channelBox(view, c, sample.chs), c);
}

void WavePainter::columns(PixelPaper& paper, const WaveColumns& source, int channel, CRect box) {
    const CRect device = paper.deviceRect(box), whole = paper.deviceRect(view);
    const CRect cut = intersect(device, paper.deviceRect(asked));
    const double perDevice = state.axis.perPixel() * 100 / scalePercent;
    const double reach = (device.height() / 2.0 - 1) * state.levelZoom;
    const double middle = (device.top + device.bottom) / 2.0;
    const auto bar = [&](int x, float low, float high, int colour) {
        const int top = asInt(middle - double(high) * reach);
        const int bottom = asInt(middle - double(low) * reach);
        paper.fillDevice(colour, intersect(asRect(x, top, x + 1, asMax(bottom, top + 1)), cut));
    };
    for (int x = cut.left; x < cut.right; x++) {
        const double frame = state.axis.start() + (x - whole.left) * perDevice;
        if (frame < 0 || frame >= sample.frames) continue;
        const WaveColumn w = source.at(frame, channel);
        bar(x, w.low, w.high, w.rms > 0.0f ? ink.peak : ink.body);
        if (w.rms > 0.0f) bar(x, std::max(w.low, -w.rms), std::min(w.high, w.rms), ink.body);
    }
}

/// Frame by frame: a line from one to the next, and dots once they stand apart.
void WavePainter::points(PixelPaper& paper, CRect box, int channel) {
    const int count = int(few.size()) / sample.chs;
    const double pixels = 1 / state.axis.perPixel();
    CPath line;
    for (int i = 0; i < count; i++) {
        const float value = few[size_t(i) * size_t(sample.chs) + size_t(channel)];
        const double x = view.left + (fewFrom + i - state.axis.start()) * pixels;
        const double y = yOf(box, value);
        i == 0 ? line.moveTo(x, y) : line.lineTo(x, y);
    }
    if (count > 1) paper.stroke(ink.body, line, 1.25);
    if (pixels < dotsFrom || line.parts.empty()) return;
    const CRect cut = intersect(paper.deviceRect(box), paper.deviceRect(asked));
    const int half = toDevice(2);
    for (const CPath::Point& p : line.parts.front().points) {
        const CRect at = paper.deviceRect(asRect(asRound(p.x), asRound(p.y), 0, 0));
        paper.fillDevice(ink.body, intersect(asRect(at.left - half, at.top - half,
                                                    at.left + half + 1, at.top + half + 1),
                                             cut));
    }
}

void WavePainter::values(CRect box, int channel) {
    const TextScope small(graphic, {TextSize::small});
    const double pixels = 1 / state.axis.perPixel();
    const int count = int(few.size()) / sample.chs;
    for (int i = 0; i < count; i++) {
        const float value = few[size_t(i) * size_t(sample.chs) + size_t(channel)];
        const int x = view.left + asRound((fewFrom + i - state.axis.start()) * pixels);
        const int y = asRound(yOf(box, value));
        const bool below = value < 0.0f;
        const int top =
            asMinMax(below ? y + 4 : y - 4 - valueHigh, box.top, box.bottom - valueHigh);
        graphic->drawText(palette.dimText, asStrFormat(double(value), "%.4f"),
                          asRect(x - 24, top, x + 24, top + valueHigh), 0);
    }
}

/// What the part does not play.
void WavePainter::dim() {
    const FrameRange all = state.heard();
    const CRect before = asRect(view.left, view.top, state.axis.xOf(all.from), view.bottom);
    const CRect behind = asRect(state.axis.xOf(all.to), view.top, view.right, view.bottom);
    for (const CRect& dark : {intersect(before, asked), intersect(behind, asked)})
        if (!dark.empty()) fillAlpha(graphic, dark, palette.frame, beyond);
}

void WavePainter::range() {
    const int from = state.axis.xOf(state.range.from), to = state.axis.xOf(state.range.to);
    const CRect box = intersect(asRect(from, view.top, to, view.bottom), asked);
    if (!box.empty()) fillAlpha(graphic, box, palette.accent, rangeShare);
    for (const int x : {from, to})
        if (x >= asked.left && x < asked.right)
            graphic->fillLine(palette.text, asRect(x, asked.top, x + 1, asked.bottom));
}

CRect WavePainter::fadeHandle(const WaveState& state, CRect view, bool in) {
    const int x = state.axis.xOf(state.fadeHead(in)), top = view.top + WaveView::stripHeight;
    return asRect(x - handleSize / 2, top, x + handleSize / 2 + 1, top + handleSize);
}

/// The gain is the square of a straight line.
void WavePainter::fades() {
    const int top = view.top + WaveView::stripHeight;
    for (const bool in : {true, false}) {
        const int foot = state.axis.xOf(state.fadeFoot(in)),
                  head = state.axis.xOf(state.fadeHead(in));
        CPath path;
        path.moveTo(foot, view.bottom);
        for (int i = 1; i <= fadeSteps; i++) {
            const double share = double(i) / fadeSteps;
            path.lineTo(foot + (head - foot) * share,
                        view.bottom - (view.bottom - top) * share * share);
        }
        if (head != foot) strokePath(graphic, path, 1.5, palette.text, 0.8);
        const CRect handle = fadeHandle(state, view, in);
        graphic->fillRect(palette.text, intersect(handle, asked));
        graphic->fillRect(palette.window, intersect(sizeRect(handle, 2, 2, -2, -2), asked));
    }
}

void WavePainter::mark(int frame, int colour, const CRect& head) {
    const int x = state.axis.xOf(frame);
    if (x < asked.left - nameWidth || x > asked.right + handleSize) return;
    graphic->fillLine(colour, asRect(x, view.top, x + 1, view.bottom));
    graphic->fillRect(
        colour,
        intersect(asRect(x + head.left, view.top, x + head.right, view.top + head.bottom), asked));
}

void WavePainter::marks() {
    const CRect strip = asRect(asked.left, view.top, asked.right, view.top + WaveView::stripHeight);
    graphic->fillRect(clMarkers.fillCol, intersect(strip, asked));
    for (const int frame : state.marks)
        mark(frame, palette.solo, asRect(-4, 0, 5, WaveView::stripHeight - 4));
    for (const AudioCue& cue : sample.cues) {
        mark(cue.frame, palette.accent, asRect(0, 0, 5, WaveView::stripHeight - 4));
        const int x = state.axis.xOf(cue.frame) + 8;
        const TextScope small(graphic, {TextSize::small});
        graphic->drawText(palette.text, cue.name.c_str(),
                          asRect(x, view.top, x + nameWidth, view.top + WaveView::stripHeight),
                          textLeft);
    }
}

CRect WavePainter::pinHandle(const WaveState& state, CRect view, double frame) {
    const int x = state.axis.xOf(frame);
    return asRect(x - handleSize / 2, view.bottom - handleSize, x + handleSize / 2 + 1,
                  view.bottom);
}

void WavePainter::pinHead(double frame, float pitch) {
    const CRect handle = pinHandle(state, view, frame);
    const int x = state.axis.xOf(frame);
    if (x < asked.left - nameWidth || x > asked.right + handleSize) return;
    graphic->fillLine(palette.mute, asRect(x, view.top, x + 1, view.bottom));
    graphic->fillRect(palette.mute, intersect(handle, asked));
    if (pitch == 0.0f) return;
    const TextScope small(graphic, {TextSize::small});
    graphic->drawText(
        palette.text, asStrFormat(double(pitch), "%+g"),
        asRect(handle.right + 2, handle.top - 3, handle.right + nameWidth, view.bottom), textLeft);
}

void WavePainter::pins() {
    const CAudioEvent* clip = state.clip();
    if (!isPinned(clip)) return;
    for (int i = 0; i < clip->pins.count; i++)
        if (i != state.heldPin) pinHead(clip->pins.list[i].frame, clip->pins.list[i].pitch);
    if (state.heldPin < 0 || state.heldPin >= clip->pins.count) return;
    const ClipPin& held = clip->pins.list[state.heldPin];
    const int from = state.axis.xOf(held.frame), to = state.axis.xOf(state.pinTarget);
    const CRect way = asRect(asMin(from, to), view.bottom - 2, asMax(from, to), view.bottom);
    graphic->fillRect(palette.mute, intersect(way, asked));
    pinHead(state.pinTarget, held.pitch);
}
