// What the main window makes of the engine's notifications, every 40 ms.
#include "shell/CMainWin.h"

#include "arrange/SongView.h"
#include "base/CIniFile.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "setup/CSetupWin.h"
#include "shell/MainMenu.h"
#include "shell/ProjectFlows.h"
#include "shell/Rooms.h"
#include "shell/StatusLine.h"
#include "shell/Toolbar.h"
#include "ui/DeviceSettings.h"
#include "ui/Song.h"

#include <cstdio>

namespace {

constexpr const char* silentDevice = "Silent clock"; ///< of the driver, for machines without sound

}

void CMainWin::idle() {
    if (!song || flows->loading()) return;
    serveUpdates();
    serveSong();
    setCaptionText();
    bar->refresh();
    song->refresh();
    mainMenu->refresh();
    showDevice();
}

void CMainWin::serveUpdates() {
    // In this order. Bits that are served by no view yet are only cleared.
    static constexpr struct {
        unsigned bit;
        void (CMainWin::*serve)();
    } services[] = {
        {1, &CMainWin::graphChanged},
        {0x400000, nullptr},
        {0x10000, nullptr},
        {128, nullptr},
        {0x200, nullptr},
        {4, &CMainWin::peaksChanged},
        {0x2000, &CMainWin::flatsChanged},
        {8, &CMainWin::devicesChanged},
        {0x8000, &CMainWin::updateDocker},
        {0x100, nullptr},
        {0x400, &CMainWin::redraw},
    };
    for (const auto& s : services)
        if ((qv->updateFlags.fetchAnd(~s.bit) & s.bit) && s.serve) (this->*s.serve)();
}

void CMainWin::graphChanged() {
    constexpr unsigned editorBits = 0x41000;
    song->songChanged();
    resized();
    updateEditors(editorBits);
}

void CMainWin::peaksChanged() {
    song->songChanged();
    updateEditors(updateParts);
}

void CMainWin::devicesChanged() {
    shownDevice = nothingTold;
    if (rooms->setup && rooms->setup->visible) rooms->setup->tabChanged();
}

void CMainWin::flatsChanged() {
    song->songChanged();
    updateEditors(updateTracks | updateParts);
}

void CMainWin::serveSong() {
    constexpr unsigned bits = updateTracks | updateParts;
    CSeq* seq = songOf(qv);
    if (seq && (seq->updateFlags.fetchAnd(~bits) & bits)) song->songChanged();
}

void CMainWin::showDevice() {
    CAAM* bridge = qv->aam;
    DeviceState now;
    if (bridge && bridge->opened) now = {bridge->device, bridge->frames, bridge->rate};
    if (now == shownDevice) return;
    shownDevice = now;
    status->setDevice(deviceText(), !bridge || !bridge->opened ||
                                        bridge->audioName(bridge->device) == silentDevice);
}

CStr CMainWin::deviceText() const {
    if (!qv->aam || !qv->aam->opened) {
        CIniFile ini(inifile);
        const CStr missing = qv->aam ? missingDevice(ini, qv->aam) : CStr();
        return missing.empty() ? CStr("No audio device") : missing + " is not there";
    }
    const CStr name = qv->aam->audioName(qv->aam->device);
    char text[160];
    std::snprintf(text, sizeof(text), "%s%s  %g Hz  %d frames", name.asChar(),
                  name == silentDevice ? ": nothing can be heard" : "", double(qv->aam->rate),
                  qv->aam->frames);
    return text;
}
