#pragma once

#include "base/CStringList.h"

class SamplePool;

/// A trash: files of samples that nothing needs any more, to be deleted at a safe moment. Interface
/// thread.
class CSampleManager : public CStringList {
public:
    explicit CSampleManager(SamplePool* of) : pool(of) {}
    ~CSampleManager() override { emptyTrash(); }
    CSampleManager(const CSampleManager&) = delete;
    CSampleManager& operator=(const CSampleManager&) = delete;

    /// Notes a file; only one that lies right in the project's audio folder or the temp folder.
    /// False for any other, which stays for good.
    bool moveToTrash(const CStr& file);
    /// Takes it out again: somebody wants the file.
    void restore(const CStr& file);
    /// Deletes what was noted, but for what a sample still stands on: that stays noted.
    void emptyTrash();

private:
    SamplePool* pool;
};
