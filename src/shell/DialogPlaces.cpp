#include "shell/DialogPlaces.h"

#include "base/Paths.h"
#include "base/UserFolders.h"
#include "gui/CApp.h"
#include "gui/dialogs/CFileWin.h"
#include "shell/RecentFiles.h"
#include "ui/IniFolders.h"

namespace {

void addFolder(CFileWin* dialog, const CStr& path) {
    const CStr folder = addSep(path);
    if (!folderExists(folder)) return;
    const CStr name = extractFileName(folder.sub(0, folder.length() - 1));
    dialog->addPlace(name.empty() ? folder : name, folder);
}

} // namespace

DialogPlaces::DialogPlaces(CApp* application, CQV* host) : app(application), qv(host) {
    wire(app->onFileDialog, new _COnChange(this, &DialogPlaces::dialogMade));
}

DialogPlaces::~DialogPlaces() {
    wire(app->onFileDialog, nullptr);
}

void DialogPlaces::dialogMade(CFileWin* dialog) {
    const struct {
        const char *key, *name;
    } kinds[] = {{"DESKTOP", "Desktop"}, {"DOCUMENTS", "Documents"}, {"MUSIC", "Music"}};
    for (const auto& kind : kinds) dialog->addPlace(kind.name, userFolder(kind.key, kind.name));
    CStringList projects;
    readIniFolders(qv, modeToSection(foldersProject), &projects);
    for (int i = 0; i < projects.count(); i++) addFolder(dialog, projects.get(i));
    RecentFiles recent;
    recent.addRecent("");
    for (int i = 0; i < recent.paths.count(); i++)
        addFolder(dialog, extractFilePath(recent.paths.get(i)));
}
