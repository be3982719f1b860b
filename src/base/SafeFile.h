#pragma once

#include "base/CStr.h"

#include <memory>

class CFileStream;

/// A file in the making that takes the place of another one in a single step: whenever the program
/// or the machine stops, the old or the new content is there, whole. Any thread.
///
/// It is written beside its place, under the name "temp_file_name" or one like it, with the
/// extension and the permissions of the file that it replaces. A symbolic link stays, and what it
/// leads to is replaced. A device is written to as it is.
class SafeFile {
public:
    /// Makes it, empty.
    explicit SafeFile(const CStr& place);
    /// Unless it was put in place, nothing is left of it.
    ~SafeFile();
    SafeFile(const SafeFile&) = delete;
    SafeFile& operator=(const SafeFile&) = delete;

    // Two ways to write to it. Either gives nothing when no file can be made there.
    const CStr& path() const { return working; } ///< its name for now; whoever writes closes it
    CFileStream* stream();                       ///< owned here, opened by the first call

    /// Brings all that was written to the disk and puts the file in its place; with `keepOld` what
    /// was there before goes to that name and "~". False, and the old file stays, if anything of
    /// the stream could not be written, or it is longer than 2 GB. Afterwards there is nothing more
    /// to write to.
    bool commit(bool keepOld = false);

private:
    CStr target, working;
    std::unique_ptr<CFileStream> file;
    bool device = false; ///< `working` is `target`

    bool make();
    bool finish();
    void keepTarget() const;
};
