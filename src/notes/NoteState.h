#pragma once

#include "notes/EditedPart.h"
#include "ui/CMouseEdit.h"
#include "ui/EventIndexes.h"
#include "ui/NoteActions.h"
#include "ui/NoteMouse.h"

#include <cstdint>
#include <map>
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
    PartList together;          ///< those of them that are edited along
    bool folded = false;        ///< rows without notes or hits do not show

    explicit NoteState(Workspace& space) : EditedPart(space) {}

    const TimeAxis& axis() const { return edit.axis; }
    HeldNotes hand() const { return {workspace, place(), parts()}; }
    PartList parts() const;                ///< that are edited: the part, and those along with it
    EventRows rows() const;                ///< of the part, which there is
    NotePlace place() const;               ///< of it
    int shownGrid() const;                 ///< ticks, 1 while snap is off
    NotePlace placeOf(CPart* other) const; ///< of one of the others
    std::vector<NotePlace> placesAlong() const; ///< of those that are edited along
    /// Those of what is shown: the part of that place, or a draft for it. Good until it changes.
    const EventIndex& eventsOf(const NotePlace& place, CPart* shown) const;

    bool editsAlong(const CPart* other) const;
    virtual int colours() const = 0; ///< NoteColours

    /// Shows another place, as far as there is any, moving what stays by copying.
    virtual void scrollTo(int64_t x, int y) = 0;
    virtual void zoomAtPos(int x, double zoom) = 0;     ///< the tick under `x` stays there
    virtual void setVertZoom(int y, int keyHeight) = 0; ///< the row under `y` stays there
    virtual void shownChanged() = 0;                    ///< what shows of a drag or the selection
    virtual int gridWidth() const = 0;
    virtual int gridHeight() const = 0;
    /// What is shown of a part: a draft while it is edited.
    virtual CPart* shownPart(CPart* of) const = 0;
    /// Turns to one of the others, where it shows.
    virtual void turnTo(CPart* other) = 0;
    /// Brings a tick of the part's own time and a row into view.
    virtual void scrollInView(int tick, int row) = 0;

protected:
    ~NoteState() = default;
    void forgetOthers() { otherEvents.forget(); }
    void draftChanged() { draftEvents.clear(); } ///< there may be another, or none

private:
    const EventIndex& indexOf(CPart* of) const;

    mutable EventIndex partEvents;
    mutable EventIndexes otherEvents;
    mutable std::map<const CPart*, EventIndex> draftEvents;
};
