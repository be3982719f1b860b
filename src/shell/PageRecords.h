#pragma once

#include "base/CStr.h"

#include <vector>

constexpr int mostPages = 256; ///< of a project, the first included

/// The payload of one page in a project: its name as a length and its bytes, and two numbers that
/// are 0. All numbers have 32 bits, low byte first.
std::vector<unsigned char> pageRecord(const CStr& name);
/// The name in such a payload, cut to 64 bytes; "Untitled" where there is none.
CStr pageName(const std::vector<unsigned char>& record);
