#pragma once

#include "sequencer/EventDraft.h"
#include "sequencer/EventFind.h"
#include "ui/CMouseEdit.h"
#include "ui/NotePlace.h"

#include <memory>

/// The mouse over notes or hits, in every view that shows some: a press begins a mode, moves change
/// a draft that is shown in place of the part, and the release makes it the part's content as one
/// step. What is pressed or changes its pitch sounds. Interface thread.
class NoteMouse {
public:
    static constexpr int reach = 8;      ///< pixels of an edge, of a long event
    static constexpr int dragRoom = 4;   ///< pixels of movement that change nothing yet
    static constexpr int paramLane = 44; ///< pixels at the bottom of an opened sound

    NoteMouse(CSeqMouseEdit& state, const NotePlace& where);
    ~NoteMouse();
    NoteMouse(const NoteMouse&) = delete;
    NoteMouse& operator=(const NoteMouse&) = delete;

    /// What a press begins (EditMode), which is to be set: `editLasso` and `editPress` are for the
    /// view to carry out, and at `editIdle` all is done. It selects what is pressed.
    int partMouseDown(CPoint at, int btn);
    /// `anchor` is the press, moved along with what was scrolled since; `btn` tells the modifiers
    /// that are held now: Alt changes lengths and velocities instead of places and pitches, Control
    /// that was not held at the press leaves the grid.
    void partMouseMove(CPoint at, CPoint anchor, int btn);
    void partMouseUp(); ///< applies what has become of it

    const NotePlace& where() const { return place; }
    /// What is to be shown: the draft, else the part.
    CPart* shown() const;
    bool copying() const { return dragged() && edit.mode == editCopy; }
    CStr told() const; ///< of the drag, for the line at the bottom

    /// The event under a point of the view, and which zone of it; `zoneParam` in the lower part of
    /// an opened sound.
    static FoundEvent eventAt(const NotePlace& place, const CSeqMouseEdit& edit, CPoint at);
    /// Selects what lies within a rectangle of the view.
    static void selectWithin(const NotePlace& place, const CSeqMouseEdit& edit, CRect band);
    static void unselect(CPart* part);

private:
    int pressLeft(const FoundEvent& found, CPoint at, int btn);
    int pressRight(const FoundEvent& found, CPoint at, int btn);
    int hold(const FoundEvent& found);
    int insert(CPoint at);
    int placeStep(CPoint at);
    void split(const FoundEvent& found, CPoint at);
    int rowAt(int y) const { return place.rows.rowAt(y + edit.scrollY); }
    int tickAt(CPoint at, bool nearest) const;
    bool leavesGrid(int btn) const;
    void turn(CPoint at, CPoint anchor, int btn);
    void drag(CPoint at, CPoint from, int btn);
    int moved(int dx, bool free) const;
    int stretched(int dx, bool free) const;
    void makeDraft();
    void paintParam(CPoint at);
    void chooseAlone();
    int songTick(int own) const;
    NoteFacts now() const;
    EventDelta delta() const;
    bool changed() const; ///< something has come of the drag
    CPart* dragged() const;

    CSeqMouseEdit& edit;
    NotePlace place;
    std::unique_ptr<CPart> base;        ///< the content with an event that was put in; or null
    std::unique_ptr<EventDraft> moving; ///< made of that or of the part; null before it is needed
    std::unique_ptr<CPart> painted;     ///< with parameters that are drawn; null without
    EventRange range;
    EventDelta settled;                  ///< before Alt was pressed or let go the last time
    EventDelta running;                  ///< since
    CPoint turned;                       ///< pixels from the press to where that was
    bool alt = false;                    ///< as it was at the last move
    bool strayed = false;                ///< the pointer has been moved
    NoteFacts held;                      ///< of the event under the press
    const CBaseEvent* pressed = nullptr; ///< of the part, or of `base`
};
