#include "shell/Rooms.h"

#include "setup/CSetupWin.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

Rooms::Rooms(Workspace& space, CMixer& mixer, PlaylistRoom::Open open,
             std::function<CComp*()> front)
    : plugins(space.host()), arrange(space, editors), playlist(space, std::move(open)),
      surfaces(space, editors, std::move(front)), exchange(space), workspace(space), render(space),
      notes(space, editors), mixing(space, editors, mixer), panels(editors),
      pluginFolders(space, plugins.processes) {
    workspace.commands().bind("setup", [this] { openSetup(); });
}

Rooms::~Rooms() = default;

void Rooms::openSetup() {
    if (!setup) setup = std::make_unique<CSetupWin>(workspace);
    setup->open();
}
