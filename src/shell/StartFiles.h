#pragma once

#include "base/CStr.h"

#include <vector>

class CMainWin;

/// The files that the program is called with. The first project among them is what it starts with;
/// songs, sounds and clips come into that, or else into an empty one, as if they were dropped on
/// the window. Looks and surfaces are put on. Interface thread.
class StartFiles {
public:
    StartFiles(CMainWin* window, const std::vector<CStr>& paths);

    /// Starts with a project that suits them. Once, when all stands.
    void start();
    /// Brings them in; interface tick, while no project is on its way.
    void serve();

private:
    void sort(const CStr& path);
    bool needsSong() const;

    CMainWin* window;
    CStr project;
    std::vector<CStr> toSong, toOpen; ///< what is not there yet
    CStr refused;                     ///< lines about what can't be opened
};
