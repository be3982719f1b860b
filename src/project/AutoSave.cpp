#include "project/AutoSave.h"

#include "base/CIniFile.h"
#include "base/CStream.h"
#include "base/CThread.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/ProjectWriter.h"

#include <algorithm>
#include <unistd.h>

namespace {

constexpr const char* recoveryExt = ".recovery.qv";

} // namespace

/// Brings a finished copy to the disk.
class AutoSave::Writer : public CThread {
public:
    explicit Writer(const CStr& to) : path(to) {}
    ~Writer() override { waitFor(); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    CMemoryStream content; ///< until `start` the interface thread's
    Shared<bool> done{false};
    Shared<int> tookMs{0}; ///< from the beginning of the copy to its end

    void execute() override {
        SafeFile file(path);
        if (CFileStream* to = file.stream()) {
            to->write(content.data, saturate(content.size));
            if (to->written == content.size) file.commit(false);
        }
        tookMs = asTimeInMS() - startedAt;
        done = true;
    }

private:
    const CStr path;
    const int startedAt = asTimeInMS();
};

AutoSave::AutoSave(const Project& p) : project(p) {
}

AutoSave::~AutoSave() = default;

CStr AutoSave::recoveryFile(const CStr& projectFile) {
    if (projectFile.empty()) return extractFilePath(inifile) + "unsaved" + recoveryExt;
    return changeFileExt(projectFile, recoveryExt);
}

bool AutoSave::writing() const {
    return writer && !writer->done;
}

bool AutoSave::isDue(int now) const {
    const CQV* host = project.host;
    if (writer || !host->modified || host->changes == copied) return false;
    const int pause = std::max(shortestPauseMs, saturate(int64_t(lastMs) * pauseFactor));
    return copy.empty() || now - lastEnd >= pause;
}

void AutoSave::idle(int now) {
    if (writer && writer->done) finishWriter(now);
    if (isDue(now)) begin();
}

void AutoSave::begin() {
    CQV* host = project.host;
    const CStr path = recoveryFile(host->projectFile);
    if (!copy.empty() && !(copy == path)) ::unlink(copy.asChar());
    copy = path;
    copied = host->changes;
    writer = std::make_unique<Writer>(path);
    CMemoryStream& to = writer->content;
    to.setSize(saturate(lastBytes)); // room at once, as much as the last time
    project.ui->gatherWindows();
    writeProject(project, &to);
    lastBytes = to.getPos();
    to.setSize(saturate(lastBytes));
    writer->start();
}

void AutoSave::finishWriter(int now) {
    lastMs = writer->tookMs;
    lastEnd = now;
    writer.reset();
}

void AutoSave::discard() {
    writer.reset();
    for (const CStr& file : {copy, recoveryFile(project.host->projectFile)})
        if (!file.empty()) ::unlink(file.asChar());
    copy = "";
    copied = project.host->changes;
}

LoadResult openRecovery(const Project& project, const CStr& copy, const CStr& projectFile) {
    CQV* host = project.host;
    if (!fileExists(copy)) return LoadResult::notProject;
    const CStr before = host->projectFile;
    host->projectFile = projectFile;
    CFileStream file(copy, 0);
    const LoadResult result = loadFromStream(project, &file);
    if (result == LoadResult::notProject) host->projectFile = before;
    if (result == LoadResult::good) {
        host->updatePeaks();
        host->setModified();
    }
    project.ui->projectChanged(host->projectFile);
    return result;
}
