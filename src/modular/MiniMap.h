#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

class ModularView;

/// The whole graph as a small picture, with what is seen of it in a frame: a press or drag brings
/// that place into view, and so do the arrows. The wheel zooms with Control. Interface thread.
class MiniMap : public CCtrl, private DragHandler {
public:
    static constexpr int mapHeight = 120;

    MiniMap(CWin* win, ModularView& view);
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;

private:
    void dragMove(const DragPoint& point) override;
    void dragCancel() override;
    double scale() const; ///< pixels of the map per pixel of the graph
    CRect mapped(CRect ofGraph) const;
    void centre(CPoint at);

    ModularView& view;
    CPoint before; ///< of the drag, where the view was scrolled to
};
