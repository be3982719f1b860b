#pragma once

#include "arrange/ArrangeState.h"
#include "gui/CGroup.h"
#include "ui/NoticeRouter.h"
#include "ui/Options.h"

#include <memory>
#include <vector>

class ArrangeGrid;
class CRangebar;
class CScrollbar;
class CSongTrack;
class EmptySong;
class HeadCorner;
class HeadList;
class ObjectBar;
class Overview;
class RulerBars;
class SnapBar;
class TrackCommands;

/// The arrangement: heads of tracks at the left, their parts at the right, the ruler above and the
/// bars to scroll and zoom by below and beside. It lays them out, and scrolls and zooms them
/// together. Interface thread.
class ArrangeView : public CGroup, private ArrangeState {
public:
    /// `range` is used until the window goes, and not by the destructor.
    ArrangeView(Workspace& workspace, SongRange& range, int top, int width, int height);
    ~ArrangeView() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

    /// The delegates come to be owned by the view; wired once.
    void onMenus(COnChange* headMenu, COnChange* partsMenu);
    /// Follows the song and what is heard of it; whether something that goes on by itself has
    /// changed.
    bool refresh();
    void songChanged(); ///< builds all anew from the song
    void forgetSong();  ///< it is about to be deleted: nothing shows until `songChanged`

    bool stepTrack(int by);           ///< as `HeadList::stepTrack`
    bool arrowKey(int key, int mods); ///< as `editKey`, and Up and Down choose a track
    CSongTrack* trackAt(int y) const; ///< at a height of the view, null where there is none
    int tickAt(int x) const;          ///< at a point of the view, at least 0
    bool onGrid(int x) const;
    /// Another zoom, around the middle of what shows; while playing around the play position, which
    /// comes to the middle first.
    void zoom(double pixelsPerQuarter);
    double zoomNow() const { return edit.axis.zoom(); }
    void zoomToSelection(); ///< of parts, else to the whole song

private:
    void scrollTo(int64_t x, int y) override;
    void zoomAtPos(int x, double zoom) override;
    void rowsChanged() override;
    void gridChanged() override;
    int gridWidth() const override;
    int gridHeight() const override;
    int64_t songWidth() const override;

    void partsChanged();
    void zoomed();
    void layout();
    void followPlay();
    void showRange();
    void acrossMoved(CObject*);
    void downMoved(CObject*);
    int mostScrollY() const;
    int gridTop() const;
    void showSpan(const CRangebar& bar);
    void overviewMoved(CObject*);
    void bindCommands();
    void deleteSelected();
    bool canDelete() const;

    Option objectsShown;
    SnapBar* snapBar;
    ObjectBar* objectBar;
    HeadCorner* corner;
    HeadList* heads;
    Overview* overview;
    RulerBars* ruler;
    ArrangeGrid* grid;
    EmptySong* empty; ///< in place of the grid
    CRangebar *across, *down;
    CSeq* shownSong = nullptr; ///< the song whose place and zoom these are; not owned
    bool follows = true;       ///< the view turns its page when the play position leaves it
    std::unique_ptr<TrackCommands> trackCommands;
    std::vector<NoticeLink> links;
};
