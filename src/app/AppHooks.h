#pragma once

#include "engine/EditorHooks.h"

class CApp;
class CMainWin;

/// Fills in what the lower floors ask of the windows: message boxes, the status line, the loop that
/// goes on while an edit waits, the tick of the main window. One at a time; interface thread.
class AppHooks : public EditorHooks {
public:
    AppHooks(CApp* app, CMainWin* window);
    ~AppHooks() override;
    AppHooks(const AppHooks&) = delete;
    AppHooks& operator=(const AppHooks&) = delete;

    void mainIdle() override;

private:
    CMainWin* mainWin;
};
