#include "app/main/Displays.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int fieldTop = 4;
constexpr int fieldHeight = 48;
constexpr int titleHeight = 16;
constexpr int margin = 8;
constexpr float fineStep = 0.1f;

struct Signature {
    unsigned char num, den;
};
constexpr Signature signatures[] = {{2, 4}, {3, 4}, {4, 4}, {5, 4}, {6, 4},
                                    {5, 8}, {6, 8}, {7, 8}, {9, 8}, {12, 8}};

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
    digits.draw(g, field, shownText, colours.text, colours.window);
}

void CFigures::refresh() {
    const CStr now = figures();
    if (now == shownText) return;
    shownText = now;
    if (shown()) win->app->drawNow(win, this);
}

CPositionDisplay::CPositionDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "position", "POSITION", l, displayWidth, host) {
    hint = "Position as bar, beat and ticks, or as time: press to change";
}

void CPositionDisplay::setForm(int newForm) {
    form = newForm == clock ? clock : bars;
    title = form == clock ? "TIME" : "POSITION";
    redraw();
}

void CPositionDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    setForm(form == clock ? bars : clock);
    refresh();
}

CStr CPositionDisplay::figures() const {
    return form == clock ? clockText() : barText();
}

CStr CPositionDisplay::barText() const {
    CSeq* seq = songOf(qv);
    const BarPlace at = seq ? barPlace(seq, asInt(songPos(qv))) : BarPlace();
    return formatted("%03d.%d.%03d", at.bar, at.beat, at.ticks);
}

CStr CPositionDisplay::clockText() const {
    constexpr int msPerSecond = 1000, secondsPerMinute = 60;
    const double ms = songTimeMs(qv);
    const int whole = asInt(ms);
    const int seconds = whole / msPerSecond;
    return formatted("%02d:%02d.%03d", seconds / secondsPerMinute, seconds % secondsPerMinute,
                     whole % msPerSecond);
}

CSignatureDisplay::CSignatureDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "signature", "SIGNATURE", l, displayWidth, host) {
    hint = "Time signature of the song: press to change";
}

CStr CSignatureDisplay::figures() const {
    int num = 4, den = 4;
    if (CSeq* seq = songOf(qv)) seq->getTimeSig(num, den);
    return formatted("%d/%d", num, den);
}

void CSignatureDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
    if (!(btn & modLeft) || !songOf(qv)) return;
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    for (const Signature& s : signatures) {
        CMenuItem* item =
            popup->add(formatted("%d/%d", s.num, s.den),
                       new _COnChange<CSignatureDisplay>(this, &CSignatureDisplay::chosen));
        item->tag = int(&s - signatures);
        item->checked = item->text == figures();
    }
    const CPoint corner = win->getPos(true), at = win->controlPos(this);
    popup->popup(corner.x + at.x, corner.y + at.y + height);
}

void CSignatureDisplay::chosen(CObject* sender) {
    CSeq* seq = songOf(qv);
    if (!seq) return;
    const Signature& s = signatures[static_cast<CMenuItem*>(sender)->tag];
    seq->options.bytes[SongOptions::timeSigNum] = s.num;
    seq->options.bytes[SongOptions::timeSigDen] = s.den;
    qv->setModified();
    seq->update(updateTracks);
    refresh();
}

CTempoDisplay::CTempoDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "tempo", "TEMPO", l, displayWidth, host) {
    hint = "Tempo: drag or turn the wheel, finely with Shift";
}

CStr CTempoDisplay::figures() const {
    return formatted("%.1f", double(qv->tempo));
}

void CTempoDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
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
