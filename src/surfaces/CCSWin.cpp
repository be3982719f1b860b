#include "surfaces/CCSWin.h"

#include "gui/CGui.h"
#include "surfaces/SurfacePanel.h"

namespace {

constexpr int winStyle = winCaption | winSizable | winKeysToOwner | winCentre;
constexpr int firstWide = 320, firstHigh = 200, leastWide = 160, leastHigh = 120;

} // namespace

CCSWin::CCSWin(CWin* owner, CCS& surface)
    : CWin(owner->app, owner, "Panel", 0, 0, firstWide, firstHigh, winStyle),
      panel(new SurfacePanel(this, surface)) {
    minWidth = leastWide;
    minHeight = leastHigh;
    addControl(panel);
}

void CCSWin::open() {
    const CPoint size = panel->wanted();
    setSize(size.x + 2 * borderSize, size.y + 2 * borderSize + captionHeight);
    panel->idle();
    show(true);
}

void CCSWin::idle() {
    panel->idle();
}

void CCSWin::resized() {
    CWin::resized();
    if (!panel) return;
    panel->setBounds(0, 0, clientGroup->width, clientGroup->height);
    panel->idle();
}
