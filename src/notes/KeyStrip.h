#pragma once

#include "base/CStr.h"
#include "gui/CCtrl.h"

#include <map>

class EventRows;
class NoteState;

/// The keys beside the notes, with the names of drums where the track plays such. A press plays
/// one, and a drag one after the other; with Control it selects all notes of the key, with Shift
/// too beside what is selected. The wheel scrolls, with Control it makes keys higher. Interface
/// thread.
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
    void paintNames(CGraphic* g, const EventRows& rows, const std::map<int, CStr>& drums,
                    CRect asked) const;
    void play(int row);
    void selectRow(int row, bool more);

    NoteState& state;
    int sounding = -1; ///< row
};
