#include "engine/AudioFolders.h"

#include "base/Paths.h"

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Whether a name stays in the folder that it is looked up in.
bool isPlainName(const CStr& name) {
    return !name.empty() && !(name == ".") && !(name == "..") && extractFileName(name) == name;
}

bool isLink(const CStr& path) {
    struct stat info {};
    return lstat(path.asChar(), &info) == 0 && S_ISLNK(info.st_mode);
}

bool isPlainFile(const CStr& path) {
    struct stat info {};
    return lstat(path.asChar(), &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace

/// With its separator.
CStr AudioFolders::projectPath() const {
    const CStr path = extractFilePath(projectFile);
    return path.empty() && projectFile[0] == folderSeparator ? CStr("/") : path;
}

CStr AudioFolders::folderName() const {
    if (isPlainName(audioFolder)) return audioFolder;
    return changeFileExt(extractFileName(projectFile), "") + "_audio";
}

CStr AudioFolders::expectedAudioFolder() const {
    return projectFile.empty() ? CStr() : projectPath() + folderName();
}

CStr AudioFolders::getAudioFolder(bool create, bool, bool none) {
    if (none || projectFile.empty()) return "";
    const CStr folder = expectedAudioFolder();
    if (create && createDir(folder)) audioFolder = folderName();
    return isPlainName(audioFolder) ? folder : CStr();
}

CStr AudioFolders::getTempAudioFolder() const {
    if (!tempAudioFolder.empty() && folderExists(tempAudioFolder)) return tempAudioFolder;
    const CStr home = getUserFolder(), own = addSep(home) + "audio";
    return !home.empty() && createDir(own) ? own : getTempFolder();
}

bool AudioFolders::needCache() const {
    return !projectFile.empty() && isRemovable(projectFile);
}

CStr AudioFolders::newSampleFolder(bool* inTemp) {
    const bool temp = !fileExists(projectFile) || needCache();
    if (inTemp) *inTemp = temp;
    if (temp) return getTempAudioFolder();
    const CStr folder = getAudioFolder(true, false, false);
    return folderExists(folder) ? folder : CStr();
}

CStr AudioFolders::requireSampleFilename(const CStr& like, bool* inTemp) {
    const CStr folder = newSampleFolder(inTemp);
    if (folder.empty()) return "";
    const CStr name = extractFileName(like);
    return getUniqueFilename(changeFileExt(name, ""), extractFileExt(name), folder);
}

bool AudioFolders::inAudioFolder(const CStr& file) {
    const CStr folder = getAudioFolder(false, false, false);
    return folderExists(folder) && samePlace(extractFilePath(file), folder);
}

CStr AudioFolders::deletablePath(const CStr& file) {
    const CStr own = getAudioFolder(false, false, false), temp = getTempAudioFolder();
    const CStr place = extractFilePath(file);
    const bool inOwn = !own.empty() && place == addSep(own) && !isLink(own);
    const bool inTemp = !temp.empty() && place == addSep(temp);
    if (!(inOwn || inTemp) || !isPlainFile(file)) return "";
    return canonicalPath(file);
}

bool deleteSampleFile(const CStr& path) {
    if (path.empty() || !(canonicalPath(path) == path)) return false;
    const int folder = ::open(extractFilePath(path).asChar(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return false;
    const CStr name = extractFileName(path);
    struct stat info {};
    const bool plain =
        fstatat(folder, name.asChar(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode);
    const bool done = plain && unlinkat(folder, name.asChar(), 0) == 0;
    ::close(folder);
    return done;
}

CStr canonicalPath(const CStr& path) {
    char full[PATH_MAX];
    return ::realpath(path.asChar(), full) ? CStr(full) : CStr();
}
