#pragma once

#include "gui/CGroup.h"
#include "ui/NoticeRouter.h"

#include <array>
#include <vector>

class CButton;
class CMeter;
class CQV;
class CScrollbar;
class CSongTrack;
class CTimeline;
class Workspace;

/// Head of one track: name, mute, solo, and the level of the instrument that it plays.
class CTrackRow : public CGroup {
public:
    static constexpr int rowWidth = 236;

    CTrackRow(CWin* win, CQV* host, CSongTrack* songTrack, int height, int colour);

    void paint(CGraphic* g, CRect rect) override;
    /// Selects the track, with Control beside others.
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override; ///< the right button opens the menu
    bool refresh();                               ///< whether what is heard of the track shows
    /// The cables are others.
    void findSound();
    CSongTrack* songTrack() const { return track; }
    static constexpr int stopCount = 4;
    /// What of it takes the keys, from the left: itself, mute, solo, and the meter.
    std::array<CCtrl*, stopCount> stops();
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

private:
    void muteClicked(CObject*);
    void soloClicked(CObject*);

    CQV* qv;
    CSongTrack* track; ///< not owned
    int colour;
    CButton *muteButton, *soloButton;
    CMeter* meter;
    bool shownSelected = false, shownFrozen = false;
};

/// The rows of all tracks beside the timeline. Tab stops at one row, that of the selected track; Up
/// and Down lead to those of others and select them, with Shift besides, Left and Right from the
/// head to its buttons and meter. Where there are more than have room, the wheel, a
/// scroll bar and the choice of a track scroll them row by row.
class SongView : public CGroup {
public:
    static constexpr int rowHeight = 44;

    COnChange* onHeadMenu = nullptr; ///< owned; the context menu of a head is wanted

    SongView(Workspace& workspace, int top, int width, int height);

    ~SongView() override;
    SongView(const SongView&) = delete;
    SongView& operator=(const SongView&) = delete;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    bool keyInside(int key, int mods) override;
    bool contextMenu() override; ///< of the head with the focus, or that was pressed
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    /// Follows the song and what is heard of it; whether something that goes on by itself, as the
    /// position and the meters do, has changed.
    bool refresh();
    /// Builds the rows anew from the song.
    void songChanged();
    /// The song is about to be deleted: shows nothing until `songChanged`.
    void forgetSong();
    /// Selects the track `by` rows below the selected one and shows it; false without another.
    bool stepTrack(int by);
    /// The track at a height of the view, null where there is none.
    CSongTrack* trackAt(int y) const;
    int tickAt(int x) const; ///< the tick of the timeline at a point of the view
    bool onTimeline(int x) const;
    void describe(Description& d, int part) const override;

private:
    /// Where the focus is among the rows; both -1 elsewhere.
    struct Place {
        int row = -1, stop = -1;
    };
    Place focusPlace() const;
    void focusOn(Place place);
    void markStops();
    int roomForRows() const; ///< how many have room whole, one at least
    void layout();
    void scrollTo(int row);
    void selectRow(int index, bool besides);
    void barMoved(CObject*);

    CQV* qv;
    CTimeline* timeline = nullptr;
    CScrollbar* bar = nullptr;
    std::vector<CTrackRow*> rows; ///< among `controls`
    int firstRow = 0;
    std::vector<NoticeLink> links;
};
