#include "project/SafeFile.h"

#include "base/CStream.h"
#include "base/Paths.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

/// Where a chain of symbolic links ends, also if nothing is there.
CStr endOfLinks(const CStr& path) {
    namespace fs = std::filesystem;
    constexpr int longestChain = 40;
    fs::path at = path.asChar();
    std::error_code failed;
    for (int i = 0; i < longestChain && fs::is_symlink(at, failed); ++i) {
        const fs::path to = fs::read_symlink(at, failed);
        if (failed) break;
        at = to.is_absolute() ? to : at.parent_path() / to;
    }
    return at.c_str();
}

CStr folderOf(const CStr& path) {
    const CStr folder = extractFilePath(path);
    if (!folder.empty()) return folder;
    return path[0] == folderSeparator ? "/" : ".";
}

bool isReplaceable(const CStr& path) {
    struct stat info {};
    return stat(path.asChar(), &info) != 0 || S_ISREG(info.st_mode);
}

} // namespace

void flushFolder(const CStr& folder) {
    const int fd = ::open(folder.asChar(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

SafeFile::SafeFile(const CStr& path) : target(endOfLinks(path)) {
    if (!isReplaceable(target)) return;
    temp = getUniqueFilename("temp_file_name", ".qv", folderOf(target));
    file = std::make_unique<CFileStream>(temp, 1);
    if (file->isOpen())
        takePermissions();
    else
        file.reset();
}

SafeFile::~SafeFile() {
    if (file) ::unlink(temp.asChar());
}

/// Owner and group where that is allowed. First, as the content may be nobody else's business.
void SafeFile::takePermissions() const {
    struct stat old {};
    if (stat(target.asChar(), &old) != 0) return;
    const int fd = fileno(file->file);
    constexpr mode_t permissionBits = 0777;
    if (::fchown(fd, old.st_uid, old.st_gid) != 0 && ::fchown(fd, uid_t(-1), old.st_gid) != 0) {
        // A file of somebody else becomes ours.
    }
    ::fchmod(fd, old.st_mode & permissionBits);
}

bool SafeFile::flushToDisk() const {
    return file->flush() && ::fsync(fileno(file->file)) == 0;
}

bool SafeFile::commit(bool keepOld) {
    if (!file) return false;
    const bool whole = flushToDisk() && file->written == file->getPos() &&
                       file->getPos() <= std::numeric_limits<int>::max();
    if (!whole) return false;
    if (keepOld) keepTarget();
    if (std::rename(temp.asChar(), target.asChar()) != 0) return false;
    file.reset();
    flushFolder(folderOf(target));
    return true;
}

/// By a second name for the same file, so that it is never missing at its own; a copy where the
/// file system knows no such names.
void SafeFile::keepTarget() const {
    const CStr spare = getUniqueFilename("temp_file_name", ".qv~", folderOf(target));
    if (::link(target.asChar(), spare.asChar()) == 0 || copyFile(target, spare))
        std::rename(spare.asChar(), (target + "~").asChar());
    ::unlink(spare.asChar());
}
