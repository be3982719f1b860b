#pragma once

#include "gui/CCtrl.h"
#include "gui/CDrag.h"

#include <functional>

class CBrowserPreview;

/// The wave of the file that is listened to: a press plays it from there, the arrows move the place
/// by a twentieth. A drag, or the arrows with Shift, choose a range, which plays alone and can be
/// dragged out. Interface thread.
class PreviewWave : public CCtrl, private DragHandler {
public:
    std::function<void()> onDragOut; ///< the range begins to be dragged
    std::function<void()> onBring;   ///< it is to come to the song

    PreviewWave(CWin* win, CBrowserPreview* preview);

    void idle();      ///< follows what is heard; interface tick
    void fileShown(); ///< another file, or it plays or not
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

private:
    void dragBegin(const DragPoint& point) override;
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    void dragClick(const DragPoint& point) override;

    int xOf(int frame) const;
    int frameAt(int x) const;
    bool inRange(int x) const;
    void choose(int from, int to);
    bool grow(int by);
    CRect lineAt(int x) const;
    void tellRange();

    CBrowserPreview* preview;
    int shownX = -1; ///< of the line at what is heard; -1 none
    int formerFrom = 0, formerTo = 0;
    bool out = false; ///< the range is dragged, not chosen
};
