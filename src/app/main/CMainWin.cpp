#include "app/main/CMainWin.h"

#include "app/main/Displays.h"
#include "app/main/SongView.h"
#include "app/main/StatusLine.h"
#include "app/main/Toolbar.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "sequencer/CSeq.h"

#include <cctype>
#include <cstdio>

namespace {

constexpr const char* windowTitle = "Sondrava2.0 - alpha";
constexpr int mainStyle =
    winManaged | winCaption | winSizable | winMinButton | winMaxButton | winMain;
constexpr int smallestWidth = 720, smallestHeight = 320;

/// Keys of the transport, beside those of `handleKeyDown`.
struct TransportKey {
    int key;
    void (Toolbar::*command)();
};
constexpr TransportKey transportKeys[] = {
    {keyReturn, &Toolbar::play}, {'0', &Toolbar::stop},        {'3', &Toolbar::rewind},
    {'L', &Toolbar::toggleLoop}, {'C', &Toolbar::toggleClick},
};

int upper(int key) {
    return key >= 0 && key <= 255 ? std::toupper(key) : key;
}

} // namespace

CMainWin::CMainWin(CApp* application, CQV* host)
    : CWin(application, nullptr, windowTitle, host->editorStruct.left, host->editorStruct.top,
           host->editorStruct.width, host->editorStruct.height, mainStyle),
      qv(host) {
    minWidth = smallestWidth;
    minHeight = smallestHeight;
    wire(app->onKey, static_cast<COnKey*>(new _COnKey<CMainWin>(this, &CMainWin::handleKeyDown)));
    wire(app->onHint, static_cast<COnChange*>(new _COnChange<CMainWin>(this, &CMainWin::showHint)));
}

void CMainWin::init() {
    const int w = clientGroup->width, h = clientGroup->height;
    bar = new Toolbar(this, qv, w);
    addControl(bar);
    status = new StatusLine(this, h - StatusLine::lineHeight, w);
    addControl(status);
    const int below = Toolbar::barHeight;
    song = new SongView(this, qv, below, w, h - below - StatusLine::lineHeight);
    song->setAlign(alignWidth | alignHeight, 0, StatusLine::lineHeight);
    addControl(song);
    idle();
    redraw();
}

void CMainWin::onTimer() {
    qv->idle();
}

void CMainWin::idle() {
    if (!song) return;
    constexpr unsigned songBits = 0x10003;
    if (qv->updateFlags.fetchAnd(~songBits) & songBits) song->songChanged();
    bar->refresh();
    song->refresh();
    showDevice();
}

void CMainWin::showDevice() {
    const CAAM* bridge = qv->aam;
    DeviceState now;
    if (bridge && bridge->opened) now = {bridge->device, bridge->frames, bridge->rate};
    if (now == shownDevice) return;
    shownDevice = now;
    status->setDevice(deviceText());
}

CStr CMainWin::deviceText() const {
    if (!qv->aam || !qv->aam->opened) return "No audio device";
    char text[160];
    std::snprintf(text, sizeof(text), "%s  %g Hz  %d frames",
                  qv->aam->audioName(qv->aam->device).asChar(), double(qv->aam->rate),
                  qv->aam->frames);
    return text;
}

void CMainWin::setStatus(const CStr& text) {
    if (status) status->setText(text);
}

void CMainWin::showHint(CObject* sender) {
    const auto* ctrl = static_cast<CCtrl*>(sender);
    setStatus(ctrl ? ctrl->hint : CStr());
}

bool CMainWin::handleKeyDown(CObject*, int& key, int mods) {
    const bool typing = keyCtrl && keyCtrl->type == ctrlEdit;
    if (mods != 0 || !bar || typing || app->modalWin) return false;
    if (key == ' ')
        bar->play();
    else if (key == keyHome)
        bar->rewind();
    else
        return false;
    return true;
}

bool CMainWin::keyDown(int key, int mods) {
    if (CWin::keyDown(key, mods)) return true;
    if (mods != 0 || !bar) return false;
    for (const TransportKey& entry : transportKeys) {
        if (entry.key != upper(key)) continue;
        (bar->*entry.command)();
        return true;
    }
    return false;
}

void CMainWin::hide() {
    if (visible) writeSettings();
    CWin::hide();
}

void CMainWin::writeSettings() {
    if (!qv->settingsEnabled) return;
    if (CSeq* seq = songOf(qv)) seq->writeSettings();
    const bool large = hasStyle(winMaximized);
    const CPoint place = large ? asPoint(restoreRect.left, restoreRect.top) : getPos(true);
    const CPoint extent = large ? asPoint(restoreRect.right, restoreRect.bottom) : getSize();
    CIniFile ini(inifile);
    ini.writeInteger("editor", "maximized", large);
    ini.writeInteger("editor", "left", place.x);
    ini.writeInteger("editor", "top", place.y);
    ini.writeInteger("editor", "width", extent.x);
    ini.writeInteger("editor", "height", extent.y);
}
