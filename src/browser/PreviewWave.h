#pragma once

#include "gui/CCtrl.h"

class CBrowserPreview;

/// The wave of the file that is listened to: a press plays it from there, the arrows move the place
/// by a twentieth. Interface thread.
class PreviewWave : public CCtrl {
public:
    PreviewWave(CWin* win, CBrowserPreview* preview);

    void idle(); ///< follows what is heard; interface tick
    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

private:
    int xOf(int frame) const;
    CRect lineAt(int x) const;

    CBrowserPreview* preview;
    int shownX = -1; ///< of the line at what is heard; -1 none
};
