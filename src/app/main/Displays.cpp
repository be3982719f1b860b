#include "app/main/Displays.h"

#include "app/main/Digits.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "sequencer/CSeq.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int fieldTop = 4;
constexpr int fieldHeight = 48;
constexpr int titleHeight = 16;
constexpr int margin = 8;
constexpr float fineStep = 0.1f;

template <class... Args>
CStr formatted(const char* format, Args... args) {
    char text[64];
    std::snprintf(text, sizeof(text), format, args...);
    return text;
}

double songPos(CQV* host) {
    CSeq* seq = songOf(host);
    return seq ? seq->getPos() : double(host->pos);
}

} // namespace

CSeq* songOf(CQV* host) {
    return static_cast<CSeq*>(host->firstOfType(compSeq));
}

double songTimeMs(CQV* host) {
    constexpr double msPerSecond = 1000.0;
    CSeq* seq = songOf(host);
    const CSeqProg* prog = seq ? seq->getProg() : nullptr;
    return prog ? double(prog->samplePos) * msPerSecond / double(host->rate) : 0.0;
}

CFigures::CFigures(CWin* owner, const CStr& name, const CStr& heading, int l, int w, CQV* host)
    : CCtrl(owner, name, l, fieldTop, w, fieldHeight), qv(host), title(heading) {
}

void CFigures::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.window, clientRect());
    g->frameRect(colours.frame, clientRect());
    g->drawText(colours.dimText, title, asRect(margin, 3, width - margin, titleHeight), textLeft);
    const CRect field = asRect(margin, titleHeight + 1, width - margin, height - 3);
    drawDigits(g, field, shownText, colours.text);
}

void CFigures::refresh() {
    const CStr now = figures();
    if (now == shownText) return;
    shownText = now;
    if (shown()) win->app->drawNow(win, this);
}

CPositionDisplay::CPositionDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "position", "POSITION", l, displayWidth, host) {
    hint = "Bar, beat and ticks";
}

CStr CPositionDisplay::figures() const {
    int num = 4, den = 4;
    if (CSeq* seq = songOf(qv)) seq->getTimeSig(num, den);
    const int beat = std::max(1, 960 * 4 / std::max(1, den));
    const int tick = asInt(songPos(qv));
    const int beats = tick / beat;
    return formatted("%03d.%d.%03d", beats / std::max(1, num) + 1, beats % std::max(1, num) + 1,
                     tick % beat);
}

CTimeDisplay::CTimeDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "time", "TIME", l, displayWidth, host) {
    hint = "Minutes, seconds and milliseconds";
}

CStr CTimeDisplay::figures() const {
    constexpr int msPerSecond = 1000, secondsPerMinute = 60;
    const double ms = songTimeMs(qv);
    const int whole = asInt(ms);
    const int seconds = whole / msPerSecond;
    return formatted("%02d:%02d.%03d", seconds / secondsPerMinute, seconds % secondsPerMinute,
                     whole % msPerSecond);
}

CTempoDisplay::CTempoDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "tempo", "TEMPO", l, displayWidth, host) {
    hint = "Tempo: drag or turn the wheel, finely with Shift";
}

CStr CTempoDisplay::figures() const {
    return formatted("%.1f", double(qv->tempo));
}

void CTempoDisplay::mouseDown(int, int y, int) {
    dragFrom = y;
    dragTempo = qv->tempo;
}

void CTempoDisplay::mouseMove(int, int y, int btn) {
    constexpr float pixelsPerBeat = 2.0f;
    if (!(btn & modLeft) || !isPushed()) return;
    const float step = btn & modShift ? fineStep : 1.0f;
    qv->setTempo(dragTempo + float(dragFrom - y) / pixelsPerBeat * step);
}

bool CTempoDisplay::mouseWheel(int, int, int btn, int dy, int) {
    const float step = btn & modShift ? fineStep : 1.0f;
    qv->setTempo(qv->tempo + (dy > 0 ? step : -step));
    return true;
}
