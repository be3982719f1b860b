#include "project/Percent.h"

#include <algorithm>
#include <cstdio>

CStr percentText(int64_t done, int64_t total) {
    const int64_t percent = total > 0 ? std::clamp<int64_t>(done * 100 / total, 0, 100) : 100;
    char text[16];
    std::snprintf(text, sizeof text, "%.3d%%", int(percent));
    return text;
}
