#pragma once

#include "gui/CGraphic.h"

/// Until the end of the scope the server cuts to the clip of a surface, where what is drawn may
/// leave it.
class ServerCut {
public:
    bool leavesAny; ///< of what is drawn, whose bounds are in device pixels

    ServerCut(CGraphic* g, const CRect& drawn);
    ~ServerCut();
    ServerCut(const ServerCut&) = delete;
    ServerCut& operator=(const ServerCut&) = delete;

private:
    CGraphic* graphic;
    bool cuts;
};
