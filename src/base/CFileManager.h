#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <cstdint>
#include <cstdio>
#include <vector>

/// Copies in steps, so that progress can be shown, and deletes.
class CFileManager : public CObject {
public:
    CFileManager() = default;
    ~CFileManager() override;
    CFileManager(const CFileManager&) = delete;
    CFileManager& operator=(const CFileManager&) = delete;

    /// Opens both files; `blockSize` bytes, at least 1, make a step. A copy under way is given up.
    /// False, with nothing changed, when one cannot be opened or both are the same.
    bool startCopy(const CStr& from, const CStr& to, int blockSize);
    /// Copies one block and tells the bytes so far and in all. False at the end, when both files
    /// are closed; `failed` tells whether it was reached.
    bool copyBlock(int& done, int& total);
    bool failed() const { return broken; }

    bool copyFile(const CStr& from, const CStr& to); ///< all at once; true on success
    bool deleteFile(const CStr& path);               ///< true when a file or a link was deleted
    /// With all that it holds; links are deleted, not followed. True when it is gone.
    bool deleteFolder(const CStr& path);

private:
    bool closeFiles();

    std::FILE* source = nullptr;
    std::FILE* dest = nullptr;
    std::vector<char> block;
    int64_t copied = 0, length = 0;
    bool broken = false;
};
