#pragma once

#include "gui/CDrag.h"
#include "gui/CGroup.h"

#include <vector>

class ArrangeState;
class CPart;
class CPopup;
class CSeq;
class NameField;

/// A lane of the ruler with points of the song's timeline. A press chooses one and a drag moves it,
/// Control pressed meanwhile past the grid; Alt or a double click adds one where there is none, and
/// types over the one that is there. With the focus Left and Right walk, with Control they move,
/// Return types, Shift and A add at the song's position, Delete deletes. What is dragged is applied
/// at the release, as one step. Interface thread.
class PointLane : public CGroup, private DragHandler {
public:
    PointLane(CWin* win, ArrangeState& state, const char* name, int height);
    ~PointLane() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

    bool refresh(); ///< follows the points; whether that shows

protected:
    /// By how much a point is drawn away from its place during a drag.
    struct Shift {
        int ticks = 0, longer = 0, y = 0;
        bool operator==(const Shift&) const = default;
    };

    virtual ListView<CPart> points(CSeq* seq) const = 0;
    /// Adds a point to the song, or gives the one that stands there. `y` is that of the pointer, -1
    /// none.
    virtual CPart* addPoint(CSeq* seq, int tick, int y) const = 0;
    virtual CRect boxOf(const CPart* point, const Shift& shift) const = 0;
    virtual void paintGround(CGraphic*, CRect) {} ///< behind the points
    virtual void paintPoint(CGraphic* g, const CPart* point, const Shift& shift, bool chosen) = 0;
    virtual bool onEnd(const CPart*, int) const { return false; } ///< an x that drags the length
    virtual void apply(CSeq* seq, CPart* point, const Shift& shift) = 0;
    virtual CStr shownText(const CPart* point, const Shift& shift) const = 0;
    virtual CStr typedText(const CPart* point) const = 0; ///< at first, while it is typed over
    virtual void typed(CSeq* seq, CPart* point, const CStr& text) = 0;
    /// What the point is made of, to tell changes.
    virtual std::vector<double> look(const CPart* point) const = 0;
    virtual void fillMenu(CPopup*, CPart*) {} ///< with entries about the point

    void addEntry(CPopup* popup, const char* text, int number, bool on = true);
    /// Of an entry of `fillMenu`, 0 to 99.
    virtual void chosenEntry(CSeq*, CPart*, int) {}
    void type(CPart* point);
    int xOf(double tick) const;
    const Shift& shiftOf(const CPart* point) const;

    ArrangeState& state;

private:
    CPart* pointAt(int x, int y) const;
    bool stands() const; ///< what is chosen is still in the song
    void add(int tick, int y);
    void dragMove(const DragPoint& point) override;
    void dragEnd(const DragPoint& point) override;
    void dragCancel() override;
    bool walk(int by);
    bool moveBy(int steps);
    void entryClicked(CObject* sender);
    void openMenu(CPart* point);

    CPart* current = nullptr; ///< chosen; only to be used while it stands
    Shift moved;              ///< by the drag, of what is chosen
    bool sizing = false;      ///< the drag is of its end
    int first = 0;            ///< the tick of the point, or of its end, at the press
    NameField* field = nullptr;
    std::vector<double> shown;
};
