#include "shell/TextAndScale.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "gui/Fonts.h"
#include "gui/Scale.h"

void readTextAndScale(CIniFile& ini) {
    constexpr const char* section = "options";
    textSettings.smooth = ini.readInteger(section, "smooth-text", 1) != 0;
    textSettings.family = ini.readString(section, "font", "");
    textSettings.size = asMax(ini.readInteger(section, "font-size", 0), 0);
    wantedScale = asMax(ini.readInteger(section, "scale", 0), 0);
}
