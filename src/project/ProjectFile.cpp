#include "project/ProjectFile.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "engine/CQV.h"
#include "project/CachedSamples.h"
#include "project/ProjectUi.h"
#include "project/ProjectWriter.h"

#include <exception>
#include <vector>

namespace {

void rememberLast(CQV* host, const CStr& path) {
    if (host->settingsEnabled) CIniFile(inifile).writeString("last", "project", path);
}

/// Samples that have to go along into another folder: those of the old audio folder, and all other
/// files.
std::vector<CSample*> travellers(CQV* host) {
    std::vector<CSample*> found;
    for (auto* sample : each<CSample>(host->samples))
        if (sample->streamed && !sample->filename.empty() && fileExists(sample->filename))
            found.push_back(sample);
    return found;
}

} // namespace

bool saveToStream(const Project& project, CStream* stream) {
    CQV* host = project.host;
    setStatus("Saving...");
    bool done = false;
    try {
        archiveCachedSamples(host);
        project.ui->gatherWindows();
        writeProject(project, stream);
        done = true;
    } catch (const std::exception&) {
        showMsg(nullptr, "Save", CStr("There was an error saving ") + host->projectFile);
    }
    return done;
}

LoadResult loadFromStream(const Project& project, CStream* stream) {
    const LoadResult result = readProject(project, stream);
    if (result == LoadResult::good) showProjectWindows(project);
    return result;
}

LoadResult openProject(const Project& project, const CStr& path, bool remember) {
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

bool saveProject(const Project& project, const CStr& path) {
    CQV* host = project.host;
    SafeFile file(path);
    host->projectFile = path;
    if (file.stream() && saveToStream(project, file.stream()) && file.commit(true)) {
        host->keepSamples();
        host->modified = false;
        project.ui->projectChanged(path);
        return true;
    }
    showMsg(nullptr, "Error",
            "There was an error writing the project. Free up some disk space then try again");
    return false;
}

bool saveProjectAs(const Project& project, const CStr& path) {
    CQV* host = project.host;
    if (!sameText(extractFilePath(path), extractFilePath(host->projectFile))) {
        const std::vector<CSample*> samples = travellers(host);
        host->projectFile = path;
        host->audioFolder = changeFileExt(extractFileName(path), "") + "_audio";
        const CStr folder = host->expectedAudioFolder();
        createDir(folder);
        for (CSample* sample : samples) host->copyToArchive(sample, folder);
    }
    return saveProject(project, path);
}
