#include "shell/StatusLine.h"

#include "base/CIniFile.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "ui/DeviceSettings.h"

#include <cstdio>

namespace {

constexpr int margin = 8;
constexpr const char* silentDevice = "Silent clock"; ///< of the driver, for machines without sound

} // namespace

StatusLine::StatusLine(CWin* owner, CQV* host, int t, int w)
    : CCtrl(owner, "status", 0, t, w, lineHeight), qv(host) {
    setAlign(alignWidth | alignBottom, 0, 0);
}

void StatusLine::paint(CGraphic* g, CRect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillRect(colours.frame, asRect(0, 0, width, 1));
    const int split = width - margin - g->textWidth(device);
    g->drawText(colours.dimText, text, asRect(margin, 1, split - margin, height), textLeft);
    g->drawText(warning ? colours.meter[1] : colours.dimText, device,
                asRect(split, 1, width - margin, height), textRight);
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
    CAAM* bridge = qv->aam;
    DeviceState now;
    if (bridge && bridge->opened) now = {bridge->device, bridge->frames, bridge->rate};
    if (now == shown) return;
    shown = now;
    warning = !bridge || !bridge->opened || bridge->audioName(bridge->device) == silentDevice;
    device = deviceText();
    redraw();
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
