#include "shell/MainProjectUi.h"

#include "engine/CQV.h"
#include "gui/CApp.h"
#include "shell/CMainWin.h"
#include "shell/Pages.h"
#include "shell/ProjectFlows.h"

#include <utility>

namespace {

constexpr int arrowCursor = 0, busyCursor = 2;

} // namespace

void MainProjectUi::gatherWindows() {
    window->readPlace(window->comp->editorStruct);
    if (window->pages) window->pages->write(windows);
}

void MainProjectUi::clearWindows() {
    if (window->pages) window->pages->clear();
    window->forgetSong();
    opening = true;
}

void MainProjectUi::showPages() {
    if (window->pages) window->pages->read(windows);
}

void MainProjectUi::placeMainWindow() {
    window->moveTo(window->comp->editorStruct);
}

void MainProjectUi::waitCursor(bool on) {
    window->app->setCursor(on ? busyCursor : arrowCursor);
}

void MainProjectUi::projectChanged(const CStr&) {
    window->projectChanged();
    if (std::exchange(opening, false)) window->showSong();
}

void MainProjectUi::addRecent(const CStr& path) {
    window->flows->recent.addRecent(path);
}
