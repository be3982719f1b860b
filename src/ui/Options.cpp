#include "ui/Options.h"

#include "base/CIniFile.h"
#include "engine/CQV.h"
#include "gui/Keys.h"

Option::Option(CQV* host, const char* name, int def) : key(name), qv(host), usual(def) {
    qv->storeInt(key, def);
}

int Option::get() const {
    return qv->settings.getInt(key, usual);
}

void Option::set(int value) {
    if (qv->settingsEnabled) CIniFile(inifile).writeInteger("options", key, value);
    qv->settings.setInt(key, value);
    if (onChange) onChange();
}

Options::Options(CQV* host)
    : savePlace(host, "savePosAndSize", 0), savePrompt(host, "savePrompt", 1),
      randomColour(host, "rndTrackCol", 0), spectrum(host, "dft", 1), hints(host, "showHint", 1),
      tabsAlways(host, "modular-tab-always-show", 0), ribbon(host, "ribbon", 0),
      outlineParts(host, "part-outline", 1), invertZoom(host, "invert-mouse-wheel-zoom", 0),
      adaptiveGrid(host, "adaptive-grid", 0), relativeSnap(host, "relative-snap", 0),
      altKey(host, "second-alt", int(SecondAlt::super)), checkUpdates(host, "check-updates", 0) {
}
