#include "mixer/EqCurve.h"

#include "base/Numbers.h"
#include "common/fx/CEQ.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double decades = 3.0, firstDecade = 1.3; // log10 of 20 Hz, nearly
constexpr double gainSpan = 2.0 * double(CEQ::maxGain);
constexpr double lowestDb = -120.0;
constexpr double gridShare = 0.25; // of the text's colour in the lines
constexpr int gridStepDb = 6, labelStepDb = 12;
constexpr int leastWidth = 40;

constexpr struct {
    int type, hz;
    unsigned colour;
} bands[EqCurve::numHandles] = {{eqLowShelf, 100, 0xd9634e},
                                {eqPeaking, 500, 0xc08a2e},
                                {eqPeaking, 2000, 0x3f9a6b},
                                {eqHighShelf, 10000, 0x4f86c6}};

constexpr struct {
    double hz;
    const char* label; ///< null: a thin line between
} freqLines[] = {{50, nullptr}, {100, "100"},    {200, nullptr},  {500, nullptr},
                 {1000, "1k"},  {2000, nullptr}, {5000, nullptr}, {10000, "10k"}};

double clampTo(double v, float low, float high) {
    return fLimit(v, double(low), double(high));
}

/// The power that (c0 + c1 z^-1 + c2 z^-2) lets through where `q2` is sin(w / 2) squared.
double power(double c0, double c1, double c2, double q2) {
    const double sum = c0 + c1 + c2;
    return sum * sum - 4 * (c0 * c1 + 4 * c0 * c2 + c1 * c2) * q2 + 16 * c0 * c2 * q2 * q2;
}

double decibels(double ratio) {
    return ratio > 0.0 ? std::max(10.0 * std::log10(ratio), lowestDb) : lowestDb;
}

} // namespace

const CEQ* EqHandle::shown() const {
    return strip ? strip->eq[band] : nullptr;
}

void EqHandle::tell(const StoredValue& value, double to) {
    ValueDoor& values = *strip->comp->host->values;
    if (values.dragging())
        values.set(value, to);
    else
        values.nudge(value, to);
}

void EqHandle::SetGain(double db) {
    gain = clampTo(db, CEQ::minGain, CEQ::maxGain);
    if (strip) tell(eqGainOf(strip, band), gain);
}

void EqHandle::SetQ(double value) {
    q = clampTo(value, CEQ::minQ, CEQ::maxQ);
    if (strip) tell(eqQOf(strip, band), q);
}

void EqHandle::SetFreq(double hz) {
    freq = clampTo(hz, CEQ::minFrequency, CEQ::maxFrequency);
    if (strip) tell(eqFrequencyOf(strip, band), freq);
}

double EqHandle::GetGain() const {
    return strip ? double(shown()->getGain()) : gain;
}

double EqHandle::GetQ() const {
    return strip ? double(shown()->getQ()) : q;
}

double EqHandle::GetFreq() const {
    return strip ? double(shown()->getFrequency()) : freq;
}

int EqHandle::getKind() const {
    return strip ? shown()->getFilterType() : kind;
}

bool EqHandle::getActive() const {
    return (strip ? int(shown()->active) : active) == 1;
}

void EqHandle::GetRealCurve(const std::vector<double>& freqs, double rate,
                            std::vector<double>& response) const {
    const EqCoeffs c = eqCoeffs(getKind(), GetFreq(), GetGain(), GetQ(), rate);
    for (std::size_t i = 0; i < freqs.size(); i++) {
        const double half = std::sin(freqs[i] * std::numbers::pi / rate), q2 = half * half;
        const double passed = power(c.b0, c.b1, c.b2, q2), fed = power(1.0, c.a1, c.a2, q2);
        response[i] += decibels(fed > 0.0 ? passed / fed : 0.0);
    }
}

EqCurve::EqCurve(CCtrl* owner) : ctrl(owner), colour(-1) {
    for (int i = 0; i < numHandles; i++)
        handles[i] = std::make_unique<EqHandle>(bands[i].type, bands[i].hz, this);
    SetNewWidth(owner ? owner->width : leastWidth);
    SetNewHeight(owner ? owner->height : leastWidth);
}

void EqCurve::SetNewWidth(int n) {
    width = asMax(n, leastWidth);
    scale = decades / width;
    freqs.resize(std::size_t(width));
    for (int i = 0; i < width; i++) freqs[std::size_t(i)] = std::pow(10.0, scale * i + firstDecade);
    curve.assign(std::size_t(width), 0.0);
}

void EqCurve::SetNewHeight(int n) {
    height = asMax(n / 2, 1);
}

void EqCurve::SetSamplerate(double hz) {
    rate = hz;
}

double EqCurve::ScreenToFreq(int x) const {
    return freqs[std::size_t(asMinMax(x, 0, width - 1))];
}

int EqCurve::FreqToScreen(double hz) const {
    const auto at = std::ranges::lower_bound(freqs, hz);
    return asMin(int(at - freqs.begin()), width - 1);
}

int EqCurve::GainToScreen(double db) const {
    return height - asRound(db / double(CEQ::maxGain) * height);
}

double EqCurve::ScreenToGain(int y) const {
    return double(y) / (2 * height) * -gainSpan + gainSpan / 2;
}

double EqCurve::ScreenToQ(int y) const {
    const double low = double(CEQ::minQ), span = double(CEQ::maxQ) - low;
    return double(y) / (2 * height) * span + low;
}

void EqCurve::CalcCurve() {
    std::ranges::fill(curve, 0.0);
    for (const auto& handle : handles)
        if (handle->getActive()) handle->GetRealCurve(freqs, rate, curve);
}

void EqCurve::Invalidate() {
    CalcCurve();
    if (ctrl) ctrl->redraw();
}

CRect EqCurve::handleRect(int index) const {
    constexpr int half = handleSize / 2;
    const EqHandle& h = *handles[index];
    const int x = asMinMax(FreqToScreen(h.GetFreq()), half, width - half - 1);
    const int y = asMinMax(GainToScreen(h.GetGain()), half, 2 * height - half - 1);
    return asRect(x - half, y - half, x + half + 1, y + half + 1);
}

int EqCurve::handleAt(int x, int y) const {
    constexpr int reach = 2; // pixels around the square that count as well
    for (int i = numHandles - 1; i >= 0; i--)
        if (sizeRect(handleRect(i), -reach, -reach, reach, reach).contains(x, y)) return i;
    return -1;
}

/// Kept inside, since a sum of bands goes beyond what is shown.
int EqCurve::curveY(int column) const {
    return asMinMax(GainToScreen(curve[std::size_t(column)]), 0, 2 * height - 1);
}

void EqCurve::paintGrid(CGraphic* g, int paper) const {
    const CPalette& colours = ctrl->win->app->gui->palette;
    const int line = fadeCol(paper, colours.text, gridShare);
    const int thin = fadeCol(paper, colours.text, gridShare / 2);
    const int full = 2 * height;
    for (const auto& f : freqLines) {
        const int x = FreqToScreen(f.hz);
        g->fillLine(f.label ? line : thin, asRect(x, 0, x + 1, full));
        if (f.label)
            g->drawText(colours.dimText, f.label, asRect(x + 4, full - 18, x + 40, full - 2),
                        textLeft);
    }
    const int most = int(CEQ::maxGain);
    for (int db = gridStepDb - most; db < most; db += gridStepDb) {
        const int y = GainToScreen(db);
        g->fillLine(db == 0 ? line : thin, asRect(0, y, width, y + 1));
        if (db % labelStepDb == 0)
            g->drawText(colours.dimText, (db > 0 ? "+" : "") + asStr(db),
                        asRect(4, y + 1, 40, y + 17), textLeft);
    }
}

void EqCurve::paintSpectrum(CGraphic* g, int paper) const {
    constexpr double share = 0.3; // of the accent
    const int fill = fadeCol(paper, ctrl->win->app->gui->palette.accent, share);
    const int bottom = 2 * height;
    for (int x = 0; x < asMin(width, int(spectrum->size())); x++) {
        const double high = 1 - (*spectrum)[std::size_t(x)] / leastSpectrum;
        const int tall = asMinMax(asRound(high * bottom), 0, bottom);
        if (tall > 0) g->fillRect(fill, asRect(x, bottom - tall, x + 1, bottom));
    }
}

void EqCurve::paintHandles(CGraphic* g, int paper) const {
    constexpr double offShare = 0.4; // of its colour in a band that is off
    for (int i = 0; i < numHandles; i++) {
        const int own = hexColor(bands[i].colour);
        const CRect square = handleRect(i);
        g->fillRect(handles[i]->getActive() ? own : fadeCol(paper, own, offShare), square);
        g->frameRect(paper, square);
    }
}

void EqCurve::Paint(CGraphic* g, CRect rect) {
    const CPalette& colours = ctrl->win->app->gui->palette;
    const int paper = colour < 0 ? colours.panel : colour;
    g->fillRect(paper, rect);
    if (spectrum) paintSpectrum(g, paper);
    paintGrid(g, paper);
    paintHandles(g, paper);
    g->setLineCol(colours.text);
    for (int x = 1; x < width; x++) g->drawLine(x - 1, curveY(x - 1), x, curveY(x));
}
