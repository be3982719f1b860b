#include "surfaces/SurfacesRoom.h"

#include "engine/CQV.h"
#include "surfaces/CMIDIMapWin.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Workspace.h"

SurfacesRoom::SurfacesRoom(Workspace& space, EditorTable& editors) {
    CQV* host = space.host();
    editors.enter(*host, [host](Workspace& around, CComp&) {
        return std::make_unique<CMIDIMapWin>(around, *host);
    });
    space.commands().bind(
        "maps", [&space, host] { space.openEditor(host); }, {},
        [&space, host] { return space.isOpen(host); });
}
