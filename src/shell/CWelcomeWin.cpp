#include "shell/CWelcomeWin.h"

#include "base/CStringList.h"
#include "base/Paths.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CFileWin.h"
#include "shell/CardList.h"
#include "shell/ProjectKinds.h"
#include "shell/StartWith.h"
#include "ui/ThemePictures.h"

#include <cstdlib>
#include <ctime>
#include <string>
#include <sys/stat.h>

namespace {

constexpr int contentWidth = 640, contentHeight = 424;
constexpr int titleHeight = 22;
constexpr int kindsWidth = 304;
constexpr int switchWidth = 160;
constexpr struct {
    int kind;
    const char *name, *detail;
} demos[] = {{kindWaltz, "Waltz", "A second demo song, for a small band"},
             {kindDemo, "Demo song", "What the program can do"}};

/// Its folder, with "~" for the home folder, and its date.
CStr detailOf(const CStr& path) {
    std::string folder = extractFilePath(path).asChar();
    if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    const char* home = std::getenv("HOME");
    const std::string homeFolder = home ? home : "";
    const bool within = !homeFolder.empty() && folder.rfind(homeFolder, 0) == 0 &&
                        (folder.size() == homeFolder.size() || folder[homeFolder.size()] == '/');
    if (within) folder.replace(0, homeFolder.size(), "~");
    struct stat info {};
    std::tm local{};
    char date[32] = "";
    if (stat(path.asChar(), &info) == 0 && localtime_r(&info.st_mtime, &local))
        std::strftime(date, sizeof(date), "%e %b %Y, ", &local);
    return CStr(date) + folder.c_str();
}

/// What a theme's logo takes above the lists.
int logoRoom() {
    const int height = CLogo::pictureHeight();
    return height ? height + CDialogWin::gap : 0;
}

} // namespace

CWelcomeWin::CWelcomeWin(CWin* owner, const CStringList& recent, int chosenKind)
    : CDialogWin(owner, "Welcome", contentWidth, contentHeight + logoRoom(),
                 winCaption | winCentre | winEscape),
      kind(kindEmpty), recentPaths(recent) {
    addControl(new CLogo(this, margin, margin));
    addButton("Create Project");
    addButton("Open...", new _COnChange<CWelcomeWin>(this, &CWelcomeWin::browseClicked));
    const int right = margin + kindsWidth + gap;
    kinds = addList("kinds", "Select Project", margin, kindsWidth);
    files = addList("recent", "Recent projects", right, contentWidth - margin - right);
    fill(chosenKind);
    addStartSwitch();
    wire(kinds->onChange, new _COnChange<CWelcomeWin>(this, &CWelcomeWin::kindChanged));
    wire(files->onChange, new _COnChange<CWelcomeWin>(this, &CWelcomeWin::recentChanged));
    startCtrl = kinds;
}

CardList* CWelcomeWin::addList(const char* name, const char* title, int x, int wide) {
    const int titleTop = margin + logoRoom(), top0 = titleTop + titleHeight;
    auto* heading = new CLabel(this, title, x, titleTop, wide, titleHeight);
    addControl(heading);
    auto* list =
        new CardList(this, name, x, top0, wide, contentBottom() - fieldHeight - gap - top0);
    heading->field = list;
    wire(list->onDoubleClick, new _COnChange<CWelcomeWin>(this, &CWelcomeWin::opened));
    addControl(list);
    return list;
}

void CWelcomeWin::fill(int chosenKind) {
    for (int i = 0; i < offeredKinds; i++)
        kinds->addCard(i, projectKindName(i), projectKindDetail(i));
    for (int i = 0; i < recentPaths.count(); i++)
        files->addCard(kindFile, changeFileExt(extractFileName(recentPaths.get(i)), ""),
                       detailOf(recentPaths.get(i)));
    for (const auto& demo : demos) files->addCard(demo.kind, demo.name, demo.detail);
    kinds->setIndex(chosenKind >= 0 && chosenKind < offeredKinds ? chosenKind : kindDefault);
}

void CWelcomeWin::addStartSwitch() {
    atStart = new CCheckbox(this, "atstart", "Show at start", margin, contentBottom() - fieldHeight,
                            switchWidth, fieldHeight);
    atStart->setChecked(startsWith() == startAsks);
    atStart->hint = "Without it the program starts with the last project; Setup has more";
    wire(atStart->onChange, new _COnChange<CWelcomeWin>(this, &CWelcomeWin::atStartClicked));
    addControl(atStart);
}

void CWelcomeWin::atStartClicked(CObject*) {
    setStartsWith(atStart->checked ? startAsks : startLast);
}

bool CWelcomeWin::keyDown(int key, int mods) {
    const bool inList = keyCtrl && (keyCtrl == kinds || keyCtrl == files);
    if (key == ' ' && !mods && inList && onKeyDown) return (*onKeyDown)(this, key, mods);
    return CDialogWin::keyDown(key, mods);
}

// One choice out of both lists.

void CWelcomeWin::kindChanged(CObject*) {
    files->setIndex(-1);
    firstButton->setText("Create Project");
}

void CWelcomeWin::recentChanged(CObject*) {
    kinds->setIndex(-1);
    firstButton->setText("Open Project");
}

void CWelcomeWin::opened(CObject*) {
    accept();
}

void CWelcomeWin::accept() {
    const int file = files->index;
    if (file < 0 && kinds->index < 0) return;
    const int demo = file - recentPaths.count();
    kind = file < 0 ? kinds->index : demo < 0 ? kindFile : demos[demo].kind;
    path = kind == kindFile ? recentPaths.get(file) : CStr();
    CDialogWin::accept();
}

void CWelcomeWin::browseClicked(CObject*) {
    const CStr folder = extractFilePath(recentPaths.first());
    CFileWin dialog(this, "Open", ".qv", folder, "", false);
    dialog.showModal();
    if (!dialog.result) return;
    kind = kindFile;
    path = dialog.path;
    CDialogWin::accept();
}
