#include "ui/Skins.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CCtrl.h"
#include "ui/CAppGui.h"

namespace {

constexpr const char* section = "options";
constexpr const char* defaultTheme = "default.qvl";

CStr defaultPath() {
    return extractFilePath(asAppname()) + defaultTheme;
}

void setSkin(CApp* app, CQV* host, int look) {
    if (look == lookLight)
        setLightSkin(app, host);
    else if (look != lookDefault || !app->gui->open(defaultPath()))
        setDarkSkin(app, host);
}

void writeChoice(const CQV* host, int look, const CStr& theme) {
    if (!host->settingsEnabled) return;
    CIniFile ini(inifile);
    ini.writeInteger(section, "look", look);
    ini.writeString(section, "theme", theme);
}

} // namespace

ThemeLink::ThemeLink(CApp* application, CQV* host) : app(application), qv(host) {
    app->gui = std::make_unique<CAppGui>(); // the former one frees the items before they are filled
    wire(static_cast<CAppGui&>(*app->gui).onChanged,
         new _COnChange<ThemeLink>(this, &ThemeLink::onGuiChanged));
    startSkin(app, qv);
}

ThemeLink::~ThemeLink() {
    wire(static_cast<CAppGui&>(*app->gui).onChanged, nullptr);
}

void ThemeLink::onGuiChanged(CObject*) {
    qv->hostNotices.raise(HostNotice::graph);
    app->redrawAll();
}

void setLightSkin(CApp* app, CQV*) {
    app->gui->setPalette(lightPalette());
}

void setDarkSkin(CApp* app, CQV*) {
    app->gui->setPalette(darkPalette());
}

void setDefaultLook(CGui& gui) {
    gui.setPalette(darkPalette());
    for (CGuiItem2* item :
         {&clButton, &clValue, &clDropdown, &clSpeedButton, &clSpeedButtonPushed,
          &clSpeedButtonMouseOver, &clToolbarControls, &clToolbarControlsPushed, &clTransporter,
          &clTransporterPushed, &clScrollbarHorzThumb, &clScrollbarVertThumb})
        setGuiShape(*item, 1);
}

void startSkin(CApp* app, CQV* host) {
    const int look = iniReadInt(section, "look", lookDefault);
    if (look != lookTheme)
        setSkin(app, host, look);
    else if (!app->gui->open(iniReadString(section, "theme", "")))
        setDarkSkin(app, host);
}

void chooseSkin(CApp* app, CQV* host, int look) {
    setSkin(app, host, look);
    writeChoice(host, look, "");
}

bool openTheme(CApp* app, CQV* host, const CStr& path) {
    if (!app->gui->open(path)) return false;
    host->hostNotices.raise(HostNotice::devices); // their page shows the items of the former look
    writeChoice(host, lookTheme, path);
    return true;
}

bool saveTheme(CApp* app, CQV* host, const CStr& path) {
    if (!app->gui->save(path)) return false;
    writeChoice(host, lookTheme, path);
    return true;
}
