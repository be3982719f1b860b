#pragma once

#include "base/CObject.h"

class CBrowser;
class CMainWin;
class CQV;
class CSplit;
class ModularPage;

/// The browser at the left of the main window, with the bar that drags its width; both are the
/// window's. Interface thread.
class BrowserSide : public CObject {
public:
    /// Binds its commands. `graph` gets what is added to the graph.
    BrowserSide(CMainWin* window, ModularPage* graph);

    /// Lays it out from `top` on, down to `below` pixels from the bottom; the pixels that it takes.
    int layout(int top, int below);
    void idle(); ///< interface tick
    void writeSettings() const;

private:
    void show(bool on);
    void setUpPlugins();

    CMainWin* window;
    CQV* qv;
    CBrowser* browser;
    CSplit* split;
    int openWidth; ///< to open again at
};
