#pragma once

#include "base/CStr.h"

#include <cstdint>
#include <vector>

class CMemoryStream;
class CStringList;

/// The copy of a project on the disk that this session keeps against a crash. As long as the object
/// stands, no other session on the machine writes to it, offers it or removes it: the file is
/// locked, and the lock goes with the process however that ends. One thread at a time.
class RecoveryFile {
public:
    /// For a project's file, or an empty path as long as it has none. Touches nothing yet.
    explicit RecoveryFile(const CStr& projectFile) : project(projectFile) {}
    ~RecoveryFile(); ///< lets go of the file, which stays
    RecoveryFile(const RecoveryFile&) = delete;
    RecoveryFile& operator=(const RecoveryFile&) = delete;

    /// Replaces the content in a single step. The first call takes a name: "name.recovery.qv"
    /// beside the project, "name.recovery1.qv" and so on when another session or a crash has left
    /// a copy there, or "unsaved.recovery.qv" in the folder of the settings when the project has no
    /// file, or lies where nothing can be written. False if it could not be written; what was
    /// there before stays then.
    bool write(const CMemoryStream& content);
    /// Takes over what a crash has left; false when it is gone or in the hands of another session.
    bool takeOver(const CStr& path);
    void remove();
    const CStr& path() const { return name; } ///< empty while there is none

private:
    CStr project, name;
    int lock = -1; ///< descriptor of the file that stands under `name`

    bool claim(const CStr& projectFile);
    bool replace(const CMemoryStream& content);
    void release();
};

/// A copy that a crash has left.
struct LeftCopy {
    CStr path;
    CStr projectFile; ///< whose changes it holds, empty for a project that was never saved
    int64_t time;     ///< of its writing, seconds since 1970
    bool outdated;    ///< the project was saved after it
};

/// The first name that a copy gets; see `RecoveryFile::write`.
CStr recoveryName(const CStr& projectFile);
/// What crashes have left of projects that were never saved, of the one that was used last, and of
/// those in `projects`; the latest first. Copies of sessions that still run are not among them.
std::vector<LeftCopy> leftCopies(const CStringList& projects);
/// Puts a copy that is not wanted out of the way, under its name and "~": it is not listed again,
/// and nothing is lost. False when it is gone or in the hands of another session.
bool setAside(const LeftCopy& left);
