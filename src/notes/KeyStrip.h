#pragma once

#include "gui/CCtrl.h"

class EventRows;
class NoteState;

/// The keys beside the notes. A press plays one, and a drag one after the other. The wheel scrolls,
/// with Control it makes keys higher. Interface thread.
class KeyStrip : public CCtrl {
public:
    static constexpr int stripWidth = 120;

    KeyStrip(CWin* win, NoteState& state);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< the rows
    bool pressPart(int part) override;

private:
    void paintKeys(CGraphic* g, const EventRows& rows, CRect asked) const;
    int rowAt(int y) const; ///< -1 outside all
    CRect rowBox(const EventRows& rows, int row) const;
    void play(int row);

    NoteState& state;
    int sounding = -1; ///< row
};
