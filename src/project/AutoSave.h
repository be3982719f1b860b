#pragma once

#include "base/CStr.h"
#include "project/Project.h"
#include "project/ProjectReader.h"

#include <memory>

/// Keeps a copy of a project with unsaved changes on the disk, against a crash: soon after a
/// change, at most every `shortestPauseMs`, and never so often that it takes more than a fiftieth
/// of the time. The copy is made in memory, and written by a thread of its own. Interface thread.
class AutoSave {
public:
    static constexpr int shortestPauseMs = 2000, pauseFactor = 50;

    explicit AutoSave(const Project& project);
    ~AutoSave(); ///< waits for what is being written; the copy stays
    AutoSave(const AutoSave&) = delete;
    AutoSave& operator=(const AutoSave&) = delete;

    /// Where the copy of a project lies: beside its file as "name.recovery.qv", or in the folder of
    /// the settings while it has none.
    static CStr recoveryFile(const CStr& projectFile);

    /// To be called often, with the time in milliseconds (`asTimeInMS`).
    void idle(int now);
    /// The project was saved, or is closed on purpose: there is nothing to recover.
    void discard();
    bool writing() const;

private:
    class Writer;

    Project project;
    std::unique_ptr<Writer> writer; ///< null while nothing is being written
    CStr copy;                      ///< the file that may be there, empty for none
    unsigned copied = 0;            ///< `CQV::changes` that the latest copy has
    int lastEnd = 0, lastMs = 0;    ///< when it was finished, how long it took
    int64_t lastBytes = 0;

    bool isDue(int now) const;
    void begin();
    void finishWriter(int now);
};

/// Opens a copy that was left by a crash as the project `projectFile`, with unsaved changes.
LoadResult openRecovery(const Project& project, const CStr& copy, const CStr& projectFile);
