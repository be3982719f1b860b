#pragma once

#include "arrange/HeadSigns.h"
#include "arrange/TargetMenu.h"
#include "gui/CGroup.h"

#include <memory>
#include <vector>

class ArrangeState;
class CPopup;
class CSongTrack;
class DragHandler;
class RowHead;
class ValueDoor;
enum class TrackSwitch;
struct ArrangeRow;
struct CPalette;

/// The heads of the tracks and lanes, beside their rows; there are only those of rows that show.
/// Tab stops at one head, that of the selected track; Up and Down lead to those of others and
/// select them, with Shift besides, Left and Right from the head to what is on it. Interface
/// thread.
class HeadList : public CGroup {
public:
    COnChange* onHeadMenu = nullptr; ///< owned; the context menu of a head is wanted
    ArrangeState& state;
    HeadSigns signs;
    TargetMenu targets;

    HeadList(CWin* win, ArrangeState& state);
    ~HeadList() override;

    void paint(CGraphic* g, CRect rect) override;
    bool keyInside(int key, int mods) override;
    bool contextMenu() override; ///< of the head with the focus, or that was pressed
    void describe(Description& d, int part) const override;

    /// Follows the rows of the state, which are others.
    void songChanged();
    void cablesChanged();
    /// Places the heads by the rows and what is scrolled.
    void place();
    void refresh();     ///< follows the tracks
    bool followSound(); ///< follows the levels; whether these show
    /// Selects the track `by` rows below the selected one and shows it; false without another.
    bool stepTrack(int by);
    /// Opens a field for the name of the first selected track; false without one.
    bool renameSelected();
    /// Adds a menu of what the selected tracks can lead to; nothing without such a track.
    void addTargets(CPopup* popup);
    /// Asks for a colour for the selected tracks.
    void askColour();

    // For the heads.
    const CPalette& palette() const;
    ValueDoor* door() const;
    void tell(const CStr& text); ///< in the line of the program
    /// Those that a change on the head of a track reaches: the selected ones if it is one of them,
    /// else it alone.
    std::vector<CSongTrack*> together(const CSongTrack* track) const;
    bool heard(const CSongTrack* track) const; ///< neither muted nor silenced by the solo of others
    static bool folds(const CSongTrack* track); ///< a folder, or a track with automation lanes
    void fold(CSongTrack* track);
    /// Selects by a press with these modifiers (ModFlag): alone, with Control besides or no more,
    /// with Shift all from the one pressed before.
    void choose(CSongTrack* track, int btn);
    void toggle(TrackSwitch which, CSongTrack* track);

    // Presses that a drag may follow, at a point of a control inside.
    struct PressAt {
        const CCtrl* ctrl;
        int x, y, btn;
    };
    void swipe(TrackSwitch which, CSongTrack* track, const PressAt& at);
    void size(const RowHead& head, const PressAt& at);
    void pressed(CSongTrack* track, bool onStripe, const PressAt& at);

    // For the drags. Heights are of the list.
    const ArrangeRow* rowAt(int y) const; ///< null where there is none
    int topOf(const ArrangeRow& row) const;
    /// The line that tells where what is dragged would come; -1 none.
    void showMark(int y, bool inside);

private:
    /// Where the focus is among the heads: the row, and what of it; -1 elsewhere.
    struct Place {
        int row = -1;
        CStr stop;
    };
    void startDrag(std::unique_ptr<DragHandler> handler, const PressAt& at, int shape = 1);
    RowHead* headOf(const ArrangeRow& row) const;
    RowHead* makeHead(const ArrangeRow& row);
    void dropHead(RowHead* head);
    Place focusPlace() const;
    void focusOn(const Place& place);
    void markStops();
    void showRow(const ArrangeRow& row);
    void selectRow(int index, bool besides);

    std::vector<RowHead*> heads;        ///< among `controls`
    std::unique_ptr<DragHandler> drag;  ///< the latest; null before the first
    const CSongTrack* anchor = nullptr; ///< that was chosen without Shift; only to be compared
    bool anySolo = false;
    int mark = -1;
    bool markInside = false; ///< it lies around a folder, not between rows
};
