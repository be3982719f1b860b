#pragma once

#include "gui/CWin.h"

class CCS;
class SurfacePanel;

/// "Panel": what the controls of a controller do at present, as they lie on the device. Interface
/// thread.
class CCSWin : public CWin {
public:
    CCSWin(CWin* owner, CCS& surface);

    void open(); ///< as large as the definition tells
    void idle(); ///< interface tick, while it shows
    void resized() override;

private:
    SurfacePanel* panel = nullptr;
};
