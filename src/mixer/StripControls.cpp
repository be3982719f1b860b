#include "mixer/StripControls.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/ItemStates.h"
#include "gui/Keys.h"
#include "mixer/CMixerStrip.h"
#include "mixer/StripLayout.h"
#include "mixer/StripLevels.h"
#include "mixer/ValueBar.h"
#include "ui/KnobFace.h"
#include "ui/LevelText.h"
#include "ui/ProgramItems.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int capHeight = StripLayout::capHeight, clipHeight = StripLayout::clipHeight;
constexpr int slotWidth = 4, capWidth = 18;
constexpr double hoverShare = 0.2, trackShare = 0.45;
constexpr double knobTravel = 128.0;
constexpr double peakFade = 0.4; ///< of a meter's peak above the mean, towards the ground
constexpr double scaleDbs[] = {0, -6, -12, -18, -24, -36, -48};
constexpr int figureRoom = 10; ///< that a figure of the scale needs of its height

const CPalette& paletteOf(const CCtrl* ctrl) {
    return ctrl->win->app->gui->palette;
}

double faderOfDb(double db) {
    return std::pow(10.0, db / 40.0);
}

void paintFocusOn(CGraphic* g, const CCtrl* ctrl) {
    if (ctrl->hasKeyFocus()) g->frameRect(paletteOf(ctrl).accent, ctrl->clientRect());
}

} // namespace

double placeOfDb(double db) {
    return std::clamp(std::pow(10.0, db / 40.0), 0.0, 1.0);
}

double placeOfLevel(float amplitude) {
    return amplitude > 0.0f ? std::min(1.0, std::sqrt(double(amplitude))) : 0.0;
}

StripValue::StripValue(CMixerStrip& strip, const char* name, Of of)
    : CStoredCtrl(strip.win, name, strip.door(), 0, 0, 1, 1), owner(strip) {
    onTold = [this](const CStr& now) { owner.tell(spokenName + ": " + now); };
    value = [this, of]() -> std::optional<StoredValue> { return of(owner.strip()); };
    values = [this, of] {
        std::vector<StoredValue> all;
        for (const MixerStrip& s : owner.together()) all.push_back(of(s));
        return all;
    };
}

// The fader.

CVolFader::CVolFader(CMixerStrip& strip)
    : StripValue(strip, "volume", [](const MixerStrip& s) { return stripFader(s); }) {
    proportional = true;
    typedValue = faderOfDb;
    text = [this] { return faderText(owner.strip()); };
    hint = "Volume: drag, with Shift finely, or type decibels; a double click gives 0 dB";
    onTold = [this](const CStr& now) {
        owner.clearPeaks();
        owner.tell(spokenName + ": " + now);
    };
}

double CVolFader::along(const DragPoint& point) const {
    return point.anchor.y - point.at.y;
}

double CVolFader::travel() const {
    return height - capHeight;
}

void CVolFader::paint(CGraphic* g, CRect) {
    const CPalette& colours = paletteOf(this);
    const int middle = width / 2, first = capHeight / 2, bottom = height - capHeight / 2;
    const int at = bottom - asRound(shareOf(shownValue()) * travel());
    g->fillRound(clTrackLed.fillCol,
                 asRect(middle - slotWidth / 2, first, middle + slotWidth / 2, bottom));
    g->fillRect(fadeCol(clTrackLed.fillCol, colours.accent, trackShare),
                asRect(middle - slotWidth / 2, at, middle + slotWidth / 2, bottom));
    const CRect cap = asRect(middle - capWidth / 2, at - capHeight / 2, middle + capWidth / 2,
                             at + capHeight / 2);
    const int fill = clMixVolKnob.fillCol;
    drawGuiItemIn(g, cap, clMixVolKnob, held() ? fadeCol(fill, colours.accent, hoverShare) : fill);
    for (const int line : {-6, -3, 3, 6})
        g->fillLine(fadeCol(fill, colours.text, hoverShare),
                    asRect(cap.left + 4, at + line, cap.right - 4, at + line + 1));
    g->fillRect(held() ? colours.accent : colours.text,
                asRect(cap.left + 2, at - 1, cap.right - 2, at + 1));
    if (hasKeyFocus()) drawGuiItemEdge(g, cap, clMixVolKnob, colours.accent);
    if (typing()) paintTyping(g);
}

// The pan.

CPanValue::CPanValue(CMixerStrip& strip)
    : StripValue(strip, "pan", [](const MixerStrip& s) { return stripPan(s); }) {
    constexpr double steps = 64.0;
    least = -1.0;
    usual = 0.0;
    origin = 0.0;
    typedValue = [](double number) { return number / steps; };
    text = [this] { return panText(owner.strip()); };
    hint = "Pan: drag, with Shift finely, or type -64 to 64; a double click gives the middle";
}

double CPanValue::along(const DragPoint& point) const {
    return (point.at.x - point.anchor.x) - (point.at.y - point.anchor.y);
}

double CPanValue::travel() const {
    return knobTravel;
}

void CPanValue::paint(CGraphic* g, CRect) {
    const CPalette& colours = paletteOf(this);
    const int side = height - 2;
    const bool wide = width > 2 * side;
    const double x = wide ? 4 + side / 2.0 : width / 2.0, y = height / 2.0 + 1.5;
    KnobFace{x, y, side / 2.0 - 2, shareOf(shownValue()), shareOf(origin), held()}.paint(g,
                                                                                         colours);
    if (wide) {
        const TextScope small(g, {.size = TextSize::small});
        g->drawText(shownValue() == 0.0 ? colours.dimText : colours.text, told(),
                    asRect(side + 8, 0, width, height), textLeft);
    }
    paintFocusOn(g, this);
    if (typing()) paintTyping(g);
}

// The figures.

CDBLabel::CDBLabel(CMixerStrip& strip)
    : StripValue(strip, "gain", [](const MixerStrip& s) { return stripFader(s); }) {
    proportional = true;
    typedValue = faderOfDb;
    text = [this] { return faderText(owner.strip()); };
    hint = "Volume in decibels: type it, or drag up and down";
}

double CDBLabel::along(const DragPoint& point) const {
    return point.anchor.y - point.at.y;
}

double CDBLabel::travel() const {
    return owner.faderTravel();
}

void CDBLabel::paint(CGraphic* g, CRect) {
    const CPalette& colours = paletteOf(this);
    const TextScope small(g, {.size = TextSize::small});
    if (typing())
        paintTyping(g);
    else
        g->drawText(held() ? colours.text : colours.dimText, fittedFigure(told(), width),
                    clientRect(), textLeft);
    paintFocusOn(g, this);
}

PeakLabel::PeakLabel(CMixerStrip& strip) : CCtrl(strip.win, "peak", 0, 0, 1, 1), owner(strip) {
    tabStop = true;
    hint = "Highest level so far; a press clears it";
}

bool PeakLabel::refresh() {
    const COutputChannel* ch = owner.strip().channel;
    const float level = std::max(float(ch->holdL), float(ch->holdR));
    const CStr now = level > 0.0f ? decibelText(level) : CStr();
    const bool isOver = level >= 1.0f;
    if (now == shown && isOver == over) return false;
    CQV* host = owner.strip().comp->host;
    if (isOver && !over) clippedAt = host->playing ? double(host->pos) : -1.0;
    hint = "Highest level so far; a press clears it";
    if (isOver && clippedAt >= 0.0)
        hint += ", with Control it goes to where it has first been over 0 dB";
    shown = now;
    over = isOver;
    redraw();
    return true;
}

void PeakLabel::paint(CGraphic* g, CRect) {
    const CPalette& colours = paletteOf(this);
    const TextScope small(g, {.size = TextSize::small});
    if (over) g->fillRound(colours.meter[2], clientRect());
    constexpr int unitless = 1; // the unit stands beside it
    g->drawText(over ? textOn(colours.meter[2]) : colours.dimText, fittedFigure(shown, unitless),
                sizeRect(clientRect(), 0, 0, -2, 0), textRight);
    paintFocusOn(g, this);
}

void PeakLabel::clear() {
    owner.clearPeaks();
}

void PeakLabel::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (!(btn & modLeft)) return;
    if (btn & modControl)
        goToClip();
    else
        clear();
}

void PeakLabel::goToClip() {
    if (over && clippedAt >= 0.0) owner.strip().comp->host->setPos(clippedAt);
}

bool PeakLabel::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (key == keyReturn && mods == modControl) {
        goToClip();
        return true;
    }
    if (mods || (key != keyReturn && key != keyDelete)) return false;
    clear();
    return true;
}

void PeakLabel::describe(Description& d, int) const {
    d.role = Role::button;
    d.action = "clear";
    d.text = shown.empty() ? "silent" : shown.asChar();
}

bool PeakLabel::pressPart(int) {
    clear();
    return true;
}

// The meter.

CAudioLed::CAudioLed(CMixerStrip& strip) : CCtrl(strip.win, "meter", 0, 0, 1, 1), owner(strip) {
    tabStop = true;
    hint = "Level; a press clears the peak and the light";
}

int CAudioLed::scaleLength() const {
    return height - clipHeight;
}

CRect CAudioLed::column(int index) const {
    constexpr int wide = 6, gap = 1;
    const int x = index * (wide + gap);
    return asRect(x, 0, x + wide, height);
}

CAudioLed::Level CAudioLed::levelOf(float peak, float power, float hold) const {
    const auto rows = [this](float level) {
        return asRound(placeOfLevel(level) * (scaleLength() - 1));
    };
    return {rows(peak), std::min(rows(std::sqrt(power)), rows(peak)), rows(hold), hold >= 1.0f};
}

void CAudioLed::redrawBetween(int index, const Level& a, const Level& b) {
    const CRect all = column(index);
    const auto rows = [&](int from, int to) {
        redraw(asRect(all.left, height - std::max(from, to) - 2, all.right,
                      height - std::min(from, to)));
    };
    if (a.bar != b.bar) rows(a.bar, b.bar);
    if (a.body != b.body) rows(a.body, b.body);
    if (a.hold != b.hold) {
        rows(a.hold, a.hold);
        rows(b.hold, b.hold);
    }
    if (a.clipped != b.clipped) redraw(asRect(all.left, 0, all.right, clipHeight + 2));
}

bool CAudioLed::refresh() {
    COutputChannel* ch = owner.strip().channel;
    if (!ch->powerWanted) ch->powerWanted = 1;
    const Level now[] = {levelOf(ch->peakL, ch->powerL, ch->holdL),
                         levelOf(ch->peakR, ch->powerR, ch->holdR)};
    bool changed = false;
    for (int i = 0; i < 2; i++) {
        if (now[i] == shown[i]) continue;
        redrawBetween(i, shown[i], now[i]);
        shown[i] = now[i];
        changed = true;
    }
    return changed;
}

void CAudioLed::paintColumn(CGraphic* g, CRect at, const Level& level) const {
    const CPalette& colours = paletteOf(this);
    const int ground = clTrackLed.fillCol;
    const auto put = [g](int colour, const CRect& area) { // the few rows that have changed
        if (g->wants(area)) g->fillRect(colour, area);
    };
    put(level.clipped ? colours.meter[2] : ground, asRect(at.left, 0, at.right, clipHeight - 1));
    put(ground, asRect(at.left, clipHeight, at.right, height - level.bar));
    const int length = scaleLength();
    const int high = asRound(placeOfDb(-9.0) * length), over = asRound(placeOfDb(-0.5) * length);
    const int edges[] = {0, high, over, length};
    const auto fill = [&](int from, int to, double faded) {
        for (int i = 0; i < 3; i++) {
            const int low = std::max(from, edges[i]), upper = std::min(to, edges[i + 1]);
            if (upper > low)
                put(fadeCol(colours.meter[i], ground, faded),
                    asRect(at.left, height - upper, at.right, height - low));
        }
    };
    fill(0, level.body, 0.0);
    fill(level.body, level.bar, peakFade);
    if (level.hold <= 0) return;
    const int mark = level.hold > over ? colours.meter[2] : colours.text;
    const CRect line = asRect(at.left, height - level.hold - 1, at.right, height - level.hold);
    if (g->wants(line)) g->fillLine(mark, line);
}

void CAudioLed::paint(CGraphic* g, CRect) {
    for (int i = 0; i < 2; i++)
        if (g->wants(column(i))) paintColumn(g, column(i), shown[i]);
    paintFocusOn(g, this);
}

bool CAudioLed::keyDown(int key, int mods) {
    if (CCtrl::keyDown(key, mods)) return true;
    if (mods || (key != keyReturn && key != keyDelete)) return false;
    owner.clearPeaks();
    return true;
}

void CAudioLed::mouseDown(int, int, int btn) {
    if (btn & modLeft) owner.clearPeaks();
}

void CAudioLed::describe(Description& d, int) const {
    d.role = Role::meter;
}

// The scale.

DbScale::DbScale(CMixerStrip& strip) : CCtrl(strip.win, "scale", 0, 0, 1, 1) {
    enabled = false;
}

void DbScale::paint(CGraphic* g, CRect) {
    const CPalette& colours = paletteOf(this);
    const TextScope small(g, {.size = TextSize::small});
    constexpr int tick = 3;
    const int first = capHeight / 2, length = height - capHeight;
    int last = -figureRoom;
    for (const double db : scaleDbs) {
        const int y = first + asRound((1.0 - placeOfDb(db)) * length);
        const CRect box = asRect(tick, y - 6, width - tick, y + 6);
        for (const int x : {0, width - tick})
            g->fillLine(colours.frame, asRect(x, y, x + tick, y + 1));
        if (y - last < figureRoom) continue;
        last = y;
        g->drawText(colours.dimText, asStr(asInt(-db)), box, 0);
    }
}

void DbScale::describe(Description& d, int) const {
    d.role = Role::none;
}
