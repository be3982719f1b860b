#pragma once

#include "sequencer/edit/EventActions.h"
#include "sequencer/edit/EventDraft.h"
#include "sequencer/song/EventFind.h"
#include "ui/CMouseEdit.h"
#include "ui/NotePlace.h"

#include <memory>
#include <set>
#include <utility>
#include <vector>

/// The mouse over notes or hits, in every view that shows some: a press begins a mode, moves change
/// a draft that is shown in place of the part, and the release makes it the part's content as one
/// step. What is pressed or changes its pitch sounds. Notes of other parts may be edited along:
/// then all that are selected in any of them change as one. Interface thread.
class NoteMouse {
public:
    static constexpr int reach = 8;      ///< pixels of an edge, of a long event
    static constexpr int dragRoom = 4;   ///< pixels of movement that change nothing yet
    static constexpr int paramLane = 44; ///< pixels at the bottom of an opened sound

    /// `beside` are parts whose notes are edited along.
    NoteMouse(CSeqMouseEdit& state, const NotePlace& where, std::vector<NotePlace> beside = {});
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
    /// What is to be shown of a part that it edits, a draft or the part itself; null for others.
    CPart* shown(const CPart* part) const;
    bool copying() const { return edit.mode == editCopy && changed(); }
    /// Whether all parts still have the content that they had at the press.
    bool stands() const;
    CStr told() const; ///< of the drag, for the line at the bottom

    /// The event under a point of the view, and which zone of it; `zoneParam` in the lower part of
    /// an opened sound.
    static FoundEvent eventAt(const NotePlace& place, const CSeqMouseEdit& edit, CPoint at);
    /// Selects what lies within a rectangle of the view.
    static void selectWithin(const NotePlace& place, const CSeqMouseEdit& edit, CRect band);
    static void unselect(CPart* part);

private:
    /// One of the parts, and what has become of its content.
    struct Home {
        NotePlace place;
        const CBaseEvent* head;             ///< of its events at the press, only to be compared
        std::unique_ptr<CPart> base;        ///< with events that were put in; or null
        std::unique_ptr<EventDraft> moving; ///< made of that or of the part; or null
        std::unique_ptr<CPart> painted;     ///< with parameters that are drawn; or null
    };
    struct Hit {
        size_t home = 0;
        FoundEvent found;
    };

    Hit hitAt(CPoint at) const;
    int pressLeft(const Hit& hit, CPoint at, int btn);
    int pressRight(const Hit& hit, CPoint at, int btn);
    int pressTool(const Hit& hit, CPoint at);
    int hold(const Hit& hit);
    int insert(CPoint at);
    int beginRun(CPoint at);
    void paintRun(CPoint at);
    void putInRun(int tick, int row);
    void stamp(CPart* into, int own, int row, int length);
    // Of a note at a tick of the part's own time.
    std::vector<int> stampRows(int row, int own) const;
    int inScale(int row, int own) const;
    int placeStep(CPoint at);
    void split(CPart* part, const FoundEvent& found, CPoint at);
    void glue(CPart* part, const FoundEvent& found);
    int rowAt(int y) const { return place.rows.rowAt(y + edit.scrollY); }
    int tickAt(CPoint at, bool nearest) const;
    bool leavesGrid(int btn) const;
    void turn(CPoint at, CPoint anchor, int btn);
    void drag(CPoint at, CPoint from, int btn);
    int moved(int dx, bool free) const;
    int stretched(int dx, bool free) const;
    int pitched(CPoint at, CPoint from) const;
    void makeDrafts();
    void paintParam(CPoint at);
    void chooseAlone();
    void unselectAll();
    PartList parts() const;
    const char* title() const;
    int songTick(int own) const;
    NoteFacts now() const;
    EventDelta delta() const;
    bool changed() const; ///< by the drag
    Home& heldHome() { return homes[heldIn]; }
    const Home& heldHome() const { return homes[heldIn]; }

    CSeqMouseEdit& edit;
    NotePlace place;
    std::vector<Home> homes; ///< the first is `place`
    size_t heldIn = 0;       ///< which of them has the event under the press
    EventRange range;
    EventDelta settled;                  ///< before Alt was pressed or let go the last time
    EventDelta running;                  ///< since
    CPoint turned;                       ///< pixels from the press to where that was
    bool alt = false;                    ///< as it was at the last move
    bool strayed = false;                ///< the pointer has been moved
    NoteFacts held;                      ///< of the event under the press
    const CBaseEvent* pressed = nullptr; ///< of the part, or of `base`
    std::set<std::pair<int, int>> run;   ///< ticks of the song and rows that are painted
    int runTick = 0;                     ///< of the song, painted last
};
