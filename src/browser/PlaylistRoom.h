#pragma once

#include "browser/mapper/CFileMapper.h"

#include <functional>
#include <memory>

class CFileMapperWin;
class Workspace;

/// The playlist and its window. Interface thread.
class PlaylistRoom {
public:
    /// Opens a project, after the question about what is not saved.
    using Open = std::function<void(const CStr& path)>;

    /// Binds its command. The host's program changes come here from now on.
    PlaylistRoom(Workspace& workspace, Open open);
    ~PlaylistRoom();
    PlaylistRoom(const PlaylistRoom&) = delete;
    PlaylistRoom& operator=(const PlaylistRoom&) = delete;

    CFileMapper mapper;

    void begin(); ///< shows the window, if it was there when the program ended
    /// Opens the project that waits; interface tick, while no other project is on its way.
    void serve();
    void writeSettings() const;

private:
    void clicked(); ///< shows or hides it
    void show();

    Workspace& workspace;
    const Open open;
    CStr tried;                             ///< the project that was opened last, until it is there
    std::unique_ptr<CFileMapperWin> window; ///< null until it shows first
};
