#include "shell/StartFiles.h"

#include "base/Messages.h"
#include "base/Paths.h"
#include "interchange/DawFiles.h"
#include "project/BringIn.h"
#include "shell/CMainWin.h"
#include "shell/ProjectFlows.h"
#include "shell/Rooms.h"

#include <algorithm>
#include <utility>

StartFiles::StartFiles(CMainWin* win, const std::vector<CStr>& paths) : window(win) {
    for (const CStr& path : paths) sort(path);
}

void StartFiles::sort(const CStr& path) {
    const CStr ext = extractFileExt(path);
    bool any = false;
    if (!fileExists(path))
        refused += path + " is not there.\n";
    else if (sameText(ext, ".qv") && !project.empty())
        refused += path + " is a second project.\n";
    else if (sameText(ext, ".qv"))
        project = path;
    else if (songFileOf(path) != SongFile::none)
        toSong.push_back(path);
    else if (hasFileExt(path, ".dawproject|.qvl|.qcs", any))
        toOpen.push_back(path);
    else
        refused += path + " is of no kind that can be opened.\n";
}

/// A look or a surface alone leaves the start as it is.
bool StartFiles::needsSong() const {
    bool any = false;
    const auto song = [&](const CStr& path) { return hasFileExt(path, dawFileExt, any); };
    return !toSong.empty() || std::any_of(toOpen.begin(), toOpen.end(), song);
}

void StartFiles::start() {
    if (!project.empty())
        window->flows->startWith(kindFile, project);
    else if (needsSong())
        window->flows->startWith(kindEmpty, "");
    else
        window->flows->start();
}

void StartFiles::serve() {
    for (const CStr& path : std::exchange(toOpen, {})) window->opensFile(path);
    if (!toSong.empty())
        window->rooms->arrange.imports.comeBeside(std::exchange(toSong, {}), "Open");
    if (!refused.empty()) showMsg(window, "Open", std::exchange(refused, "").trim());
}
