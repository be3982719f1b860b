#include "project/RecoveryFile.h"

#include "base/CIniFile.h"
#include "base/CStream.h"
#include "base/CStringList.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/SafeFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *ext = ".recovery", *projectExt = ".qv", *asideExt = ".qv~";
constexpr const char* markName = "recovery";
constexpr int mostCopies = 16; ///< of one project
constexpr mode_t onlyMine = 0600;

CStr nameOf(const CStr& projectFile, int index) {
    const CStr stem =
        projectFile.empty() ? extractFilePath(inifile) + "unsaved" : changeFileExt(projectFile, "");
    return stem + ext + (index > 0 ? asStr(index) : CStr()) + projectExt;
}

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_ino == b.st_ino && a.st_dev == b.st_dev;
}

/// A file system that knows no locks has one session at a time.
bool lockNow(int fd) {
    return ::flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

/// Opens a regular file and locks it; -1 when it is not there or another session has it.
int openLocked(const CStr& path, int flags, struct stat& info) {
    const int fd = ::open(path.asChar(), flags | O_CLOEXEC | O_NONBLOCK, onlyMine);
    if (fd < 0) return -1;
    struct stat there {};
    const bool mine = lockNow(fd) && ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
                      ::stat(path.asChar(), &there) == 0 && sameFile(info, there);
    if (mine) return fd;
    ::close(fd); // it may have been replaced between opening and locking
    return -1;
}

/// Whose copy a file is by its mark; empty without one.
CStr markedProject(const CStr& path) {
    CFileStream file(path, 0);
    file.readStr();
    while (file.left() > 0) {
        const CStr name = file.readStr();
        const int size = file.readInt();
        if (size < 0 || name.empty()) return "";
        if (name == markName) return file.readStr();
        file.setPos(size, seekCurrent);
    }
    return "";
}

void addLeft(std::vector<LeftCopy>& list, const CStr& place) {
    for (int i = 0; i < mostCopies; ++i) {
        struct stat info {
        }, saved{};
        const CStr path = nameOf(place, i);
        const int fd = openLocked(path, O_RDONLY, info);
        if (fd < 0) continue;
        ::close(fd);
        if (info.st_size == 0) continue; // a name that was taken, and no more
        const CStr projectFile = place.empty() ? markedProject(path) : place;
        const bool outdated =
            ::stat(projectFile.asChar(), &saved) == 0 && saved.st_mtime > info.st_mtime;
        list.push_back({path, projectFile, info.st_mtime, outdated});
    }
}

} // namespace

CStr recoveryName(const CStr& projectFile) {
    return nameOf(projectFile, 0);
}

void RecoveryFile::writeMark(CStream* stream, const CStr& projectFile, bool damaged) {
    stream->writeId(markName, projectFile.length() + 2 * int(sizeof(int)));
    stream->writeStr(projectFile);
    stream->writeInt(damaged);
}

RecoveryFile::~RecoveryFile() {
    release(held);
}

void RecoveryFile::release(Place& place) {
    if (place.lock >= 0) ::close(place.lock);
    place = Place();
}

void RecoveryFile::remove(Place& place) {
    if (!place.name.empty()) ::unlink(place.name.asChar());
    release(place);
}

void RecoveryFile::remove() {
    remove(held);
}

/// A file with content that nobody holds was left by a crash: it waits for the user.
bool RecoveryFile::claim(Place& place, const CStr& projectFile) {
    for (int i = 0; i < mostCopies; ++i) {
        struct stat info {};
        const CStr path = nameOf(projectFile, i);
        const int fd = openLocked(path, O_RDWR | O_CREAT, info);
        if (fd < 0) continue;
        if (info.st_size == 0) {
            place = {path, fd};
            return true;
        }
        ::close(fd);
    }
    return false;
}

bool RecoveryFile::write(const CMemoryStream& content) {
    if (held.name.empty() && moveTo(project, content)) return true;
    return (!held.name.empty() && replace(held, content)) || moveTo("", content);
}

/// Takes another name; the one before is given up once there is a copy under the new one.
bool RecoveryFile::moveTo(const CStr& projectFile, const CMemoryStream& content) {
    Place place;
    if (!claim(place, projectFile)) return false;
    if (!replace(place, content)) {
        remove(place);
        return false;
    }
    remove(held);
    held = place;
    return true;
}

/// The new file is locked before it gets its name, and the old one let go afterwards.
bool RecoveryFile::replace(Place& place, const CMemoryStream& content) {
    SafeFile file(place.name);
    CFileStream* to = file.stream();
    if (!to) return false;
    const int next = ::fcntl(fileno(to->file), F_DUPFD_CLOEXEC, 0);
    if (next < 0) return false;
    to->write(content.data, saturate(content.size));
    if (!lockNow(next) || to->written != content.size || !file.commit()) {
        ::close(next);
        return false;
    }
    ::close(place.lock);
    place.lock = next;
    return true;
}

bool RecoveryFile::takeOver(const CStr& path) {
    struct stat info {};
    const int fd = openLocked(path, O_RDWR, info);
    if (fd < 0) return false;
    release(held);
    held = {path, fd};
    return true;
}

std::vector<LeftCopy> leftCopies(const CStringList& projects) {
    CStringList places;
    const auto add = [&places](const CStr& place) {
        if (places.indexOf(place) < 0) places.append(place);
    };
    add("");
    add(iniReadString("last", "project", ""));
    for (int i = 0; i < projects.count(); ++i) add(projects.get(i));
    std::vector<LeftCopy> list;
    for (int i = 0; i < places.count(); ++i) addLeft(list, places.get(i));
    std::ranges::stable_sort(list, std::ranges::greater(), &LeftCopy::time);
    return list;
}

bool setAside(const LeftCopy& left) {
    constexpr int mostAttempts = 100; // somebody else may take the name at the same time
    RecoveryFile file(left.projectFile);
    if (!file.takeOver(left.path)) return false;
    for (int i = 0; i < mostAttempts; ++i) {
        const CStr name = getUniqueFilename(changeFileExt(left.path, ""), asideExt, "");
        if (::link(left.path.asChar(), name.asChar()) == 0)
            return ::unlink(left.path.asChar()) == 0;
        if (errno != EEXIST) return std::rename(left.path.asChar(), name.asChar()) == 0;
    }
    return false;
}
