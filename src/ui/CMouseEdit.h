#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"
#include "ui/TimeAxis.h"

class COnChange;
class CPart;
class CSnap;
class CSongTrack;
struct CBaseEvent;

/// What a drag in a view does.
enum EditMode : int {
    editIdle = 0,
    editLasso = 1,
    editMove = 2,
    editCopy = 3,
    editPan = 4,
    editPress = 5, ///< of the right button: becomes `editPan`, or opens the menu at the release
    editErase = 6,
    editResizeEnd = 7,
    editDraw = 8,
    editLine = 9,
    editCurve = 10,
    editCurveReset = 11,
    editResizeStart = 12,
    editDrawDrums = 17,
    editPaint = 18, ///< a run of notes
};

/// What is edited, beside the kinds of controllers (`LaneKind`).
enum EditKind : int { kindParts = -105, kindNotes = -100, kindDrums = -101, kindPoints = -102 };

/// State of the mouse in a view: what a drag does, from where, and how far it has come. The song
/// does not change before the release. Interface thread.
class CMouseEdit : public CObject {
public:
    int mode = editIdle; ///< EditMode
    int kind = 0;        ///< EditKind or LaneKind
    int startBtn = 0;    ///< ModFlag at the press
    int deltaPos = 0;    ///< ticks of the drag
    int deltaY = 0;      ///< tracks or semitones of the drag
    int velocity = 0;
    TimeAxis axis;
    int scrollY = 0;
    CPoint start{}, current{};          ///< of the drag, in pixels of the view
    CSnap* snap = nullptr;              ///< not owned
    COnChange* onModeChanged = nullptr; ///< owned

    CMouseEdit() = default;
    ~CMouseEdit() override;
    CMouseEdit(const CMouseEdit&) = delete;
    CMouseEdit& operator=(const CMouseEdit&) = delete;

    /// Another mode begins, with start and current point at (x, y).
    virtual void setMode(int newMode, int x, int y, int btn);
    virtual void done() {} ///< the drag is over, applied or not
    virtual int getPos() const { return deltaPos; }
    virtual int getLength() const { return 0; }
    virtual int getTranspose() const { return 0; }
    virtual int getVelocity() const { return velocity; }
};

/// The state of the mouse over parts and their events. With Alt held at the press a drag along
/// changes lengths, and one across velocities, in place of places and pitches.
class CSeqMouseEdit : public CMouseEdit {
public:
    CPart* editPart = nullptr; ///< whose events are edited; null for parts. Not owned
    CSongTrack* editTrack = nullptr;
    const CBaseEvent* editEvents = nullptr; ///< its content at the press, only to be compared
    int minDelta = 0, maxDelta = 0, minTrack = 0, maxTrack = 0; ///< bounds of the drag
    int selStart = 0, selEnd = 0;                               ///< ticks, selected in `editPart`
    int subTrack = -1;                                          ///< lane under the press, -1 none

    // The event under the pointer at the press, and what is drawn without one.
    int eventPos = 0, eventNote = 0;
    int eventLength = 240, eventVelocity = 100;

    void setMode(int newMode, int x, int y, int btn) override;
    void done() override;
    int getPos() const override;
    int getLength() const override;
    int getTranspose() const override;
    int getVelocity() const override;

private:
    bool stretches() const;
};
