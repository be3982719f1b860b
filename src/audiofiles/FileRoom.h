#pragma once

#include <cstdint>

class CSample;

/// How many frames a file in the making can still take: none may pass 2 GB.
std::int64_t roomOf(const CSample& file);

/// Drops what lies behind the first `count` frames of a file in the making, but for its peaks.
void cutTo(CSample& file, int count);
