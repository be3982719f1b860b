#include "surfaces/SurfacesRoom.h"

#include "base/CIniFile.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "surfaces/CConfigWin.h"
#include "surfaces/CMIDIMapWin.h"
#include "surfaces/SurfaceTarget.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Workspace.h"

namespace {

constexpr const char *section = "options", *surfaceKey = "surface";

} // namespace

SurfacesRoom::SurfacesRoom(Workspace& space, EditorTable& editors, std::function<CComp*()> front)
    : surface(space.host()), workspace(space) {
    CQV* host = space.host();
    editors.enter(*host, [host](Workspace& around, CComp&) {
        return std::make_unique<CMIDIMapWin>(around, *host);
    });
    space.commands().bind(
        "maps", [&space, host] { space.openEditor(host); }, {},
        [&space, host] { return space.isOpen(host); });
    space.commands().bind(
        "surface", [this] { showConfig(); }, {}, [this] { return window && window->visible; });
    surface.target = [host, front](int index) { return surfaceParamOf(host, front(), index); };
    surface.stepTrack = [host](int by) { stepSelectedTrack(host, by); };
    surface.open(iniReadString(section, surfaceKey, ""));
}

SurfacesRoom::~SurfacesRoom() = default;

bool SurfacesRoom::openFile(const CStr& path) {
    if (!sameText(extractFileExt(path), ".qcs") || !surface.open(path)) return false;
    if (window) window->rebuild();
    workspace.setStatus("Control surface: " + extractFileName(path));
    return true;
}

void SurfacesRoom::showConfig() {
    if (window && window->visible) return window->hide();
    if (!window) window = std::make_unique<CConfigWin>(workspace, surface);
    window->rebuild();
    window->show(true);
}

void SurfacesRoom::idle() {
    surface.idle();
    if (window && window->visible) window->idle();
}

void SurfacesRoom::writeSettings() const {
    CIniFile(inifile).writeString(section, surfaceKey, surface.path);
}
