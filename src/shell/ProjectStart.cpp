// What the program begins with: the choices of the settings, and what a crash has left.
#include "shell/ProjectFlows.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "shell/CMainWin.h"
#include "shell/CWelcomeWin.h"
#include "shell/StartWith.h"

#include <utility>

namespace {

CStr demoSongFile() {
    const CStr beside = extractFilePath(asAppname());
    for (const CStr& folder : {beside, uplevel(beside)}) {
        const CStr path = addSep(folder) + "projects/demosong.qv";
        if (fileExists(path)) return path;
    }
    return "";
}

} // namespace

void ProjectFlows::start() {
    recent.addRecent("");
    const bool left = !leftCopies(recent.paths).empty();
    if (left)
        mustBegin = true; // with a question, which needs the loop
    else
        begin();
}

void ProjectFlows::startWith(int kind, const CStr& path) {
    wish = std::make_unique<Request>(Request{kind, path});
    start();
}

void ProjectFlows::begin() {
    const auto wanted = std::exchange(wish, nullptr);
    const bool recovers = mustBegin && recoverAny();
    mustBegin = false; // until it was answered another project was coming
    if (recovers) {
        if (wanted && !(wanted->path == qv->projectFile))
            requestProject(wanted->kind, wanted->path);
        return;
    }
    CStr told;
    if (wanted)
        told = beginWith(*wanted);
    else
        beginWithout();
    if (!recovered) setStatus(told);
}

/// What the user asks for, else nothing; the reason comes back.
CStr ProjectFlows::beginWith(const Request& wanted) {
    if (wanted.kind != kindFile) {
        create(wanted.kind);
        return "";
    }
    const LoadResult result = open(wanted.path);
    if (result != LoadResult::notProject) return "";
    create(kindEmpty);
    return wanted.path + " is no project";
}

void ProjectFlows::beginWithout() {
    const int with = startsWith();
    if (with == startDefault) create(kindDefault);
    if (with == startLast) beginLast();
    if (with != startAsks) return;
    if (RecentFiles::lastProject().empty())
        create(kindDemo); // somebody new can press play behind the question
    mustWelcome = true;
}

void ProjectFlows::beginLast() {
    const CStr last = RecentFiles::lastProject(), demo = demoSongFile();
    for (const CStr& path : {last, demo})
        if (!path.empty() && open(path) == LoadResult::good) return;
    create(kindDemo);
}

void ProjectFlows::newClicked() {
    if (asking || window->app->modalWin) return;
    CWelcomeWin welcome(window, recent.paths, iniReadInt("last", "template", kindDefault));
    wire(welcome.onKeyDown, new _COnKey<ProjectFlows>(this, &ProjectFlows::welcomeKey));
    welcome.showModal();
    if (!welcome.result) return;
    if (welcome.kind >= 0 && welcome.kind < offeredKinds)
        CIniFile(inifile).writeInteger("last", "template", welcome.kind);
    newProject(welcome.kind, welcome.path);
}

bool ProjectFlows::welcomeKey(CObject*, int&, int) {
    return window->playOrStop();
}

// The copies that a crash has left.

/// Asks about a copy. What is not wanted, or older than its project, is set aside under another
/// name, so that the question comes once and nothing is lost.
bool ProjectFlows::wants(const LeftCopy& left) {
    const CStr what = left.projectFile.empty() ? CStr("a project without a name")
                                               : CStr("the changes to ") + left.projectFile;
    const CStr text = CStr("The program has ended without saving ") + what +
                      ". Open the copy that was made of it?";
    if (!left.outdated && showMsg(window, productName, text, mbYes | mbNo) == mbYes) return true;
    setAside(left);
    return false;
}

LoadResult ProjectFlows::recover(const LeftCopy& left) {
    ui.waitCursor(true);
    const LoadResult result = autoSave.recover(left);
    ui.waitCursor(false);
    recovered = result == LoadResult::good;
    setStatus(recovered ? "The changes are back. Save the project to keep them" : "");
    if (recovered && !left.projectFile.empty()) recent.addRecent(left.projectFile);
    return result;
}

bool ProjectFlows::recoverAny() {
    for (const LeftCopy& left : leftCopies(recent.paths))
        if (wants(left) && recover(left) == LoadResult::good) return true;
    return false;
}
