#pragma once

#include "arrange/ArrangeRoom.h"
#include "browser/PlaylistRoom.h"
#include "mixer/MixerRoom.h"
#include "notes/NoteCommands.h"
#include "panels/PanelsRoom.h"
#include "render/ExchangeCommands.h"
#include "render/RenderCommands.h"
#include "setup/PluginFoldersWin.h"
#include "surfaces/SurfacesRoom.h"
#include "ui/EditorTable.h"
#include "ui/PluginShelf.h"

#include <functional>
#include <memory>

class CSetupWin;

/// All rooms of windows that the program has: the one place that knows them. Each binds its actions
/// and enters its editors. Interface thread.
class Rooms {
public:
    /// `mixer` is that of the project, and outlives them; `open` opens another project, and
    /// `front` tells the component that the user has in front.
    Rooms(Workspace& workspace, CMixer& mixer, PlaylistRoom::Open open,
          std::function<CComp*()> front);
    ~Rooms();
    Rooms(const Rooms&) = delete;
    Rooms& operator=(const Rooms&) = delete;

    EditorTable editors;
    PluginShelf plugins;
    ArrangeRoom arrange;
    PlaylistRoom playlist;
    SurfacesRoom surfaces;
    ExchangeCommands exchange;
    std::unique_ptr<CSetupWin> setup; ///< null until it is opened first

private:
    void openSetup();

    Workspace& workspace;
    const RenderCommands render;
    const NoteCommands notes;
    const MixerRoom mixing;
    const PanelsRoom panels;
    const AskPluginFolders pluginFolders;
};
