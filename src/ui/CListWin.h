#pragma once

#include "base/CStr.h"

#include <vector>

class CWin;

/// Shows lines under a heading in a window of their own until it is closed; nothing without lines.
void showList(CWin* owner, const CStr& title, const CStr& heading, const std::vector<CStr>& lines);
