#include "shell/ProjectFlows.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/dialogs/CFileWin.h"
#include "interchange/Bundle.h"
#include "project/ProjectFile.h"
#include "shell/CMainWin.h"
#include "shell/CWelcomeWin.h"
#include "ui/CListWin.h"
#include "ui/CProgressWin.h"
#include "ui/Song.h"

namespace {

constexpr const char* projectExt = ".qv";
constexpr int askYesNoCancel = mbYes | mbNo | mbCancel;

constexpr const char* defaultName = "default.qv";

/// The user's own one goes before that of the program.
CStr defaultProjectFile() {
    const CStr beside = extractFilePath(asAppname());
    const CStr own = ownFile(beside, defaultName);
    return fileExists(own) ? own : beside + defaultName;
}

} // namespace

ProjectFlows::ProjectFlows(CMainWin* mainWin, CQV* host)
    : mixer(host), window(mainWin), qv(host), ui(mainWin), project{host, &mixer, &ui},
      autoSave(project) {
    mixer.init();
}

ProjectFlows::~ProjectFlows() = default;

// From a request to the new project.

void ProjectFlows::requestProject(int kind, const CStr& path) {
    requested = std::make_unique<Request>(Request{kind, path});
}

void ProjectFlows::newProject(int kind, const CStr& path) {
    if (queued || asking || !mayLeave()) return;
    next = {kind, path};
    queued = true;
    if (!qv->addTask(new _COnChange<ProjectFlows>(this, &ProjectFlows::needLoad), nullptr))
        queued = false;
}

void ProjectFlows::needLoad(CObject*) {
    loadNeeded = true;
}

void ProjectFlows::tick() {
    if (ticking) return; // a question is open
    ticking = true;
    if (mustBegin) begin();
    if (mustWelcome && !window->app->modalWin) {
        mustWelcome = false;
        newClicked();
        if (!queued && !songOf(qv)) create(kindEmpty); // who chooses nothing can begin all the same
    }
    if (requested && !asking) {
        const Request wanted = *requested;
        requested.reset();
        newProject(wanted.kind, wanted.path);
    }
    // A dialog or menu that has opened since waits in the handler of a window that would go.
    if (loadNeeded && !window->app->modalWin && window->app->menus.empty()) load();
    if (!qv->undoBusy()) autoSave.idle(asTimeInMS());
    ticking = false;
}

void ProjectFlows::load() {
    const Request wanted = next;
    LoadResult result = LoadResult::good;
    recovered = false;
    if (wanted.kind == kindFile)
        result = open(wanted.path);
    else
        create(wanted.kind);
    if (result != LoadResult::notProject && !recovered) autoSave.discard();
    queued = false;
    loadNeeded = false;
    if (!recovered)
        setStatus(result == LoadResult::notProject ? wanted.path + " is no project" : CStr());
}

LoadResult ProjectFlows::open(const CStr& path) {
    CStringList projects;
    projects.add(path);
    for (const LeftCopy& left : leftCopies(projects)) {
        if (!(left.projectFile == path) || !wants(left)) continue;
        const LoadResult result = recover(left);
        if (result != LoadResult::notProject) return result;
    }
    return openProject(project, path, true);
}

void ProjectFlows::openClicked() {
    CFileWin dialog(window, "Open", projectExt, window->dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    window->projectFolder = dialog.folder;
    newProject(kindFile, dialog.path);
}

void ProjectFlows::openLast() {
    const CStr last = RecentFiles::lastProject();
    if (fileExists(last)) newProject(kindFile, last);
}

void ProjectFlows::create(int kind) {
    ui.waitCursor(true);
    if (kind != kindDefault || !openDefault()) {
        ui.clearWindows();
        ui.windows = WindowRecords();
        qv->clear();
        mixer.clear();
        qv->init();
        mixer.init();
        createProject(qv, kind);
    }
    ui.projectChanged("");
    ui.waitCursor(false);
}

bool ProjectFlows::openDefault() {
    const bool good = openProject(project, defaultProjectFile(), false) == LoadResult::good;
    if (good) qv->projectFile = "";
    return good;
}

// Saving.

bool ProjectFlows::saveClicked() {
    const CStr path = qv->projectFile;
    if (path.empty() || !fileExists(path)) return saveAsClicked();
    const bool saved = saveProject(project, path);
    if (saved) autoSave.discard();
    setStatus(saved ? CStr("Saved ") + path : CStr());
    return saved;
}

bool ProjectFlows::saveAsClicked() {
    const CStr before = qv->projectFile;
    const CStr name = before.empty() ? CStr("untitled") + projectExt : extractFileName(before);
    CFileWin dialog(window, "Save as", projectExt, window->dialogFolder(), name, true);
    dialog.showModal();
    if (!dialog.result) return false;
    window->projectFolder = dialog.folder;
    const bool saved = saveProjectAs(project, dialog.path);
    if (saved) {
        autoSave.discard();
        recent.addRecent(dialog.path);
    }
    setStatus(saved ? CStr("Saved ") + dialog.path : CStr());
    return saved;
}

void ProjectFlows::setDefaultClicked() {
    const CStr path = ownFile(extractFilePath(asAppname()), defaultName);
    if (saveCopy(project, path)) setStatus("Saved as the default project");
}

void ProjectFlows::collectClicked() {
    constexpr const char* title = "Collect and pack";
    const CStr name = changeFileExt(qv->projectFile.empty() ? CStr("untitled.qv")
                                                            : extractFileName(qv->projectFile),
                                    bundleExt);
    CFileWin dialog(window, title, bundleExt, window->dialogFolder(), name, true);
    dialog.showModal();
    if (!dialog.result) return;
    window->projectFolder = dialog.folder;
    std::vector<CStr> lost;
    DawResult result = DawResult::good;
    {
        CProgressWin progress(*window, title);
        result = packProject(project, dialog.path, lost, watchBy(progress));
    }
    if (result == DawResult::notWritten)
        showMsg(window, "Error", CStr("Could not write file ") + dialog.path);
    if (result != DawResult::good) return;
    setStatus(CStr("Packed ") + dialog.path);
    showList(window, title, "Audio that is not there:", lost);
}

bool ProjectFlows::mayLeave() {
    if (asking) return false;
    if (qv->recording) qv->endTake();
    if (!qv->modified() || !window->options().savePrompt.on()) return true;
    const CStr text = qv->projectFile.empty() ? CStr("Save changes?")
                                              : CStr("Save changes to ") + qv->projectFile + "?";
    asking = true;
    const int answer = showMsg(window, productName, text, askYesNoCancel);
    const bool leaves = answer == mbNo || (answer == mbYes && saveClicked());
    asking = false;
    return leaves;
}

void ProjectFlows::close() {
    autoSave.discard();
}
