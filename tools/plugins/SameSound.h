#pragma once

#include "base/CStr.h"

#include <vector>

/// How far the sounds of one effect in several formats are apart at most, as it begins and with
/// each of its parameters at its end; below 0 where one of them does not load, or knows a parameter
/// of the first one not. In a process of its own.
double apartIn(const std::vector<CStr>& formats);
