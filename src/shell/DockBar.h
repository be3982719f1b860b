#pragma once

#include "gui/CGroup.h"

class CDocker;
class CWindowButton;

/// The tabs of a docker's pages, and at the right the window buttons of a maximized page, which has
/// no caption. The right button offers what the caption of the page in front does. Interface
/// thread.
class DockBar : public CGroup {
public:
    static constexpr int tabHeight = 18;
    static constexpr int barHeight = tabHeight + 6; ///< with the line and the gap below the tabs

    /// Hidden at first; `docker` outlives it.
    DockBar(CWin* window, CDocker* docker, int top, int width);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    void mouseOver(bool enter, int x, int y) override;
    bool keyDown(int key, int mods) override; ///< Left, Right, Home and End
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    bool pressPart(int part) override;
    int focusedPart() const override;
    /// Shows the state of the docker: the bar is there only with tabs.
    void refresh();

private:
    void addButton(CWindowButton*& button, int kind, int rightMargin);

    void goToEnd(bool last);

    CDocker* docker;
    CWindowButton *closeButton = nullptr, *sizeButton = nullptr;
    int hoverIndex = -1; ///< of `CDocker::docks`, -1 none
};
