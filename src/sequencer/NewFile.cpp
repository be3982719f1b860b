#include "sequencer/NewFile.h"

#include "base/Paths.h"

#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

CStr withoutLinks(const CStr& path) {
    std::error_code error;
    const auto real = std::filesystem::weakly_canonical(path.asChar(), error);
    return error ? path : CStr(real.c_str());
}

} // namespace

NewFile::NewFile(const CStr& place) : target(withoutLinks(place)), working(target) {
    struct stat found;
    if (stat(target.asChar(), &found) == 0 && !S_ISREG(found.st_mode))
        moves = false;
    else
        working = getUniqueFilename(extractFileName(target), ".part", extractFilePath(target));
}

NewFile::~NewFile() {
    if (moves) unlink(working.asChar());
}

bool NewFile::commit() {
    if (!moves) return true;
    struct stat old;
    if (stat(target.asChar(), &old) == 0) chmod(working.asChar(), old.st_mode & 0777);
    if (std::rename(working.asChar(), target.asChar()) != 0) return false;
    moves = false;
    return true;
}
