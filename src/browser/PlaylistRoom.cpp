#include "browser/PlaylistRoom.h"

#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "browser/mapper/CFileMapperWin.h"
#include "engine/CQV.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* section = "file mapper";
constexpr int usualPlace = 100;

} // namespace

PlaylistRoom::PlaylistRoom(Workspace& space, Open openProject)
    : workspace(space), open(std::move(openProject)) {
    workspace.host()->fileMapper = &mapper;
    workspace.commands().bind(
        "playlist", [this] { clicked(); }, {}, [this] { return mapper.getEnabled(); });
}

PlaylistRoom::~PlaylistRoom() {
    workspace.host()->fileMapper = nullptr;
}

void PlaylistRoom::begin() {
    if (iniReadInt(section, "visible", 0)) show();
}

void PlaylistRoom::clicked() {
    if (mapper.getEnabled())
        window->hide();
    else
        show();
}

void PlaylistRoom::show() {
    if (!window) {
        window = std::make_unique<CFileMapperWin>(&mapper, workspace.mainWindow());
        const CPoint size = window->getSize();
        window->setPos(iniReadInt(section, "left", usualPlace),
                       iniReadInt(section, "top", usualPlace));
        window->setSize(asMax(window->minWidth, iniReadInt(section, "width", size.x)),
                        asMax(window->minHeight, iniReadInt(section, "height", size.y)));
    }
    window->show(true);
}

void PlaylistRoom::serve() {
    if (!mapper.getEnabled() || mapper.getPlayNext().empty()) return;
    const CStr next = mapper.getPlayNext();
    // One that the user has refused, or that cannot be read, is not asked for again and again.
    if (next == workspace.host()->projectFile || next == tried) {
        mapper.clearPlayNext();
        tried = "";
    } else if (fileExists(next)) {
        tried = next;
        open(next);
    }
}

void PlaylistRoom::writeSettings() const {
    CIniFile ini(inifile);
    ini.writeInteger(section, "visible", mapper.getEnabled());
    if (!window) return;
    const CPoint at = window->getPos(true), size = window->getSize();
    ini.writeInteger(section, "left", at.x);
    ini.writeInteger(section, "top", at.y);
    ini.writeInteger(section, "width", size.x);
    ini.writeInteger(section, "height", size.y);
}
