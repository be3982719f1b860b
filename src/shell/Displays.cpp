#include "shell/Displays.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/song/SongValues.h"
#include "ui/Song.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <vector>

namespace {

constexpr int positionRoom = 9, numberRoom = 5; ///< figures that can be typed
constexpr double fineStep = 0.1;
constexpr int msPerSecond = 1000, secondsPerMinute = 60;
constexpr double plainTempo = 120.0, fastest = 1000.0; ///< the latter is kept within its range

struct Signature {
    unsigned char num, den;
};
constexpr int mostBeats = 64;
constexpr Signature signatures[] = {{2, 4}, {3, 4}, {4, 4}, {5, 4}, {6, 4},
                                    {5, 8}, {6, 8}, {7, 8}, {9, 8}, {12, 8}};

template <class... Args>
CStr formatted(const char* format, Args... args) {
    char text[64];
    std::snprintf(text, sizeof(text), format, args...);
    return text;
}

/// The numbers of a text, whatever stands between them.
std::vector<int> numbersOf(const CStr& text) {
    std::vector<int> numbers;
    const char *at = text.asChar(), *end = at + text.length();
    while (at < end) {
        int number = 0;
        const auto [next, error] = std::from_chars(at, end, number);
        if (error == std::errc()) numbers.push_back(number);
        at = next == at ? at + 1 : next;
    }
    return numbers;
}

/// 0 for what is none.
double numberOf(const CStr& text) {
    double number = 0.0;
    std::from_chars(text.asChar(), text.asChar() + text.length(), number);
    return number;
}

double songPos(CQV* host) {
    CSeq* seq = songOf(host);
    return seq ? seq->getPos() : double(host->pos);
}

} // namespace

double songTimeMs(CQV* host) {
    CSeq* seq = songOf(host);
    const CSeqProg* prog = seq ? seq->getProg() : nullptr;
    return prog ? double(prog->samplePos) * double(msPerSecond) / double(host->rate) : 0.0;
}

CPositionDisplay::CPositionDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "position", "POSITION", l, displayWidth, positionRoom, host) {
    hint = "Position as bar, beat and ticks, or as time: press to change";
}

bool CPositionDisplay::keyDown(int key, int mods) {
    if (CFigures::keyDown(key, mods)) return true;
    if (key != keyReturn || mods) return false;
    turnForm();
    return true;
}

void CPositionDisplay::turnForm() {
    endTyping(true);
    setForm(form == clock ? bars : clock);
    refresh();
}

/// Bar, beat and ticks, or minutes and seconds with their part; what is left out is the least.
void CPositionDisplay::accept(const CStr& text) {
    CSeq* seq = songOf(qv);
    if (form == clock) {
        const int colon = text.pos(":");
        const int minutes = colon < 0 ? 0 : strAsIntDef(text.sub(0, colon), 0);
        const double seconds = numberOf(text.sub(colon + 1, -1));
        goToMs(int64_t(minutes) * secondsPerMinute * msPerSecond + asInt64(seconds * msPerSecond));
        return;
    }
    std::vector<int> numbers = numbersOf(text);
    if (!seq || numbers.empty()) return;
    if (numbers.size() == 1) numbers.push_back(1);
    numbers.resize(3);
    qv->setPos(tickOf(seq, {numbers[0], numbers[1], numbers[2]}));
}

void CPositionDisplay::goToMs(int64_t ms) {
    CSeq* seq = songOf(qv);
    if (!seq) return;
    const int rate = asInt(double(qv->rate));
    qv->setPos(seq->framesToTicks(0, double(std::max<int64_t>(ms, 0)) * rate / msPerSecond, rate));
}

void CPositionDisplay::stepBy(int by, int) {
    CSeq* seq = songOf(qv);
    if (!seq) return;
    if (form == clock) {
        constexpr int units[] = {secondsPerMinute * msPerSecond, msPerSecond, 1};
        goToMs(asInt64(songTimeMs(qv)) + int64_t(by) * units[part]);
        return;
    }
    BarPlace at = barPlace(seq, asInt(songPos(qv)));
    int* const parts[] = {&at.bar, &at.beat, &at.ticks};
    *parts[part] += by;
    qv->setPos(tickOf(seq, at));
}

void CPositionDisplay::toEnd(bool last) {
    CSeq* seq = songOf(qv);
    qv->setPos(last && seq ? seq->renderDuration() : 0);
}

void CPositionDisplay::setForm(int newForm) {
    form = newForm == clock ? clock : bars;
    title = form == clock ? "TIME" : "POSITION";
    redraw();
}

void CPositionDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
    if (btn & modLeft) turnForm();
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
    const double ms = songTimeMs(qv);
    const int whole = asInt(ms);
    const int seconds = whole / msPerSecond;
    return formatted("%02d:%02d.%03d", seconds / secondsPerMinute, seconds % secondsPerMinute,
                     whole % msPerSecond);
}

CSignatureDisplay::CSignatureDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "signature", "SIGNATURE", l, displayWidth, numberRoom, host) {
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
    if (btn & modLeft) offer(false);
}

bool CSignatureDisplay::keyDown(int key, int mods) {
    if (CFigures::keyDown(key, mods)) return true;
    if (key != keyReturn || mods) return false;
    offer(true);
    return true;
}

void CSignatureDisplay::offer(bool fromKeys) {
    if (!songOf(qv)) return;
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
    popup->popup(corner.x + at.x, corner.y + at.y + height, fromKeys);
}

void CSignatureDisplay::set(int num, int den) {
    CSeq* seq = songOf(qv);
    const auto fits = [](int n) { return n >= 1 && n <= mostBeats; };
    if (!seq || !fits(num) || !fits(den) || !std::has_single_bit(unsigned(den))) return;
    qv->values->set(signatureHereOf(seq), {double(num), double(den)});
    refresh();
}

void CSignatureDisplay::chosen(CObject* sender) {
    const Signature& s = signatures[tagOf(sender)];
    set(s.num, s.den);
}

void CSignatureDisplay::accept(const CStr& text) {
    const std::vector<int> numbers = numbersOf(text);
    if (numbers.size() == 2) set(numbers[0], numbers[1]);
}

/// The beats by ones, their note by halves.
void CSignatureDisplay::stepBy(int by, int) {
    CSeq* seq = songOf(qv);
    if (!seq) return;
    StoredValue::Numbers now = signatureHereOf(seq).get();
    if (part == 0)
        now[0] = fLimit(now[0] + by, 1.0, double(mostBeats));
    else
        now[1] = fLimit(by > 0 ? now[1] * 2 : now[1] / 2, 1.0, double(mostBeats));
    qv->values->nudge(signatureHereOf(seq), now);
}

void CSignatureDisplay::toEnd(bool last) {
    const Signature& s = last ? std::end(signatures)[-1] : signatures[0];
    set(s.num, s.den);
}

CTempoDisplay::CTempoDisplay(CWin* owner, int l, CQV* host)
    : CFigures(owner, "tempo", "TEMPO", l, displayWidth, numberRoom, host) {
    hint = "Tempo: drag or turn the wheel, finely with Shift, or double click and type";
}

StoredValue CTempoDisplay::value() const {
    CSeq* seq = songOf(qv);
    return seq ? tempoHereOf(seq) : tempoOf(qv);
}

CStr CTempoDisplay::figures() const {
    CSeq* seq = songOf(qv);
    return formatted("%.1f", seq ? seq->tempo.here() : value().get()[0]);
}

void CTempoDisplay::mouseDown(int x, int y, int btn) {
    CFigures::mouseDown(x, y, btn);
    if (btn & modRight) {
        if (qv->values->dragging()) qv->values->cancel();
    } else if (btn & modDouble) {
        win->setKeyCtrl(this);
        typed.begin();
        refresh();
    } else if (btn & modLeft) {
        dragFrom = y;
        dragged = value();
        dragTempo = dragged.get()[0];
        qv->values->begin();
    }
}

void CTempoDisplay::mouseMove(int, int y, int btn) {
    constexpr double pixelsPerBeat = 2.0;
    if (!(btn & modLeft) || !isPushed() || typed.typing() || !qv->values->dragging()) return;
    const double unit = btn & modShift ? fineStep : 1.0;
    qv->values->set(dragged, dragTempo + (dragFrom - y) / pixelsPerBeat * unit);
}

void CTempoDisplay::mouseUp(int x, int y, int btn) {
    CFigures::mouseUp(x, y, btn);
    if (qv->values->dragging()) qv->values->end();
}

bool CTempoDisplay::mouseWheel(int, int, int btn, int dy, int) {
    if (dy) stepBy(dy > 0 ? 1 : -1, btn);
    return true;
}

/// The part behind the point, as Shift, makes it fine.
void CTempoDisplay::stepBy(int by, int mods) {
    if (qv->values->dragging()) return;
    const double unit = part > 0 || (mods & modShift) ? fineStep : 1.0;
    qv->values->nudge(value(), value().get()[0] + by * unit);
}

void CTempoDisplay::accept(const CStr& text) {
    const double bpm = numberOf(text);
    if (bpm > 0.0) qv->values->set(value(), bpm);
}

void CTempoDisplay::toEnd(bool last) {
    qv->values->set(value(), last ? fastest : 0.0);
}

void CTempoDisplay::reset() {
    qv->values->set(value(), plainTempo);
}

void CPositionDisplay::describe(Description& d, int) const {
    CFigures::describe(d, wholeCtrl);
    d.name = form == clock ? "Time" : "Position";
    d.action = "switch";
}

bool CPositionDisplay::pressPart(int) {
    turnForm();
    return true;
}

void CSignatureDisplay::describe(Description& d, int) const {
    CFigures::describe(d, wholeCtrl);
    d.role = Role::comboBox;
    d.name = "Time signature";
    d.action = "open";
}

bool CSignatureDisplay::pressPart(int) {
    offer(true);
    return true;
}

void CTempoDisplay::describe(Description& d, int) const {
    CFigures::describe(d, wholeCtrl);
    d.name = "Tempo";
    d.range = Description::Range{value().get()[0], double(minTempo), double(maxTempo), fineStep};
}

bool CTempoDisplay::enterNumber(int, double to) {
    qv->values->set(value(), to);
    refresh();
    return true;
}
