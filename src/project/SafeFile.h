#pragma once

#include "base/CStr.h"

#include <memory>

class CFileStream;

/// A file in the making that takes the place of another one in a single step: whenever the program
/// or the machine stops, the old or the new content is there, whole. Any thread.
///
/// It is written beside its place, under the name "temp_file_name.qv" or one like it, with the
/// permissions of the file that it replaces. A symbolic link stays, and what it leads to is
/// replaced.
class SafeFile {
public:
    explicit SafeFile(const CStr& path);
    /// Unless it was put in place, nothing is left of it.
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    CFileStream* stream() const { return file.get(); } ///< null when no file can be made there
    /// Brings all that was written to the disk and puts the file in its place; with `keepOld` what
    /// was there before goes to that name and "~". False, and the old file stays, if anything of
    /// it could not be written, or the file is longer than 2 GB.
    bool commit(bool keepOld);

private:
    CStr target, temp;
    std::unique_ptr<CFileStream> file;

    void takePermissions() const;
    bool flushToDisk() const;
    void keepTarget() const;
};

/// Has the entries of a folder on the disk.
void flushFolder(const CStr& folder);
