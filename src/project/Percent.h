#pragma once

#include "base/CStr.h"

#include <cstdint>

/// How far something is, for the status line: three digits and "%".
CStr percentText(int64_t done, int64_t total);
