#include "base/Paths.h"

#include "base/CStringList.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// Index of the last separator, -1 without one.
int lastSeparator(const CStr& path) {
    const char* text = path.asChar();
    for (int i = path.length() - 1; i >= 0; --i) {
        if (text[i] == '/' || text[i] == '\\') return i;
    }
    return -1;
}

/// Index of the last dot of the file name, -1 without one.
int lastDot(const CStr& path) {
    const char* name = path.asChar() + lastSeparator(path) + 1;
    const char* dot = std::strrchr(name, '.');
    return dot ? int(dot - path.asChar()) : -1;
}

fs::path asPath(const CStr& path) {
    return path.asChar();
}

bool startsWith(const char* text, const char* start) {
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

/// Whether the sysfs file says 1.
bool saysOne(const CStr& file) {
    std::FILE* f = std::fopen(file.asChar(), "re");
    if (!f) return false;
    const int c = std::fgetc(f);
    std::fclose(f);
    return c == '1';
}

} // namespace

CStr asAppname() {
    std::error_code failed;
    const fs::path link = fs::read_symlink("/proc/self/exe", failed);
    return failed ? CStr() : CStr(link.c_str());
}

CStr extractFilePath(const CStr& path) {
    const int at = lastSeparator(path);
    return at < 1 ? CStr() : path.sub(0, at + 1);
}

CStr extractFileName(const CStr& path) {
    return path.sub(lastSeparator(path) + 1, -1);
}

CStr extractFileExt(const CStr& path) {
    const int at = lastDot(path);
    return at < 0 ? CStr() : path.sub(at, -1);
}

CStr changeFileExt(const CStr& path, const CStr& ext) {
    const int at = lastDot(path);
    const bool hasExt = at > lastSeparator(path) + 1;
    return hasExt ? path.sub(0, at) + ext : path + ext;
}

CStr extractRootPath(const CStr& path) {
    const int at = path.pos(":");
    return at < 0 ? CStr() : path.sub(0, at + 1) + "\\";
}

CStr uplevel(const CStr& folder) {
    int n = folder.length();
    const char* text = folder.asChar();
    while (n > 0 && (text[n - 1] == '/' || text[n - 1] == '\\')) --n;
    if (n == 0) return folder.sub(0, 1);
    return folder.sub(0, lastSeparator(folder.sub(0, n)) + 1);
}

CStr& addSep(CStr& path) {
    const int n = path.length();
    if (n > 0 && path[n - 1] != folderSeparator) path.append(folderSeparator);
    return path;
}

CStr addSep(const CStr& path) {
    return addSep(CStr(path));
}

CStr addSep(CStr&& path) {
    addSep(static_cast<CStr&>(path));
    return std::move(path);
}

bool folderExists(const CStr& path) {
    struct stat info {};
    return stat(path.asChar(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool fileExists(const CStr& path) {
    struct stat info {};
    if (stat(path.asChar(), &info) != 0) return false;
    return S_ISREG(info.st_mode) || S_ISBLK(info.st_mode) || S_ISCHR(info.st_mode);
}

bool isReadOnly(const CStr& path) {
    if (access(path.asChar(), F_OK) != 0) return false;
    std::FILE* file = std::fopen(path.asChar(), "a+e");
    if (!file) return true;
    std::fclose(file);
    return false;
}

bool isProtected(const CStr& file) {
    constexpr mode_t anyWrites = S_IWUSR | S_IWGRP | S_IWOTH;
    struct stat info {};
    if (stat(file.asChar(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    return !(info.st_mode & anyWrites) || access(file.asChar(), W_OK) != 0;
}

bool isWritable(const CStr& folder) {
    return folderExists(folder) && access(folder.asChar(), W_OK | X_OK) == 0;
}

CStr absolutePath(const CStr& path) {
    if (path.empty()) return path;
    std::error_code failed;
    const fs::path full = fs::absolute(asPath(path), failed).lexically_normal();
    return failed ? path : CStr(full.c_str());
}

bool samePlace(const CStr& a, const CStr& b) {
    std::error_code failed;
    return addSep(a) == addSep(b) || fs::equivalent(asPath(a), asPath(b), failed);
}

bool isRemovable(const CStr& path) {
    std::error_code failed;
    const fs::path full = fs::weakly_canonical(asPath(path), failed);
    if (startsWith(full.c_str(), "/media/") || startsWith(full.c_str(), "/run/media/")) return true;

    struct stat info {};
    if (stat(path.asChar(), &info) != 0) return false;
    char link[64];
    std::snprintf(link, sizeof(link), "/sys/dev/block/%u:%u", major(info.st_dev),
                  minor(info.st_dev));
    const fs::path device = fs::canonical(link, failed);
    if (failed) return false;
    // A partition lies in the folder of its disk.
    return saysOne((device / "removable").c_str()) ||
           saysOne((device.parent_path() / "removable").c_str());
}

bool isFolderEmpty(const CStr& path) {
    std::error_code failed;
    const fs::directory_iterator entries(asPath(path), failed);
    return failed || entries == fs::directory_iterator();
}

int64_t getFileSize(const CStr& path) {
    struct stat info {};
    return stat(path.asChar(), &info) == 0 ? info.st_size : 0;
}

bool createDir(const CStr& path) {
    std::error_code failed;
    fs::create_directories(asPath(path), failed);
    return folderExists(path);
}

bool copyFile(const CStr& from, const CStr& to) {
    std::error_code failed;
    if (fs::equivalent(asPath(from), asPath(to), failed)) return true;
    return fs::copy_file(asPath(from), asPath(to), fs::copy_options::overwrite_existing, failed);
}

bool copyFile2(const CStr& from, const CStr& to) {
    return copyFile(from, to);
}

namespace {

void addNames(std::vector<CStr>& names, bool ordered, CStringList* list) {
    if (ordered)
        std::stable_sort(names.begin(), names.end(),
                         [](const CStr& a, const CStr& b) { return compareText(a, b) < 0; });
    for (const CStr& name : names) list->add(name);
}

} // namespace

bool readDir(const CStr& path, const CStr& filter, CStringList* folders, CStringList* files,
             bool ordered) {
    DIR* dir = opendir(path.asChar());
    if (!dir) return false;
    const CStr start = addSep(path);
    std::vector<CStr> folderNames, fileNames;
    bool any = false;
    while (const dirent* entry = readdir(dir)) {
        const CStr name = entry->d_name;
        if (name[0] == '.') continue;
        // The kind mostly stands in the entry; only of links and on some disks it has to be asked.
        const bool folderKnown = entry->d_type == DT_DIR, fileKnown = entry->d_type == DT_REG;
        if (folderKnown || (!fileKnown && folderExists(start + name))) {
            if (folders) folderNames.push_back(name);
        } else if (files && hasFileExt(name, filter, any) &&
                   (fileKnown || fileExists(start + name))) {
            fileNames.push_back(name);
        }
    }
    closedir(dir);
    if (folders) addNames(folderNames, ordered, folders);
    if (files) addNames(fileNames, ordered, files);
    return true;
}

bool hasFileExt(const CStr& name, const CStr& filter, bool& any) {
    any = filter.empty() || filter == ".*";
    if (any) return true;
    const CStr ext = extractFileExt(name);
    const char* at = filter.asChar();
    while (*at && !ext.empty()) {
        const size_t n = std::strcspn(at, "|");
        if (sameText(CStr(at, n), ext)) return true;
        at += at[n] ? n + 1 : n;
    }
    return false;
}

CStr getUniqueFilename(const CStr& stem, const CStr& ext, const CStr& folder) {
    const CStr start = addSep(folder) + stem;
    CStr name = start + ext;
    std::error_code ignored;
    for (int i = 1; fs::exists(fs::symlink_status(asPath(name), ignored)); ++i)
        name = start + asStr(i) + ext;
    return name;
}

CStr makeUniqueFile(const CStr& stem, const CStr& ext, const CStr& folder) {
    constexpr int mostAttempts = 100; // somebody else may take the name at the same time
    for (int i = 0; i < mostAttempts; ++i) {
        CStr name = getUniqueFilename(stem, ext, folder);
        const int fd = open(name.asChar(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno == EEXIST) continue;
        if (fd >= 0) close(fd);
        return fd < 0 ? CStr() : name;
    }
    return "";
}

bool flushToDisk(const std::vector<CStr>& paths) {
    bool good = true;
    for (const CStr& path : paths) {
        const int fd = open(path.asChar(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) continue;
        good = (fsync(fd) == 0 || errno == EINVAL || errno == EROFS) && good;
        close(fd);
    }
    return good;
}

CStr getHomeFolder() {
    const CStr home = std::getenv("HOME");
    const passwd* account = home.empty() ? getpwuid(getuid()) : nullptr;
    return account ? CStr(account->pw_dir) : home;
}

CStr getUserFolder() {
    const CStr home = getHomeFolder(), folder = addSep(home) + ".Sondrava";
    return !home.empty() && createDir(folder) ? folder : CStr();
}

CStr ownFile(const CStr& programFolder, const CStr& name) {
    const CStr beside = addSep(programFolder) + name;
    if (isWritable(programFolder) && !isReadOnly(beside)) return beside;
    const CStr folder = getUserFolder();
    return folder.empty() ? beside : addSep(folder) + name;
}

CStr getTempFolder() {
    for (const char* folder : {"/tmp", "/var/tmp"}) {
        if (folderExists(folder)) return folder;
    }
    return {};
}

CStr getDesktopFolder() {
    const CStr folder = addSep(getHomeFolder()) + "Desktop";
    return folderExists(folder) ? folder : CStr();
}

void getSystemFolders(CStringList* paths) {
    paths->add(getHomeFolder());
    paths->add("/");
}

void getDefaultFolders(CStringList* names, CStringList* paths) {
    const CStr desktop = getDesktopFolder();
    if (!desktop.empty()) {
        names->add("Desktop");
        paths->add(desktop);
    }
    names->add(extractFileName(getHomeFolder()));
    paths->add(getHomeFolder());
    names->add("/");
    paths->add("/");
}
