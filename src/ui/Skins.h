#pragma once

#include "base/CStr.h"

class CApp;
class CGui;
class CObject;
class CQV;

/// Values of the setting "look" in "options".
enum LookChoice : int {
    lookDefault = -2, ///< the file "default.qvl" beside the program
    lookTheme = -1,   ///< the file named by the setting "theme"
    lookLight = 0,
    lookDark = 1,
};

/// Gives the application the program's theme, in the look of the settings, and passes on changes of
/// it for as long as it lives: all windows are painted anew, and pages rebuild what they have drawn
/// in advance.
class ThemeLink {
public:
    ThemeLink(CApp* application, CQV* host);
    ~ThemeLink();
    ThemeLink(const ThemeLink&) = delete;
    ThemeLink& operator=(const ThemeLink&) = delete;

private:
    void onGuiChanged(CObject* sender);

    CApp* app;
    CQV* qv;
};

/// The skins that are built in. The theme tells all windows by `changed`.
void setLightSkin(CApp* app, CQV* host);
void setDarkSkin(CApp* app, CQV* host);

/// The look of "default.qvl": the dark one, softer.
void setDefaultLook(CGui& gui);

/// Gives the program the look of the settings; without the file that they name, the dark one.
void startSkin(CApp* app, CQV* host);

// These change the look and write the choice to the settings.

void chooseSkin(CApp* app, CQV* host, int look); ///< LookChoice, but for `lookTheme`
/// False, and nothing happens, when the file cannot be read or written.
bool openTheme(CApp* app, CQV* host, const CStr& path);
bool saveTheme(CApp* app, CQV* host, const CStr& path);
