#include "shell/Toolbar.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Shapes.h"
#include "gui/controls/CButton.h"
#include "shell/CActivityLight.h"
#include "shell/CMainWin.h"
#include "shell/CMonitorVolume.h"
#include "shell/Displays.h"
#include "ui/CMeter.h"
#include "ui/CSpectrum.h"
#include "ui/LevelText.h"
#include "ui/ProgramItems.h"
#include "ui/ThemePictures.h"

#include <algorithm>
#include <numbers>

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int buttonWidth = 36, playWidth = 48, switchWidth = 30, buttonGap = 1;
constexpr int buttonTop = 10, buttonHigh = 36;
constexpr double stripRadius = 6.0;
constexpr int masterWidth = 208, leastMaster = 64;
constexpr int spectrumTop = 4, spectrumHeight = 48;
constexpr int titleTop = 3, titleHeight = 13, peakWidth = 64;
constexpr int meterTop = 17, meterHeight = 11;
constexpr int scaleTop = 28, scaleHeight = 11, scaleReach = 12;
constexpr float scaleDb[] = {-48.0f, -36.0f, -24.0f, -12.0f, -6.0f, 0.0f};
constexpr int volumeTop = 40, volumeHeight = 13;

/// The place of a symbol in a theme's picture of the transport; -1 for what is not in it.
int fieldOf(Glyph glyph) {
    switch (glyph) {
    case Glyph::rewind:
        return fieldRewind;
    case Glyph::stop:
        return fieldStop;
    case Glyph::play:
        return fieldPlay;
    case Glyph::record:
        return fieldRecord;
    case Glyph::loop:
        return fieldLoop;
    default:
        return -1;
    }
}

CStr peakText(const COutputChannel* out) {
    if (!out) return "";
    constexpr float audible = 1e-5f;
    const float peak = std::max<float>(out->holdL, out->holdR);
    return peak > audible ? decibelText(peak) : CStr();
}

} // namespace

Toolbar::Toolbar(CMainWin* owner, CQV* host, int w)
    : CGroup(owner, "transport", 0, 0, w, barHeight), window(owner), qv(host) {
    setAlign(alignWidth, 0, 0);
    arrowsWalk = true;
    int x = margin;
    addRecent(x);
    addButton(x, buttonWidth, "render", Glyph::render, "Export Project (wav, aif, mp3)");
    endStrip(x);
    addButton(x, buttonWidth, "rewind", Glyph::rewind, "To the start of the song");
    addButton(x, buttonWidth, "stop", Glyph::stop, "Stop; once more silences everything");
    addButton(x, playWidth, "play", Glyph::play, "Play and stop, also with Space");
    addButton(x, buttonWidth, "record", Glyph::record, "Record on the selected tracks");
    addButton(x, switchWidth, "loop", Glyph::loop, "Repeat between the locators");
    addButton(x, switchWidth, "metronome", Glyph::click, "Metronome on/off");
    endStrip(x);
    addDisplays(x);
    addMaster();
    readSettings();
    look = window->notices().on({.host = HostNotice::graph}, [this] { wearSkins(); });
}

void Toolbar::addRecent(int& x) {
    recentButton = new CButton(window, "recent", "", x, buttonTop, buttonWidth, buttonHigh);
    addCommand(recentButton, Glyph::recent, "Recent projects", nullptr);
    recentButton->onChange = new _COnChange<Toolbar>(this, &Toolbar::recentClicked);
    x += buttonWidth + buttonGap;
}

void Toolbar::addButton(int& x, int wide, const char* name, Glyph glyph, const char* text) {
    auto* button = new CButton(window, name, "", x, buttonTop, wide, buttonHigh);
    addCommand(button, glyph, text, window->getAction(name));
    button->onChange = new _COnChange(window, &CMainWin::actionClicked);
    x += wide + buttonGap;
}

void Toolbar::endStrip(int& x) {
    const int from = strips.empty() ? margin : strips.back().right + margin;
    strips.push_back(asRect(from, buttonTop, x - buttonGap, buttonTop + buttonHigh));
    x = strips.back().right + margin;
}

void Toolbar::addCommand(CButton* button, Glyph glyph, const char* text, CAction* action) {
    button->hint = text;
    button->spokenName = action ? action->label : text;
    button->userPtr = action;
    button->onPaint = new _COnPaint<Toolbar>(this, &Toolbar::paintGlyph);
    button->tabStop = true;
    commands.push_back({button, glyph, action});
    wearSkin(commands.back());
    addControl(button);
}

/// The pictures of a transport are drawn on the face, not tiled over it.
void Toolbar::wearSkin(const Command& command) {
    const bool own = fieldOf(command.glyph) >= 0 && clTransporter.fill != fillImage;
    command.button->skin = own ? &clTransporter : &clToolbarControls;
    command.button->litSkin = own ? &clTransporterPushed : &clToolbarControlsPushed;
    if (command.glyph != Glyph::record) return;
    command.button->litSkin = nullptr;
    command.button->litCol = win->app->gui->palette.record;
}

void Toolbar::wearSkins() {
    for (const Command& c : commands) wearSkin(c);
    redraw();
}

void Toolbar::addDisplays(int x) {
    position = new CPositionDisplay(window, x, qv);
    x += position->width + gap;
    auto* tempo = new CTempoDisplay(window, x, qv);
    x += tempo->width + gap;
    auto* signature = new CSignatureDisplay(window, x, qv);
    displays = {position, tempo, signature};
    for (CFigures* display : displays) addControl(display);
    activity = new CActivityLight(window, x + signature->width + gap, qv);
    addControl(activity);
}

void Toolbar::addMaster() {
    const int x = width - masterWidth - margin;
    master = new CMeter(window, x, meterTop, masterWidth, meterHeight);
    master->setAlign(alignRight, margin, 0);
    master->tabStop = true;
    spectrum = new CSpectrum(window, x, spectrumTop, spectrumHeight, qv);
    spectrum->setAlign(alignRight, margin + masterWidth + 3 * gap, 0);
    addControl(spectrum);
    master->spokenName = "Output level";
    master->hint = "Level of the output; a press clears the peaks";
    addControl(master);
    volume = new CMonitorVolume(window, x, volumeTop, masterWidth, volumeHeight, qv);
    volume->setAlign(alignRight, margin, 0);
    addControl(volume);
}

void Toolbar::readSettings() {
    position->setForm(iniReadInt("options", "time", CPositionDisplay::bars));
    volume->setPercent(iniReadInt("options", "monitor-volume", CMonitorVolume::full));
}

void Toolbar::writeSettings(CIniFile& ini) const {
    ini.writeInteger("options", "time", position->getForm());
    ini.writeInteger("options", "monitor-volume", volume->getPercent());
}

void Toolbar::recentClicked(CObject*) {
    const CPoint corner = win->getPos(true), at = win->controlPos(recentButton);
    window->showRecent(corner.x + at.x, corner.y + at.y + recentButton->height);
}

/// That for recording is red, as long as it reads.
int Toolbar::signColour(const Command& c) const {
    constexpr double least = 3.0;
    const int face = c.button->faceColour(), ground = c.button->fillColour();
    const int red = win->app->gui->palette.record;
    return c.glyph == Glyph::record && contrast(red, ground) >= least ? red : face;
}

void Toolbar::paintGlyph(CObject* sender, CGraphic* g, CRect rect) {
    for (const Command& c : commands) {
        if (c.button != sender) continue;
        const int field = fieldOf(c.glyph);
        const bool on = c.button->lit || c.button->isPushed();
        if (field < 0 || !drawTransport(g, TransportField(field), rect, on))
            glyphs.draw(g, c.glyph, rect, signColour(c), c.button->fillColour());
    }
}

void Toolbar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    drawGuiItem(g, clientRect(), &clMainbar);
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    paintMaster(g);
    CGroup::paint(g, rect);
    roundStrips(g);
}

void Toolbar::paintMaster(CGraphic* g) const {
    const CPalette& colours = win->app->gui->palette;
    const int right = master->left + master->width;
    const TextScope small(g, {.size = TextSize::small});
    g->drawText(colours.dimText, "MASTER",
                asRect(master->left, titleTop, right, titleTop + titleHeight), textLeft);
    g->drawText(colours.dimText, peak,
                asRect(right - peakWidth, titleTop, right, titleTop + titleHeight), textRight);
    if (master->width < masterWidth) return;
    for (const float db : scaleDb) {
        const int x = asMin(master->left + master->placeOf(db), right - scaleReach / 2);
        g->drawText(colours.dimText, asStr(int(db)),
                    asRect(x - scaleReach, scaleTop, x + scaleReach, scaleTop + scaleHeight), 0);
    }
}

/// What the bar shows beyond the round corners of the strips. A theme may bring pictures, which
/// have their own.
void Toolbar::roundStrips(CGraphic* g) const {
    if (clMainbar.fill == fillImage || clTransporter.fill == fillImage) return;
    constexpr double r = stripRadius, quarter = std::numbers::pi / 2;
    for (const CRect& s : strips)
        for (int i = 0; i < 4; i++) {
            const bool right = i == 0 || i == 3, low = i < 2;
            const double x = right ? s.right : s.left, y = low ? s.bottom : s.top;
            CPath corner;
            corner.moveTo(x, y);
            corner.arc(x + (right ? -r : r), y + (low ? -r : r), r, i * quarter, (i + 1) * quarter);
            corner.close();
            fillPath(g, corner, clMainbar.fillCol);
            CPath rim;
            rim.arc(x + (right ? -r : r), y + (low ? -r : r), r - 0.5, i * quarter,
                    (i + 1) * quarter);
            strokePath(g, rim, 1, clToolbarControls.frameCol);
        }
}

void Toolbar::resized() {
    if (spectrum) {
        const int room = width - margin - (activity->left + activity->width + margin);
        master->width = volume->width = asMinMax(room, leastMaster, masterWidth);
    }
    CGroup::resized();
    if (!spectrum) return;
    spectrum->visible = spectrumFits();
    for (CFigures* display : displays) display->visible = fits(display);
    activity->visible = fits(activity);
}

/// On a small screen not everything has room beside the meter.
bool Toolbar::fits(const CCtrl* ctrl) const {
    return ctrl->left + ctrl->width + margin <= master->left;
}

/// Asked for, and not in the way of the displays.
bool Toolbar::spectrumFits() const {
    return window->options().spectrum.on() &&
           spectrum->left >= activity->left + activity->width + gap;
}

void Toolbar::forgetSong() {
    master->channel = nullptr;
}

bool Toolbar::followSound() {
    CComp* out = qv->getAudioOut();
    master->channel = out ? out->output() : nullptr;
    bool changed = master->refresh();
    CStr now = peakText(master->channel);
    if (now != peak) {
        peak = std::move(now);
        redraw(asRect(master->left, titleTop, master->left + master->width, meterTop));
        changed = true;
    }
    for (CFigures* display : displays) changed = display->refresh() || changed;
    return changed;
}

void Toolbar::refresh() {
    followSound();
    activity->refresh();
    volume->refresh();
    if (spectrum->visible != spectrumFits()) {
        spectrum->visible = spectrumFits();
        redraw();
    }
    spectrum->refresh();
    for (const Command& c : commands)
        if (c.action) c.button->setLit(c.action->isOn());
}

void Toolbar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Transport";
}
