#pragma once

#include "arrange/ArrangeRoom.h"
#include "browser/PlaylistRoom.h"
#include "mixer/MixerRoom.h"
#include "notes/NoteCommands.h"
#include "panels/PanelsRoom.h"
#include "render/RenderCommands.h"
#include "setup/PluginFoldersWin.h"
#include "surfaces/SurfacesRoom.h"
#include "ui/EditorTable.h"
#include "ui/PluginShelf.h"

#include <memory>

class CSetupWin;

/// All rooms of windows that the program has: the one place that knows them. Each binds its actions
/// and enters its editors. Interface thread.
class Rooms {
public:
    /// `mixer` is that of the project, and outlives them; `open` opens another project.
    Rooms(Workspace& workspace, CMixer& mixer, PlaylistRoom::Open open);
    ~Rooms();
    Rooms(const Rooms&) = delete;
    Rooms& operator=(const Rooms&) = delete;

    EditorTable editors;
    PluginShelf plugins;
    ArrangeRoom arrange;
    PlaylistRoom playlist;
    std::unique_ptr<CSetupWin> setup; ///< null until it is opened first

private:
    void openSetup();

    Workspace& workspace;
    const RenderCommands render;
    const NoteCommands notes;
    const MixerRoom mixing;
    const PanelsRoom panels;
    const SurfacesRoom surfaces;
    const AskPluginFolders pluginFolders;
};
