#include "app/render/WorkScope.h"

#include "app/main/CMainWin.h"
#include "gui/CApp.h"

WorkScope::WorkScope(CMainWin* mainWin, CWin* window)
    : main(mainWin), former(mainWin->app->modalWin) {
    main->pumping++;
    main->app->modalWin = window;
}

WorkScope::~WorkScope() {
    main->app->modalWin = former;
    main->pumping--;
}

void WorkScope::turn() {
    main->app->dispatchEvents();
}
