#pragma once

#include "gui/CCtrl.h"

class CQV;

/// How loud the devices play, whatever the song's own level: a bar that is dragged, or turned with
/// the wheel. A double click gives full volume.
class CMonitorVolume : public CCtrl {
public:
    static constexpr int full = 100;

    CMonitorVolume(CWin* win, int left, int top, int width, int height, CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override; ///< Left and Right
    void refresh();                           ///< somebody else may have changed it
    int getPercent() const;
    void setPercent(int percent); ///< clamped to 0 to `full`

private:
    CQV* qv;
    int shownPercent = full;
};
