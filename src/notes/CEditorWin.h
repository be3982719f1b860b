#pragma once

#include "notes/NoteState.h"
#include "ui/CCompEditor.h"
#include "ui/NoticeRouter.h"

#include <initializer_list>
#include <vector>

class CDropdown;
class CEditorComp;
class CRangebar;
class CScrollbar;
class EditorBar;
class KeyStrip;
class LaneView;
class NoteGrid;
class NoteRuler;
class Workspace;

/// The editor of what lies inside a MIDI or drum part: bars above, keys or sounds at the left, the
/// notes, and below them a lane of velocities or controllers. It shows the part that its component
/// tells. Interface thread.
class CEditorWin : public CCompEditor, private NoteState {
public:
    static constexpr int laneHeight = 96; ///< pixels

    CEditorWin(Workspace& workspace, CEditorComp& editor);
    ~CEditorWin() override;

    void resized() override;
    bool canRun(const CAction* action) const override;
    bool onAction(CAction* action) override;
    void mergeMenu(CMenu* menu) override;
    bool onFrame() override; ///< follows the play position
    void idle() override;    ///< follows the part, and what has no notice

private:
    void scrollTo(int64_t x, int y) override;
    void zoomAtPos(int x, double zoom) override;
    void setVertZoom(int y, int keyHeight) override;
    void shownChanged() override;
    int gridWidth() const override;
    int gridHeight() const override;
    CPart* shownPart() const override;
    void scrollInView(int tick, int row) override;

    void showPart(CPart* wanted);
    void songChanged();
    void layout();
    void showRange();
    void fitContent();
    int mostScrollY() const;
    int64_t shownTicks() const;
    bool dragStands() const;
    void acrossMoved(CObject* sender);
    void downMoved(CObject* sender);
    void laneChosen(CObject* sender);
    void laneMenu(CObject* sender);
    void fillLanes();
    void scrollOctaves(int by); ///< up, or below 0 down
    bool viewAction(const CStr& name);
    void fillPart(CObject* popup);
    void fillOptions(CObject* popup);
    void fill(CObject* popup, std::initializer_list<const char*> names);

    CEditorComp& editor;
    int songTicks = 0; ///< length of the song, as it was when it changed last
    EditorBar* bar;
    NoteRuler* ruler;
    KeyStrip* keys;
    NoteGrid* grid;
    LaneView* lane;
    CDropdown* lanes;
    CRangebar* across;
    CScrollbar* down;
    std::vector<NoticeLink> links;
};
