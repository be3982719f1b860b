#pragma once

#include "base/CStr.h"
#include "base/CStream.h"
#include "project/Project.h"
#include "project/ProjectReader.h"
#include "project/RecoveryFile.h"

#include <memory>
#include <optional>

/// Keeps a copy of a project with unsaved changes on the disk, against a crash: soon after a
/// change, at most every `shortestPauseMs`, and never so often that it takes more than a fiftieth
/// of the time. The copy is made in memory, and written by a thread of its own. Interface thread.
///
/// At the start of the program: `leftCopies`, and for each of them `recover` or `setAside`, as the
/// user says. The same for a project that is to be opened, before it is.
class AutoSave {
public:
    static constexpr int shortestPauseMs = 2000, pauseFactor = 50;

    explicit AutoSave(const Project& project);
    /// Waits for what is being written. The copy stays, unless it was discarded.
    ~AutoSave();
    AutoSave(const AutoSave&) = delete;
    AutoSave& operator=(const AutoSave&) = delete;

    static CStr recoveryFile(const CStr& projectFile) { return recoveryName(projectFile); }

    /// To be called often, with the time in milliseconds (`asTimeInMS`).
    void idle(int now);
    /// The project was saved, or is closed on purpose: there is nothing to recover. Does not wait:
    /// a copy that is being written goes once it is done.
    void discard();
    bool writing() const;
    /// Opens a copy that was left by a crash, as its project with unsaved changes, and goes on with
    /// it as the copy of this session. `notProject`, and nothing has changed, when another session
    /// has it by now or it is no project.
    LoadResult recover(const LeftCopy& left);

private:
    class Writer;

    Project project;
    std::unique_ptr<RecoveryFile> file; ///< null while there is no copy
    /// The copy under a name that the project had before; until there is one under the present.
    std::unique_ptr<RecoveryFile> former;
    CStr copiedProject;             ///< that `file` was made for
    CMemoryStream content;          ///< the latest copy; the writer's as long as there is one
    CStr roomProject;               ///< that `room` was told for
    int64_t room = 0;               ///< bytes that a copy will need, as its file has them
    std::unique_ptr<Writer> writer; ///< null while nothing is being written
    std::optional<unsigned> copied; ///< `CQV::changes` that the latest copy has
    std::optional<int> lastEnd;     ///< when that was finished
    int lastMs = 0;                 ///< how long it took

    bool isDue(int now) const;
    void begin();
    void makeRoom();
    void finishWriter(int now);
    void settle(); ///< waits for the writer
    void supersede();
    void removeFile();
};

/// Opens a copy as the project `projectFile`, with unsaved changes.
LoadResult openRecovery(const Project& project, const CStr& copy, const CStr& projectFile);
