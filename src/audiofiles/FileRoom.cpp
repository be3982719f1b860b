#include "audiofiles/FileRoom.h"

#include "audiofiles/CSample.h"

#include <algorithm>
#include <climits>
#include <mutex>
#include <unistd.h>

std::int64_t roomOf(const CSample& file) {
    return std::max<std::int64_t>(0, (INT_MAX - file.dataStart) / file.frameBytes - file.frames);
}

void cutTo(CSample& file, int count) {
    const std::scoped_lock guard(file.lock);
    if (!file.fp || count >= file.frames) return;
    file.frames = std::max(0, count);
    const std::int64_t end = file.dataStart + std::int64_t(file.frames) * file.frameBytes;
    if (std::fflush(file.fp) != 0 || ftruncate(fileno(file.fp), end) != 0) diskWriteFailed = true;
}
