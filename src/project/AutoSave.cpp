#include "project/AutoSave.h"

#include "base/CStream.h"
#include "base/CThread.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "project/ProjectAudio.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/ProjectWriter.h"

#include <algorithm>
#include <vector>

/// Brings a finished copy to the disk.
class AutoSave::Writer : public CThread {
public:
    Writer(RecoveryFile& to, const CMemoryStream& from, std::vector<CStr> needed, int begun)
        : file(to), content(from), audio(std::move(needed)), startedAt(begun) {}
    ~Writer() override { waitFor(); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    Shared<bool> done{false}, failed{false};
    Shared<bool> unwanted{false}; ///< the file goes when this is done
    Shared<int> tookMs{0};        ///< from the beginning of the copy to its end

    void execute() override {
        flushToDisk(audio);
        failed = !file.write(content);
        tookMs = asTimeInMS() - startedAt;
        done = true;
    }

private:
    RecoveryFile& file;
    const CMemoryStream& content;
    const std::vector<CStr> audio; ///< files that the copy refers to
    const int startedAt;
};

AutoSave::AutoSave(const Project& p) : project(p) {
}

AutoSave::~AutoSave() {
    settle();
}

void AutoSave::settle() {
    const bool unwanted = writer && writer->unwanted;
    writer.reset();
    if (unwanted) removeFile();
}

bool AutoSave::writing() const {
    return writer && !writer->done;
}

bool AutoSave::isDue(int now) const {
    const CQV* host = project.host;
    if (writer || !host->modified() || copied == host->changes) return false;
    const int pause = std::max(shortestPauseMs, saturate(int64_t(lastMs) * pauseFactor));
    return !lastEnd || now - *lastEnd >= pause;
}

void AutoSave::idle(int now) {
    if (writer && writer->done) finishWriter(now);
    if (file && !writer && !project.host->modified()) discard(); // undone back to what is saved
    if (isDue(now))
        begin();
    else
        makeRoom();
}

/// Gets the memory of the first copy bit by bit, as the system takes longer for all of it at once
/// than the copy does.
void AutoSave::makeRoom() {
    constexpr int64_t bitBytes = 1 << 20;
    const CStr& path = project.host->projectFile;
    if (!(path == roomProject)) {
        roomProject = path;
        room = path.empty() ? 0 : getFileSize(path);
    }
    if (writer || content.capacity >= room) return;
    content.setSize(saturate(std::min(content.capacity + bitBytes, room)));
}

void AutoSave::begin() {
    CQV* host = project.host;
    if (!(copiedProject == host->projectFile)) supersede();
    if (!file) file = std::make_unique<RecoveryFile>(host->projectFile);
    copiedProject = host->projectFile;
    copied = host->changes;
    const int startedAt = asTimeInMS();
    content.clear(); // its memory is used again
    project.ui->gatherWindows();
    writeProject(project, &content);
    RecoveryFile::writeMark(&content, host->projectFile, host->damaged);
    writer = std::make_unique<Writer>(*file, content, freshAudio(host), startedAt);
    writer->start();
}

void AutoSave::finishWriter(int now) {
    lastMs = writer->tookMs;
    lastEnd = now;
    const bool failed = writer->failed, unwanted = writer->unwanted;
    writer.reset();
    if (unwanted) return removeFile();
    if (failed) {
        copied.reset();
        setStatus("The copy against a crash could not be written");
    } else if (former) {
        former->remove();
        former.reset();
    }
}

void AutoSave::supersede() {
    if (file && !file->path().empty()) {
        if (former) former->remove(); // what it has is older
        former = std::move(file);
    }
    file.reset();
}

void AutoSave::discard() {
    copied = project.host->changes;
    if (writing()) {
        writer->unwanted = true;
        return;
    }
    writer.reset();
    removeFile();
}

void AutoSave::removeFile() {
    for (auto* copy : {&file, &former}) {
        if (*copy) (*copy)->remove();
        copy->reset();
    }
    lastEnd.reset();
}

LoadResult AutoSave::recover(const LeftCopy& left) {
    settle();
    auto taken = std::make_unique<RecoveryFile>(left.projectFile);
    if (!taken->takeOver(left.path)) return LoadResult::notProject;
    const LoadResult result = openRecovery(project, left.path, left.projectFile);
    if (result != LoadResult::good) return result;
    removeFile();
    file = std::move(taken);
    copiedProject = left.projectFile;
    copied = project.host->changes;
    return result;
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
        adoptTempAudio(host);
        host->updatePeaks();
        host->setModified();
    }
    project.ui->projectChanged(host->projectFile);
    return result;
}
