#pragma once

#include "base/CStr.h"

#include <vector>

struct SoundsApart {
    double most;
    CStr param;
};

/// How far the sounds of one effect in several formats are apart at most, with the values that it
/// begins with in the first of them, and then with each of its parameters at its end; below 0 where
/// a format does not load, or knows a parameter not. In a process of its own.
std::vector<SoundsApart> apartIn(const std::vector<CStr>& formats);
