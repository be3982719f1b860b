#pragma once

#include "gui/CGroup.h"

#include <memory>
#include <vector>

class CDrumSound;
class CPopup;
class DragHandler;
class EventRows;
class NameField;
class NoteState;

/// The sounds of a kit beside their hits. A press on a name plays it, a drag moves it to another
/// place, a double click or Return renames it; M and S mute it and let it play alone, the sign at
/// the left opens the lane of a parameter, and the right button offers what else there is. Up and
/// Down lead along the rows. Interface thread.
class DrumStrip : public CGroup {
public:
    static constexpr int stripWidth = 160;

    DrumStrip(CWin* win, NoteState& state);
    ~DrumStrip() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< of each row itself and its three signs
    int partAround(int part) const override;
    int focusedPart() const override;
    bool pressPart(int part) override;

    void idle();            ///< follows a name that was typed
    int rowAt(int y) const; ///< -1 outside all

private:
    enum Zone : int { onName, onLane, onMute, onSolo, zones };

    class RowDrag;
    class Hearing;

    CRect rowBox(const EventRows& rows, int row) const;
    CRect zoneBox(const EventRows& rows, int row, Zone zone) const;
    Zone zoneAt(CPoint at, int row) const;
    CDrumSound* sound(int row) const; ///< null without
    void paintRow(CGraphic* g, const EventRows& rows, int row) const;
    void paintSwitch(CGraphic* g, CRect box, const char* letter, bool on, int fill) const;
    void act(int row, Zone zone);
    void play(int row); ///< -1 ends it
    void choose(int row);
    int nextShown(int by) const;
    void openLane(int row);
    void rename(int row);
    void move(int row, int to);
    void remove(int row);
    void fillMenu(CPopup* menu);
    void fillLengths(CPopup* menu);
    void menuChosen(CObject* sender);
    void paramChosen(CObject* sender);
    void lengthChosen(CObject* sender);
    void chooseSample();
    void newSounds();
    void openKit();
    void takeKit(const CStr& path);
    void saveKitAs();
    void tellUnread(const char* path) const;

    NoteState& state;
    int sounding = -1; ///< row
    int chosen = 0;    ///< row that keys and the menu act on
    int mark = -1;     ///< height at which a line shows where a dragged row goes
    std::unique_ptr<DragHandler> drag;
    NameField* field = nullptr; ///< while one is renamed
    std::vector<int> lengths;   ///< ticks, by the tags of the menu
};
