#include "notes/WaveInfo.h"

#include "audiofiles/CSample.h"
#include "audiofiles/SampleMeasures.h"
#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Shapes.h"
#include "notes/WaveState.h"
#include "notes/WaveTexts.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int gap = 8, labelWidth = 30;
constexpr int bands = 2048;
constexpr double lowestHz = 20.0, floorDb = -100.0;

} // namespace

bool MeasuredRange::follow(const WaveState& state) {
    const FrameRange now = state.chosen();
    if (version == state.version && range == state.range && chosen == now) return false;
    version = state.version;
    range = state.range;
    chosen = now;
    return true;
}

WaveInfo::WaveInfo(CWin* owner, WaveState& shared)
    : CCtrl(owner, "waveinfo", 0, 0, 1, int(infoHeight)), state(shared) {
    spokenName = "Range";
}

void WaveInfo::refresh() {
    const bool any = state.sample() && state.seq();
    const CStr now = any ? rangeText(state) : CStr();
    const bool changed = measured.follow(state) || level.empty() == any;
    if (changed) level = any ? levelText(state) : CStr();
    if (!changed && now == place) return;
    place = now;
    redraw();
}

void WaveInfo::paint(CGraphic* g, CRect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, 0, width, 1));
    const int wide = g->textWidth(level) + gap;
    g->drawText(palette.text, place, asRect(gap, 0, width - wide - gap, height), textLeft);
    g->drawText(palette.dimText, level, asRect(width - wide, 0, width - gap, height), textRight);
}

void WaveInfo::describe(Description& d, int) const {
    d.role = Role::status;
    d.text = (place + (level.empty() ? CStr() : ",  " + level)).asChar();
}

// The spectrum.

RangeSpectrum::RangeSpectrum(CWin* owner, WaveState& shared)
    : CCtrl(owner, "rangespectrum", 0, 0, 1, int(usualHeight)), state(shared) {
    hint = "Spectrum of the range, in dB below full scale";
}

void RangeSpectrum::refresh() {
    if (!visible || !measured.follow(state)) return;
    const CSample* sample = state.sample();
    const FrameRange chosen = state.chosen();
    levels = sample ? spectrumOf(*sample, chosen.from, chosen.to, bands) : std::vector<float>();
    redraw();
}

double RangeSpectrum::xOf(double hz) const {
    const double highest = double(state.sample()->rate) / 2;
    return width * std::log(hz / lowestHz) / std::log(highest / lowestHz);
}

double RangeSpectrum::yOf(double db) const {
    return height * fLimit(db / floorDb, 0.0, 1.0);
}

void RangeSpectrum::paint(CGraphic* g, CRect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.window, clientRect());
    g->fillLine(palette.frame, asRect(0, 0, width, 1));
    if (!state.sample() || levels.empty()) {
        g->drawText(palette.dimText, "Select a stretch that is longer", clientRect(), 0);
        return;
    }
    const TextScope small(g, {TextSize::small});
    const double highest = double(state.sample()->rate) / 2;
    for (const int hz : {50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000}) {
        if (hz >= highest) break;
        const int x = asRound(xOf(hz));
        g->fillLine(palette.frame, asRect(x, 1, x + 1, height));
        if (x + labelWidth < width)
            g->drawText(palette.dimText, hz < 1000 ? asStr(hz) : asStr(hz / 1000) + "k",
                        asRect(x + 3, height - 14, x + labelWidth, height), textLeft);
    }
    for (int db = -20; db > floorDb; db -= 20) {
        const int y = asRound(yOf(db));
        g->fillLine(palette.frame, asRect(0, y, width, y + 1));
        g->drawText(palette.dimText, asStr(db), asRect(3, y - 12, 40, y), textLeft);
    }
    CPath curve;
    curve.moveTo(0, height);
    for (size_t i = 1; i < levels.size(); i++) {
        const double hz = double(i) * highest / double(levels.size());
        if (hz >= lowestHz) curve.lineTo(xOf(hz), yOf(double(levels[i])));
    }
    curve.lineTo(width, height);
    fillPath(g, curve, palette.accent, 0.35);
    strokePath(g, curve, 1, palette.accent);
}

double RangeSpectrum::loudest() const {
    if (levels.empty() || !state.sample()) return 0.0;
    const auto at = std::ranges::max_element(levels) - levels.begin();
    return double(at) * double(state.sample()->rate) / 2 / double(levels.size());
}

void RangeSpectrum::describe(Description& d, int) const {
    d.role = Role::picture;
    d.name = "Spectrum of the range";
    if (!levels.empty()) d.text = ("loudest at " + asStr(asRound(loudest())) + " Hz").asChar();
}
