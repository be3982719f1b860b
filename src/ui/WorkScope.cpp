#include "ui/WorkScope.h"

#include "gui/CApp.h"
#include "gui/CWin.h"
#include "ui/Workspace.h"

WorkScope::WorkScope(Workspace& space, CWin* window)
    : workspace(space), app(window->app), former(app->modalWin) {
    workspace.pumping++;
    app->modalWin = window;
}

WorkScope::~WorkScope() {
    app->modalWin = former;
    workspace.pumping--;
}

void WorkScope::turn() {
    app->dispatchEvents();
}
