#include "project/ProjectFile.h"

#include "base/CIniFile.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "project/ProjectAudio.h"
#include "project/ProjectUi.h"
#include "project/ProjectWriter.h"

#include <cerrno>
#include <exception>
#include <unistd.h>

namespace {

void rememberLast(CQV* host, const CStr& path) {
    if (host->settingsEnabled) CIniFile(inifile).writeString("last", "project", path);
}

bool writeAll(const Project& project, CStream* stream) {
    try {
        project.ui->gatherWindows();
        writeProject(project, stream);
        return true;
    } catch (const std::exception&) {
        showMsg(nullptr, "Save", CStr("There was an error saving ") + project.host->projectFile);
        return false;
    }
}

CStr damagedName(const CStr& path) {
    return changeFileExt(path, "") + ".damaged";
}

bool confirms(const CStr& text) {
    return showMsg(nullptr, "Save", text, mbYes | mbNo) == mbYes;
}

/// Whether the file still has what could not be read of it.
bool losesRest(const CQV* host, const CStr& path) {
    return host->damaged && fileExists(path) && samePlace(path, host->projectFile);
}

/// Whether the user is sure about the file that is to be replaced.
bool mayReplace(const CQV* host, const CStr& path) {
    if (!fileExists(path)) return true;
    if (isProtected(path) && !confirms(path + " is write-protected. Replace it?")) return false;
    if (!losesRest(host, path)) return true;
    return confirms(CStr("Not all of ") + path +
                    " could be read. Save what was read? The file as it is now stays, as " +
                    extractFileName(damagedName(path)) + ".qv.");
}

/// Keeps the only file that still has all of a project. Empty if that fails.
CStr keepDamaged(const CStr& path) {
    const CStr name = getUniqueFilename(damagedName(path), extractFileExt(path), "");
    if (::link(path.asChar(), name.asChar()) == 0 || copyFile(path, name)) return name;
    ::unlink(name.asChar());
    return "";
}

void tellFailure() {
    showMsg(nullptr, "Error",
            errno == EMFILE || errno == ENFILE
                ? "There was an error writing the project. Too many files are open"
                : "There was an error writing the project. Free up some disk space then try again");
}

/// With `keeps` what is there now stays under another name.
bool save(const Project& project, const CStr& path, bool keeps) {
    CQV* host = project.host;
    const CStr kept = keeps ? keepDamaged(path) : CStr();
    host->projectFile = path;
    errno = 0;
    SafeFile file(path);
    const UndoHost::SaveMark mark = host->saveMark();
    if (keeps == !kept.empty() && file.stream() && saveToStream(project, file.stream())) {
        flushToDisk(freshAudio(host));
        if (file.commit(true)) {
            host->keepSamples();
            host->markSaved(mark);
            host->damaged = false;
            project.ui->projectChanged(path);
            return true;
        }
    }
    tellFailure();
    if (!kept.empty()) ::unlink(kept.asChar());
    return false;
}

} // namespace

bool saveToStream(const Project& project, CStream* stream) {
    setStatus("Saving...");
    archiveCachedSamples(project.host);
    return writeAll(project, stream);
}

LoadResult loadFromStream(const Project& project, CStream* stream) {
    const LoadResult result = readProject(project, stream);
    if (result == LoadResult::good) showProjectWindows(project);
    return result;
}

LoadResult openProject(const Project& project, const CStr& name, bool remember) {
    const CStr path = absolutePath(name);
    if (!fileExists(path)) return LoadResult::notProject;
    CQV* host = project.host;
    const CStr before = host->projectFile;
    host->projectFile = path;
    if (remember) rememberLast(host, path);
    project.ui->waitCursor(true);
    LoadResult result;
    {
        CFileStream file(path, 0);
        result = loadFromStream(project, &file);
    }
    if (result == LoadResult::notProject) host->projectFile = before;
    if (result == LoadResult::good) host->updatePeaks();
    project.ui->projectChanged(host->projectFile);
    if (remember) project.ui->addRecent(path);
    project.ui->waitCursor(false);
    return result;
}

bool saveProject(const Project& project, const CStr& name) {
    const CStr path = absolutePath(name);
    const bool keeps = losesRest(project.host, path);
    return mayReplace(project.host, path) && save(project, path, keeps);
}

bool saveProjectAs(const Project& project, const CStr& name) {
    CQV* host = project.host;
    const CStr path = absolutePath(name);
    const bool keeps = losesRest(host, path);
    if (!mayReplace(host, path)) return false;
    if (!samePlace(extractFilePath(path), extractFilePath(host->projectFile))) {
        host->projectFile = path;
        host->audioFolder = changeFileExt(extractFileName(path), "") + "_audio";
        const CStr folder = host->expectedAudioFolder();
        createDir(folder);
        takeAudioAlong(host, folder);
    }
    return save(project, path, keeps);
}

bool saveCopy(const Project& project, const CStr& path) {
    CQV* host = project.host;
    const CStr own = host->projectFile;
    host->projectFile = path; // the audio is not in this one's folder
    errno = 0;
    SafeFile file(path);
    const bool written = file.stream() && writeAll(project, file.stream());
    host->projectFile = own;
    const bool done = written && file.commit(true);
    if (!done) tellFailure();
    return done;
}
