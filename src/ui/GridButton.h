#pragma once

#include "ui/SongMenuButton.h"

/// The grid of the song where there is room for a word: tells it, and offers the others in a menu.
/// Interface thread.
class GridButton : public SongMenuButton {
public:
    static constexpr int usualWidth = 64;

    GridButton(CWin* win, Workspace& workspace, int left, int top, int height);

    void refresh(); ///< follows the grid

private:
    void fill(CPopup* popup, CSeq* seq) override;
    void chosen(CObject* sender);
    void kindChosen(CObject* sender);
};
