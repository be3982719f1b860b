#pragma once

#include "shell/OnlineCheck.h"

class CMainWin;
class CQV;

/// The actions of the main window: transport, history, projects, pages. Interface thread.
class MainCommands {
public:
    /// Binds them; outlives the table's use.
    explicit MainCommands(CMainWin* window);
    void serve() { online.serve(); } ///< in each tick

private:
    void bindFlows();
    void bindTransport();
    void bindWindow();

    bool clicking() const;
    void play(); ///< or stop, while playing
    void loop();
    void metronome();
    void about();

    CMainWin* window;
    CQV* qv;
    OnlineCheck online;
};
