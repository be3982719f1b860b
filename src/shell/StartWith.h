#pragma once

#include "base/CIniFile.h"

/// What the program starts with: values of the option "startwith".
enum StartWith : int { startAsks = -1, startDefault = 0, startEmpty = 1, startLast = 2 };

/// What is none of these asks too.
inline int startsWith() {
    const int with = iniReadInt("options", "startwith", startAsks);
    return with < startAsks || (with >= startDefault && with <= startLast) ? with : int(startAsks);
}
inline void setStartsWith(StartWith with) {
    CIniFile(inifile).writeInteger("options", "startwith", with);
}
