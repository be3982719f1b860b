#pragma once

#include "gui/CCtrl.h"

class NoteState;

/// The bars above the notes; the stretch of the part is marked. A press moves the play position,
/// the wheel zooms. Interface thread.
class NoteRuler : public CCtrl {
public:
    static constexpr int rulerHeight = 20;

    NoteRuler(CWin* win, NoteState& state);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;

private:
    void jumpTo(int x);

    NoteState& state;
};
