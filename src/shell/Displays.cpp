#include "shell/Displays.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/controls/CPopup.h"
#include "sequencer/Bars.h"
#include "sequencer/CSeq.h"
#include "sequencer/SongValues.h"
#include "ui/Song.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

constexpr int fieldTop = 4;
constexpr int fieldHeight = 48;
constexpr int titleHeight = 16;
constexpr int margin = 8;
constexpr double fineStep = 0.1;
constexpr int typedRoom = 5; ///< figures that the field of the tempo takes

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
    hint = "Time signature at the position: press to change";
}

CStr CSignatureDisplay::figures() const {
    CSeq* seq = songOf(qv);
    if (!seq) return "4/4";
    const StoredValue::Numbers now = signatureHereOf(seq).get();
    return formatted("%d/%d", asInt(now[0]), asInt(now[1]));
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
    qv->values->set(signatureHereOf(seq), {double(s.num), double(s.den)});
    refresh();
}

CTempoDisplay::CTempoDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "tempo", "TEMPO", l, displayWidth, host) {
    hint = "Tempo: drag or turn the wheel, finely with Shift, or double click and type";
    tabStop = true;
}

StoredValue CTempoDisplay::value() const {
    CSeq* seq = songOf(qv);
    return seq ? tempoHereOf(seq) : tempoOf(qv);
}

CStr CTempoDisplay::figures() const {
    if (!typing) return formatted("%.1f", value().get()[0]);
    return typed.length() < typedRoom ? typed + "-" : typed;
}

void CTempoDisplay::paint(CGraphic* g, CRect rect) {
    CFigures::paint(g, rect);
    if (hasKeyFocus()) g->frameRect(win->app->gui->palette.accent, clientRect());
}

void CTempoDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
    if (btn & modRight) {
        if (qv->values->dragging()) qv->values->cancel();
    } else if (btn & modDouble) {
        win->setKeyCtrl(this);
        typeKey(0);
    } else if (btn & modLeft) {
        dragFrom = y;
        dragged = value();
        dragTempo = dragged.get()[0];
        qv->values->begin();
    }
}

void CTempoDisplay::mouseMove(int, int y, int btn) {
    constexpr double pixelsPerBeat = 2.0;
    if (!(btn & modLeft) || !isPushed() || typing || !qv->values->dragging()) return;
    const double unit = btn & modShift ? fineStep : 1.0;
    qv->values->set(dragged, dragTempo + (dragFrom - y) / pixelsPerBeat * unit);
}

void CTempoDisplay::mouseUp(int x, int y, int btn) {
    CFigures::mouseUp(x, y, btn);
    if (qv->values->dragging()) qv->values->end();
}

bool CTempoDisplay::mouseWheel(int, int, int btn, int dy, int) {
    if (dy) step(dy > 0 ? 1 : -1, btn);
    return true;
}

void CTempoDisplay::step(int by, int mods) {
    if (qv->values->dragging()) return;
    qv->values->nudge(value(), value().get()[0] + by * (mods & modShift ? fineStep : 1.0));
}

bool CTempoDisplay::keyDown(int key, int mods) {
    if (CFigures::keyDown(key, mods)) return true;
    if (mods & (modControl | modAlt)) return false;
    if (typing && (key == keyReturn || key == keyEscape)) {
        endTyping(key == keyReturn);
        return true;
    }
    if (!typing && (key == ::keyUp || key == ::keyDown)) {
        step(key == ::keyUp ? 1 : -1, mods);
        return true;
    }
    const bool figure = (key >= '0' && key <= '9') || key == '.' || key == ',';
    return (figure || (typing && key == keyBackspace)) && typeKey(key);
}

/// A figure, a point, or Backspace; 0 only begins.
bool CTempoDisplay::typeKey(int key) {

    if (!typing) typed = "";
    typing = true;
    type = ctrlEdit; // the keys of the program are text now
    if (key == keyBackspace)
        typed = typed.sub(0, typed.length() - 1);
    else if (key && typed.length() < typedRoom)
        typed += CStr(char(key == ',' ? '.' : key));
    refresh();
    return true;
}

void CTempoDisplay::endTyping(bool take) {
    if (!typing) return;
    typing = false;
    type = 0;
    double bpm = 0.0;
    std::from_chars(typed.asChar(), typed.asChar() + typed.length(), bpm);
    if (take && bpm > 0.0) qv->values->set(value(), bpm);
    refresh();
}

void CTempoDisplay::setFocus(bool on) {
    CFigures::setFocus(on);
    if (!on) endTyping(true);
}
