#pragma once

#include "base/CStr.h"

#include <memory>
#include <vector>

class AccessLoader;
class AppHooks;
class CAAM;
class CApp;
class CMainWin;
class CQV;

/// What lives for the length of a run of the program, built and torn down in the order that this
/// needs: the bridge dies first, so that no callback arrives any more, then the window, the host,
/// the application. One at a time, since it sets the globals `qv`, `aam` and `inifile`; on the
/// thread that becomes the interface thread.
class ProgramRun {
public:
    ProgramRun();
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    /// Shows the main window, opens the devices of the settings. False without a display.
    bool open();
    /// Opens the files, then the event loop, until the main window is closed.
    void run(const std::vector<CStr>& files = {});

    CApp* application() { return app.get(); }
    CMainWin* mainWindow() { return window.get(); }

private:
    std::unique_ptr<CApp> app;
    std::unique_ptr<CQV> host;
    std::unique_ptr<AppHooks> hooks;
    std::unique_ptr<CMainWin> window;
    std::unique_ptr<AccessLoader> access;
    std::unique_ptr<CAAM> bridge;
};

/// Runs the program until its window closes; returns the process's exit status. Without a display,
/// or with an option that it does not know, it says so on standard error and returns 1.
int runapp(int argc, char** argv);
