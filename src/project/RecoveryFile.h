#pragma once

#include "base/CStr.h"

#include <cstdint>
#include <vector>

class CMemoryStream;
class CStream;
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

    /// The item behind a project's own that makes it a copy: whose it is, and whether that was read
    /// with damage. Programs that do not know it skip it.
    static void writeMark(CStream* stream, const CStr& projectFile, bool damaged);

    /// Replaces the content in a single step. The first call takes a name: "name.recovery.qv"
    /// beside the project, "name.recovery1.qv" and so on when another session or a crash has left
    /// a copy there. A project without a file, or one that lies where nothing can be written any
    /// more, has "unsaved.recovery.qv" in the folder of the settings. False if it could not be
    /// written there either; what was there before stays then.
    bool write(const CMemoryStream& content);
    /// Takes over what a crash has left; false when it is gone or in the hands of another session.
    bool takeOver(const CStr& path);
    void remove();
    const CStr& path() const { return held.name; } ///< empty while there is none

private:
    /// A name that no other session uses.
    struct Place {
        CStr name;
        int lock = -1; ///< descriptor of the file that stands under it
    };
    const CStr project;
    Place held;

    static bool claim(Place& place, const CStr& projectFile);
    static bool replace(Place& place, const CMemoryStream& content);
    static void release(Place& place);
    static void remove(Place& place);
    bool moveTo(const CStr& projectFile, const CMemoryStream& content);
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
/// Puts a copy that is not wanted out of the way, under its name and "~", or one with a number when
/// there is such a file: it is not listed again, and nothing is lost. False when it is gone or in
/// the hands of another session.
bool setAside(const LeftCopy& left);
