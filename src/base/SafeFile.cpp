#include "base/SafeFile.h"

#include "base/CStream.h"
#include "base/Paths.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr const char* tempStem = "temp_file_name";
constexpr mode_t permissionBits = 0777, ownerBits = S_IRUSR | S_IWUSR;

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

/// Owner and group of a file where that is allowed, and permissions that let us write.
void takeOver(const struct stat& old, int fd) {
    if (::fchown(fd, old.st_uid, old.st_gid) != 0 && ::fchown(fd, uid_t(-1), old.st_gid) != 0) {
        // A file of somebody else becomes ours.
    }
    ::fchmod(fd, (old.st_mode & permissionBits) | ownerBits);
}

bool flushFile(int fd) {
    return fd >= 0 && ::fsync(fd) == 0;
}

void flushFolder(const CStr& folder) {
    const int fd = ::open(folder.asChar(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

} // namespace

SafeFile::SafeFile(const CStr& place) : target(endOfLinks(place)) {
    struct stat info {};
    const bool there = stat(target.asChar(), &info) == 0;
    device = there && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
    if (device)
        working = target;
    else if ((there && !S_ISREG(info.st_mode)) || !make())
        working = "";
}

SafeFile::~SafeFile() {
    if (!device && !working.empty()) ::unlink(working.asChar());
}

/// The permissions come first, as the content may be nobody else's business.
bool SafeFile::make() {
    constexpr int mostAttempts = 100; // somebody else may take the name at the same time
    for (int i = 0; i < mostAttempts; ++i) {
        working = getUniqueFilename(tempStem, extractFileExt(target), folderOf(target));
        const int fd = ::open(working.asChar(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno == EEXIST) continue;
        if (fd < 0) return false;
        struct stat old {};
        if (stat(target.asChar(), &old) == 0) takeOver(old, fd);
        ::close(fd);
        return true;
    }
    return false;
}

CFileStream* SafeFile::stream() {
    if (!file && !working.empty()) {
        file = std::make_unique<CFileStream>(working, 1);
        if (!file->isOpen()) file.reset();
    }
    return file.get();
}

/// Brings the content to the disk and closes.
bool SafeFile::finish() {
    if (!file) {
        const int fd = ::open(working.asChar(), O_RDONLY | O_CLOEXEC);
        const bool flushed = flushFile(fd);
        if (fd >= 0) ::close(fd);
        return flushed;
    }
    const bool whole = file->flush() && (device || flushFile(fileno(file->file))) &&
                       file->written == file->getPos() &&
                       file->getPos() <= std::numeric_limits<int>::max();
    file.reset();
    return whole;
}

bool SafeFile::commit(bool keepOld) {
    if (working.empty() || !finish()) return false;
    if (device) return true;
    struct stat old {};
    if (stat(target.asChar(), &old) == 0) ::chmod(working.asChar(), old.st_mode & permissionBits);
    if (keepOld) keepTarget();
    if (std::rename(working.asChar(), target.asChar()) != 0) return false;
    working = "";
    flushFolder(folderOf(target));
    return true;
}

/// By a second name for the same file, so that it is never missing at its own; a copy where the
/// file system knows no such names.
void SafeFile::keepTarget() const {
    const CStr ext = extractFileExt(target) + "~";
    const CStr spare = getUniqueFilename(tempStem, ext, folderOf(target));
    if (::link(target.asChar(), spare.asChar()) == 0 || copyFile(target, spare))
        std::rename(spare.asChar(), (target + "~").asChar());
    ::unlink(spare.asChar());
}
