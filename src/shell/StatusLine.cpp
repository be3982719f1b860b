#include "shell/StatusLine.h"

#include "base/CIniFile.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/controls/CButton.h"
#include "shell/LoadDisplay.h"
#include "ui/DeviceSettings.h"

#include <cstdio>

namespace {

constexpr int margin = 8;
constexpr int leastMessage = 280;                    ///< pixels that stay for a message
constexpr const char* silentDevice = "Silent clock"; ///< of the driver, for machines without sound

} // namespace

StatusLine::StatusLine(CWin* owner, CQV* host, int t, int w, COnChange* devicePressed)
    : CGroup(owner, "status", 0, t, w, lineHeight), qv(host), load(new LoadDisplay(owner, host)),
      deviceButton(new CButton(owner, "device", "", 0, 1, 1, lineHeight - 1)) {
    setAlign(alignWidth | alignBottom, 0, 0);
    deviceButton->hint = "What plays: a press opens Setup";
    deviceButton->tabStop = true;
    deviceButton->onChange = devicePressed;
    deviceButton->onPaint = new _COnPaint<StatusLine>(this, &StatusLine::paintDevice);
    addControl(load);
    addControl(deviceButton);
}

void StatusLine::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillRect(colours.frame, asRect(0, 0, width, 1));
    const CRect room = asRect(margin, 1, load->left, height);
    g->drawText(colours.dimText, textFace({})->shortened(text, room.width()), room, textLeft);
    CGroup::paint(g, rect);
}

void StatusLine::paintDevice(CObject*, CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    const bool touched = deviceButton->isHovered() || deviceButton->hasKeyFocus();
    g->fillRect(colours.panel, rect);
    g->drawText(warning   ? colours.meter[1]
                : touched ? colours.text
                          : colours.dimText,
                device, rect, 0);
    if (touched) g->frameRect(deviceButton->hasKeyFocus() ? colours.accent : colours.frame, rect);
}

void StatusLine::setText(const CStr& newText) {
    if (newText == text) return;
    text = newText;
    redraw();
}

void StatusLine::devicesChanged() {
    shown = nothingTold;
}

void StatusLine::refresh() {
    followDevice();
    load->refresh();
}

void StatusLine::followDevice() {
    CAAM* bridge = qv->aam;
    DeviceState now;
    if (bridge && bridge->opened) now = {bridge->device, bridge->frames, bridge->rate};
    if (now == shown) return;
    shown = now;
    warning = !bridge || !bridge->opened || bridge->audioName(bridge->device) == silentDevice;
    device = deviceText();
    deviceButton->spokenName = "Device: " + device;
    placeButtons();
    redraw();
}

/// Without a device nothing is worked out by the clock, so there is no load to tell.
void StatusLine::placeButtons() {
    const int wide = textFace({})->textWidth(device) + 2 * margin;
    deviceButton->setBounds(width - wide, 1, wide, lineHeight - 1);
    const int beside = LoadDisplay::displayWidth(), from = deviceButton->left - beside;
    load->visible = qv->aam && qv->aam->opened && from >= leastMessage;
    load->setBounds(load->visible ? from : deviceButton->left, 1, beside, lineHeight - 1);
}

void StatusLine::resized() {
    CGroup::resized();
    placeButtons();
}

CStr StatusLine::deviceText() const {
    if (!qv->aam || !qv->aam->opened) {
        CIniFile ini(inifile);
        const CStr missing = qv->aam ? missingDevice(ini, qv->aam) : CStr();
        return missing.empty() ? CStr("No audio device") : missing + " is not there";
    }
    const CStr name = qv->aam->audioName(qv->aam->device);
    char line[160];
    std::snprintf(line, sizeof(line), "%s%s  %g Hz  %d frames", name.asChar(),
                  name == silentDevice ? ": nothing can be heard" : "", double(qv->aam->rate),
                  qv->aam->frames);
    return line;
}

void StatusLine::describe(Description& d, int) const {
    d.role = Role::status;
    d.name = text.empty() ? "Status" : text.asChar();
    d.help = d.text = device.asChar();
}
