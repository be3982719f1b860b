#include "shell/Toolbar.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/controls/CButton.h"
#include "shell/CActivityLight.h"
#include "shell/CMainWin.h"
#include "shell/CMonitorVolume.h"
#include "shell/Displays.h"
#include "ui/CMeter.h"
#include "ui/CSpectrum.h"
#include "ui/ProgramItems.h"
#include "ui/ThemePictures.h"

namespace {

constexpr int gap = 4;
constexpr int margin = 8;
constexpr int buttonWidth = 36;
constexpr int buttonTop = 12;
constexpr int buttonHigh = 32;
constexpr int masterWidth = 160, leastMaster = 64;
constexpr int spectrumTop = 4, spectrumHeight = 48;
constexpr int meterTop = 23, meterHeight = 11;
constexpr int volumeTop = 38, volumeHeight = 12;

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

} // namespace

Toolbar::Toolbar(CMainWin* owner, CQV* host, int w)
    : CGroup(owner, "transport", 0, 0, w, barHeight), window(owner), qv(host) {
    setAlign(alignWidth, 0, 0);
    arrowsWalk = true;
    int x = margin;
    addRecent(x);
    addButton(x, "render", Glyph::render, "Export Project (wav, aif, mp3)");
    x += gap;
    addButton(x, "rewind", Glyph::rewind, "To the start of the song");
    addButton(x, "stop", Glyph::stop, "Stop; once more silences everything");
    addButton(x, "play", Glyph::play, "Play and stop, also with Space");
    addButton(x, "record", Glyph::record, "Record on the selected tracks");
    addButton(x, "loop", Glyph::loop, "Repeat between the locators");
    x += gap;
    addButton(x, "metronome", Glyph::click, "Metronome on/off");
    addDisplays(x + gap);
    addMaster();
    readSettings();
    look = window->notices().on({.host = HostNotice::graph}, [this] { wearSkins(); });
}

void Toolbar::addRecent(int& x) {
    recentButton = new CButton(window, "recent", "", x, buttonTop, buttonWidth, buttonHigh);
    addCommand(recentButton, Glyph::recent, "Recent projects", nullptr);
    recentButton->onChange = new _COnChange<Toolbar>(this, &Toolbar::recentClicked);
    x += buttonWidth + gap;
}

void Toolbar::addButton(int& x, const char* name, Glyph glyph, const char* text) {
    auto* button = new CButton(window, name, "", x, buttonTop, buttonWidth, buttonHigh);
    addCommand(button, glyph, text, window->getAction(name));
    button->onChange = new _COnChange<CMainWin>(window, &CMainWin::actionClicked);
    x += buttonWidth + gap;
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

void Toolbar::paintGlyph(CObject* sender, CGraphic* g, CRect rect) {
    for (const Command& c : commands) {
        if (c.button != sender) continue;
        const int field = fieldOf(c.glyph);
        const bool on = c.button->lit || c.button->isPushed();
        if (field < 0 || !drawTransport(g, TransportField(field), rect, on))
            glyphs.draw(g, c.glyph, rect, c.button->faceColour(), c.button->fillColour());
    }
}

void Toolbar::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    drawGuiItem(g, clientRect(), &clMainbar);
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    g->drawText(colours.dimText, "MASTER", asRect(master->left, 6, master->left + 80, 21),
                textLeft);
    CGroup::paint(g, rect);
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
