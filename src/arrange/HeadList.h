#pragma once

#include "gui/CGroup.h"

#include <vector>

class ArrangeState;
class TrackHead;
class CSongTrack;

/// The heads of the tracks, beside their rows. Tab stops at one head, that of the selected track;
/// Up and Down lead to those of others and select them, with Shift besides, Left and Right from the
/// head to what is on it.
class HeadList : public CGroup {
public:
    COnChange* onHeadMenu = nullptr; ///< owned; the context menu of a head is wanted

    HeadList(CWin* win, ArrangeState& state);
    ~HeadList() override;

    void paint(CGraphic* g, CRect rect) override;
    bool keyInside(int key, int mods) override;
    bool contextMenu() override; ///< of the head with the focus, or that was pressed
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;

    /// Makes the heads anew by the rows of the state.
    void songChanged();
    void forgetSong(); ///< the song is about to be deleted
    void cablesChanged();
    /// Places the heads by the rows and what is scrolled.
    void place();
    /// Follows what is heard; whether that shows.
    bool refresh();
    /// Selects the track `by` rows below the selected one and shows it; false without another.
    bool stepTrack(int by);

private:
    /// Where the focus is among the heads; both -1 elsewhere.
    struct Place {
        int row = -1, stop = -1;
    };
    Place focusPlace() const;
    void focusOn(Place place);
    void markStops();
    void selectRow(int index, bool besides);

    ArrangeState& state;
    std::vector<TrackHead*> heads; ///< among `controls`, in the order of the rows
};
