#pragma once

#include "notes/EditedPart.h"
#include "ui/CMouseEdit.h"
#include "ui/EventIndexes.h"
#include "ui/NoteMouse.h"

#include <cstdint>
#include <vector>

/// What the parts of the note editor share: the part, which stretch of the song and which rows
/// show, and what the mouse is doing. All of them are in the `RollBody`, which carries out what
/// they ask for. The part is a MIDI or drum part. Interface thread.
class NoteState : public EditedPart {
public:
    static constexpr int usualHeight = 12; ///< pixels of a key

    CSeqMouseEdit edit; ///< with the axis of time, and `scrollY` over the rows
    int noteHeight = usualHeight;
    std::vector<CPart*> others; ///< of MIDI, whose notes show behind those of such a part

    explicit NoteState(Workspace& space) : EditedPart(space) {}

    const TimeAxis& axis() const { return edit.axis; }
    EventRows rows() const;                ///< of the part, which there is
    NotePlace place() const;               ///< of it
    NotePlace placeOf(CPart* other) const; ///< of one of the others
    /// Those of what is shown: the part of that place, or a draft for it. Good until the next call.
    const EventIndex& eventsOf(const NotePlace& place, CPart* shown) const;

    /// Shows another place, as far as there is any, moving what stays by copying.
    virtual void scrollTo(int64_t x, int y) = 0;
    virtual void zoomAtPos(int x, double zoom) = 0;     ///< the tick under `x` stays there
    virtual void setVertZoom(int y, int keyHeight) = 0; ///< the row under `y` stays there
    virtual void shownChanged() = 0;                    ///< what shows of a drag or the selection
    virtual int gridWidth() const = 0;
    virtual int gridHeight() const = 0;
    /// What is shown of the part: a draft while it is edited.
    virtual CPart* shownPart() const = 0;
    /// Turns to one of the others, where it shows.
    virtual void turnTo(CPart* other) = 0;
    /// Brings a tick of the part's own time and a row into view.
    virtual void scrollInView(int tick, int row) = 0;

protected:
    ~NoteState() = default;
    void forgetOthers() { otherEvents.forget(); }
    void draftChanged() { draftShown = nullptr; } ///< there may be another, or none

private:
    mutable EventIndex partEvents, draftEvents;
    mutable EventIndexes otherEvents;
    mutable const CPart* draftShown = nullptr; ///< that `draftEvents` were made of
};
