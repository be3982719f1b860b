#pragma once

#include "notes/EditorBody.h"
#include "notes/NoteState.h"
#include "project/PartDrop.h"
#include "ui/PlayFollow.h"

class CEventList;
class CPopup;
class CRangebar;
class CScrollbar;
class DrumStrip;
class KeyStrip;
class LaneStack;
class NoteGrid;
class NoteObjects;
class NoteRuler;
class TransformBar;

/// The notes of a MIDI part on its keys, or the hits of a drum part on its sounds, with a ruler
/// above and below lanes of velocities or controllers. Interface thread.
class RollBody : public EditorBody, private NoteState {
public:
    RollBody(CWin* win, Workspace& workspace);
    ~RollBody() override;

    bool shows(const CPart* part) const override;
    void setPart(CPart* part, CTrack* track) override;
    void songChanged() override;
    void idle() override;
    CCtrl* keyCtrl() override;
    bool showsSwitch(const CStr&) const override { return true; }
    bool knowsAction(const CStr& name) const override;
    bool runAction(const CStr& name) override;
    void fillPart(CPopup* popup) override;
    void fillOptions(CPopup* popup) override;

    void resized() override;
    bool onFrame() override; ///< follows the play position

private:
    void scrollTo(int64_t x, int y) override;
    void zoomAtPos(int x, double zoom) override;
    void setVertZoom(int y, int keyHeight) override;
    void shownChanged() override;
    int gridWidth() const override;
    int gridHeight() const override;
    CPart* shownPart(CPart* of) const override;
    int colours() const override;
    void scrollInView(int tick, int row) override;

    void layout();
    void followPlay();
    void moveTo(int64_t x, int y); ///< as far as there is any
    void showRange();
    void setKeyHeight(int pixels);
    void fitPart();
    void fitNotes();
    void loopVisible();
    int mostScrollY() const;
    int64_t shownTicks() const;
    bool drags() const;
    bool dragStands() const;
    void acrossMoved(CObject* sender);
    void downMoved(CObject* sender);
    void lanesSized(CObject* sender);
    void scrollOctaves(int by); ///< up, or below 0 down
    CCtrl* side() const;        ///< what is beside the grid
    int leftWidth() const;
    PartSpot dropPlace(int x, int y) const;
    void gridDragOver(CObject* sender, int x, int y, int btn);
    void gridDrop(CObject* sender, int x, int y, int btn);
    void showBars();
    void followSwitches();
    void followOthers();
    bool showsBeside(CPart* other) const;
    PartList selectedBeside() const;
    PartList beside() const;
    void turnTo(CPart* other) override;
    void openTransform();
    void transformClosed(CObject*);
    void scrollInViewStepCursor();

    int shownStep = -1; ///< of a recording in steps, in ticks of the part
    PartList chosen;    ///< of the song, when it was looked at last; only to be compared
    Option objectsShown, listShown, othersShown, foldOn, coloursOn, togetherOn;
    int gridDrawn = 0; ///< ticks
    PlayFollow following;
    int shownColours = 0;
    bool alongOn = false; ///< `togetherOn`, when it was looked at last
    int songTicks = 0;    ///< length of the song, as it was when it changed last
    NoteObjects* objects;
    TransformBar* transform;
    CEventList* list;
    NoteRuler* ruler;
    KeyStrip* keys;   ///< of a MIDI part
    DrumStrip* drums; ///< of a drum part
    NoteGrid* grid;
    LaneStack* lanes;
    CRangebar* across;
    CScrollbar* down;
};
