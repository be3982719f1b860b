#pragma once

#include "surfaces/CCS.h"
#include "surfaces/OscPort.h"

#include <functional>
#include <memory>

class CComp;
class CConfigWin;
class Mackie;
class EditorTable;
class Workspace;

/// The windows of controllers, and the controller whose definition is open. Interface thread.
class SurfacesRoom {
public:
    /// Enters the map window, binds the commands, and opens the definition of the settings. `front`
    /// tells which component the user has in front, null none.
    SurfacesRoom(Workspace& workspace, EditorTable& editors, std::function<CComp*()> front);
    ~SurfacesRoom();
    SurfacesRoom(const SurfacesRoom&) = delete;
    SurfacesRoom& operator=(const SurfacesRoom&) = delete;

    CCS surface;

    /// A file that was dropped on the program; it is kept for the next start. False for no
    /// definition.
    bool openFile(const CStr& path);
    void idle(); ///< interface tick
    void writeSettings();

    /// The port that Open Sound Control comes to, 0 for none, and the address that it goes to; both
    /// are kept. A line for the user when that could not be done, else empty.
    CStr setOscPort(int port);
    CStr setOscTarget(const CStr& address);

private:
    void openOsc();
    void serveOsc();
    void showConfig();
    void findFeedback();

    Workspace& workspace;
    CStr feedbackName; ///< of the output to be found; empty when it has been, or there is none
    void serveControl();
    Osc osc;
    OscPort oscPort;
    std::unique_ptr<Mackie> control;    ///< while a port is chosen for it
    std::unique_ptr<CConfigWin> window; ///< null until it shows first
};
