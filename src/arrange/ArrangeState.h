#pragma once

#include "arrange/RowLayout.h"
#include "sequencer/edit/Ripple.h"
#include "ui/CMouseEdit.h"
#include "ui/EventIndexes.h"
#include "ui/OwnActions.h"

#include <cstdint>

class CQV;
class CSeq;
class SongRange;
class Workspace;

/// What the parts of the arrangement share: which stretch of the song and which rows show, and what
/// the mouse is doing. All of them are in the `ArrangeView`, which carries out what they ask for.
/// Interface thread.
class ArrangeState {
public:
    Workspace& workspace;
    CQV* const qv;
    RowLayout rows;
    CSeqMouseEdit edit; ///< with the axis of time, and `scrollY` over the rows

    SongRange& range; ///< that is chosen with the tool for ranges

    Ripple ripple = Ripple::off; ///< what goes along when parts move, come or go

    OwnActions actions;               ///< of the window
    mutable EventIndexes noteEvents;  ///< of parts whose notes show in rows of their own
    const CPart* notesPart = nullptr; ///< pressed last in such a row; only to be compared

    ArrangeState(Workspace& space, SongRange& songRange);

    CSeq* seq() const;    ///< null without a song that plays
    bool anySolo() const; ///< of the tracks of the program, whether they show or not
    const TimeAxis& axis() const { return edit.axis; }
    /// The grid of the view in ticks, as `gridTicks` and `gridStep` tell. With a song.
    int snapTicks() const;
    int stepTicks() const;
    /// By how many ticks a drag moves a place on a grid: as `snappedDelta`, or by steps of the grid
    /// from where it stood.
    int snappedBy(int grid, int anchor, int dragged) const;

    /// Shows the song from a point on, as far as there is any, moving what stays by copying.
    virtual void scrollTo(int64_t x, int y) = 0;
    /// Another zoom; the song position under `x` of the grid stays there.
    virtual void zoomAtPos(int x, double zoom) = 0;
    /// All rows `factor` times as high, within what they can be; what is at a height of the grid
    /// stays there.
    virtual void zoomRowsAt(int y, double factor) = 0;
    virtual void rowsChanged() = 0; ///< heights, folds, lanes: all is laid out and painted anew
    virtual void gridChanged() = 0; ///< what the grid shows of the drag or the selection
    /// Tells the user why an edit was not done; nothing for an empty text.
    void tell(const CStr& failure) const;
    virtual int gridWidth() const = 0;
    virtual int gridHeight() const = 0;
    virtual int64_t songWidth() const = 0; ///< pixels that can be scrolled through

protected:
    ~ArrangeState() = default;
};

/// Whether a track is neither muted nor silenced by the solo of others.
bool heardAmong(const CSongTrack* track, bool anySolo);
