#include "base/CFileManager.h"

#include "base/Numbers.h"
#include "base/Paths.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

CFileManager::~CFileManager() {
    closeFiles();
}

/// False when the last bytes could not be written.
bool CFileManager::closeFiles() {
    bool complete = true;
    if (source) std::fclose(source);
    if (dest) complete = std::fclose(dest) == 0;
    source = dest = nullptr;
    return complete;
}

bool CFileManager::startCopy(const CStr& from, const CStr& to, int blockSize) {
    closeFiles();
    broken = true;
    std::error_code failed;
    if (fs::equivalent(from.asChar(), to.asChar(), failed) || !fileExists(from)) return false;
    source = std::fopen(from.asChar(), "rbe");
    if (source) dest = std::fopen(to.asChar(), "wbe");
    if (!dest) {
        closeFiles();
        return false;
    }
    block.resize(size_t(std::max(blockSize, 1)));
    copied = 0;
    length = getFileSize(from);
    broken = false;
    return true;
}

bool CFileManager::copyBlock(int& done, int& total) {
    bool more = false;
    if (dest) {
        const size_t n = std::fread(block.data(), 1, block.size(), source);
        broken = std::fwrite(block.data(), 1, n, dest) != n || std::ferror(source);
        copied += int64_t(n);
        more = n == block.size() && !broken;
        if (!more && !closeFiles()) broken = true;
    }
    done = saturate(copied);
    total = saturate(length);
    return more;
}

bool CFileManager::copyFile(const CStr& from, const CStr& to) {
    constexpr int blockSize = 1 << 16;
    if (!startCopy(from, to, blockSize)) return false;
    int done = 0, total = 0;
    while (copyBlock(done, total)) {
    }
    return !broken;
}

bool CFileManager::deleteFile(const CStr& path) {
    return unlink(path.asChar()) == 0;
}

bool CFileManager::deleteFolder(const CStr& path) {
    if (!folderExists(path)) return false;
    std::error_code failed;
    if (fs::equivalent(path.asChar(), "/", failed)) return false;
    fs::remove_all(path.asChar(), failed);
    return !failed;
}
