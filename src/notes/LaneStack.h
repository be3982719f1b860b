#pragma once

#include "gui/CGroup.h"
#include "sequencer/song/EventLanes.h"

#include <vector>

class CButton;
class CDropdown;
class CPart;
class CSplit;
class LaneView;
class NoteState;

/// The lanes below the notes, one or several: each with a chooser of what it shows, buttons that
/// put another one below it or take it away, and an upper edge that drags its height. Which there
/// are is kept, for MIDI parts and for those of drums. Interface thread.
class LaneStack : public CGroup {
public:
    static constexpr int mostLanes = 8, edgeHeight = 4;
    COnChange* onSized = nullptr; ///< owned; it wants another height

    LaneStack(CWin* win, NoteState& state);
    ~LaneStack() override;

    void setPart(); ///< the part is another one
    int wantedHeight() const;
    void setBeside(int pixels); ///< width of the choosers
    void resized() override;
    void describe(Description& d, int part) const override;

    bool canAdd() const { return int(lanes.size()) < mostLanes; }
    bool canRemove() const { return lanes.size() > 1; }
    void add(int behind); ///< with what shows in none yet; `behind` a lane
    void removeAt(int index);
    int count() const { return int(lanes.size()); }

    void redrawLanes();
    void scrolled(int dx);     ///< so many pixels to the right
    LaneView* dragged() const; ///< null without one
    CPart* shownPart(const CPart* of) const;

private:
    struct Lane {
        LaneView* view;
        CDropdown* chooser;
        CButton *more, *less;
        CSplit* edge;
    };
    void put(EventLane lane, int high, int at);
    void drop();
    void read();
    void keep();
    void changed();
    void fillChoices();
    void fill(Lane& lane);
    int laneOf(const CObject* ctrl) const;
    CButton* addButton(const char* sign, const char* hint, void (LaneStack::*pressed)(CObject*));
    void laneChosen(CObject* sender);
    void laneMenu(CObject* sender);
    void edgeMoved(CObject* sender);
    void moreClicked(CObject* sender);
    void lessClicked(CObject* sender);

    NoteState& state;
    int partType = 0;
    int beside = 0;
    std::vector<Lane> lanes;
    std::vector<EventLane> choices; ///< of all choosers
};
