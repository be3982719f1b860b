#pragma once

#include "arrange/ArrangeState.h"
#include "arrange/DropFiles.h"
#include "gui/CGroup.h"
#include "ui/NoticeRouter.h"
#include "ui/PlayFollow.h"

#include <memory>
#include <vector>

class ArrangeGrid;
class CPopup;
class CRangebar;
class CScrollbar;
class CSongTrack;
class HeadCorner;
class HeadList;
class Invitation;
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
    /// `range` outlives it.
    ArrangeView(CWin* win, Workspace& workspace, SongRange& range);
    ~ArrangeView() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    /// Wherever in the view the pointer is, the wheel acts as on the grid at its time and row.
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    void describe(Description& d, int part) const override;

    /// The delegates come to be owned by the view; wired once.
    void onMenus(COnChange* headMenu, COnChange* partsMenu);
    /// Follows the play position and the levels; whether these have changed. Each frame.
    bool refresh();
    void idle();        ///< follows all else that changes without a notice; interface tick
    void songChanged(); ///< builds all anew from the song

    const OwnActions& ownActions() const { return actions; }
    void addTargets(CPopup* popup); ///< as `HeadList::addTargets`
    // Of a row in which notes are edited in place (TrackNotes.h).
    bool isForNotes(const CStr& action) const;
    bool runOnNotes(const CStr& action);
    bool arrowKey(int key, int mods); ///< as `editKey`, and Up and Down choose a track
    int tickAt(int x) const;          ///< at a point of the view, at least 0
    /// What comes of the files that are dragged when they are dropped at a point of the view.
    DropPlan dropsAt(int x, int y, int btn);
    /// Another zoom, around the middle of what shows; while playing around the play position, which
    /// comes to the middle first.
    void zoom(double pixelsPerQuarter);
    double zoomNow() const { return edit.axis.zoom(); }

private:
    void scrollTo(int64_t x, int y) override;
    void zoomAtPos(int x, double zoom) override;
    void zoomRowsAt(int y, double factor) override;
    void rowsChanged() override;
    void gridChanged() override;
    int gridWidth() const override;
    int gridHeight() const override;
    int64_t songWidth() const override;

    /// What is shown of the song, for the way back.
    struct Place {
        double zoom;
        int64_t x;
        int y;
        bool operator==(const Place&) const = default;
    };

    void partsChanged();
    void measureSong();
    void zoomed();
    void layout();
    void followPlay();
    void moveTo(int64_t x, int y);
    CPoint overGrid(CPoint at) const;
    Place place() const;
    void zoomRows(double factor);
    void zoomTo(int from, int to, int y);
    void zoomToSelection();
    void zoomToSong();
    void zoomBack();
    void bindZoom();
    void showRange();
    void acrossMoved(CObject*);
    void downMoved(CObject*);
    int mostScrollY() const;
    int gridTop() const;
    void showSpan(const CRangebar& bar);
    void overviewMoved(CObject*);
    void dragOver(CObject*, int x, int y, int btn);
    void showEmpty();
    void bindCommands();
    void deleteSelected();
    bool canDelete() const;
    void showTouched();
    bool canShowTouched() const;

    DropFiles drops;
    Option objectsShown;
    PlayFollow following; ///< of the play position
    SnapBar* snapBar;
    ObjectBar* objectBar;
    HeadCorner* corner;
    HeadList* heads;
    Overview* overview;
    RulerBars* ruler;
    ArrangeGrid* grid;
    Invitation* empty; ///< in place of the grid
    CRangebar *across, *down;
    int songTicks = 0;             ///< its length, as it was when it changed last
    CSeq* shownSong = nullptr;     ///< the song whose place and zoom these are; not owned
    std::vector<Place> zoomedFrom; ///< the latest last
    double rowFactor = 1;          ///< what is left to do of the rows' zoom
    std::unique_ptr<TrackCommands> trackCommands;
    std::vector<NoticeLink> links;
};
