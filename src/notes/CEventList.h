#pragma once

#include "gui/CGroup.h"
#include "notes/EventRule.h"

#include <vector>

class CEdit;
class CPart;
class CScrollbar;
class NameField;
class NoteState;
enum class EventColumn;

/// The events of the part as a list, a row for each in order of time. A press selects, with Control
/// or Shift more; Return or a double click types over a cell of all that is selected, Control with
/// Up and Down steps it. What is typed above leaves the rows for which the rule holds. Interface
/// thread.
class CEventList : public CGroup {
public:
    static constexpr int listWidth = 342;

    CEventList(CWin* win, NoteState& state);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void mouseDown(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override {
        return listWheel(dy) || CGroup::mouseWheel(x, y, btn, dy, dx);
    }
    bool keyDown(int key, int mods) override {
        return listKeyDown(key, mods) || CGroup::keyDown(key, mods);
    }
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< the rows in view
    int focusedPart() const override;
    bool pressPart(int part) override;

    void contentChanged(); ///< other events, or none
    void dropField();      ///< one that was left
    void callOff();        ///< what is being typed is about nothing any more

private:
    struct Row {
        CBaseEvent* event;
        int tick; ///< in the part's own time
    };
    const std::vector<Row>& rows() const;
    void ruleTyped(CObject* sender);
    void scrolled(CObject* sender);
    bool listWheel(int dy);
    bool listKeyDown(int key, int mods);
    bool columnKey(int key, int mods);
    void moveTo(int row, int mods);
    void choose(int row, int mods);
    void selectShown();
    void bringIntoView(int row);
    int rowsHigh() const;
    CRect cellBox(int row, int column) const;
    int columnAt(int x) const;
    void openField();
    void typed(const CStr& text);
    void changed(const CBaseEvent* event);
    CStr rowText(const Row& row) const;
    void paintRow(CGraphic* g, int row) const;

    NoteState& state;
    CEdit* ruleField;
    CScrollbar* bar;            ///< in rows
    NameField* field = nullptr; ///< while a cell is typed over
    EventRule rule;
    int current = -1; ///< the row that keys act on, -1 none
    int anchor = -1;  ///< where Shift extends from
    int column = 0;
    mutable bool stale = true;
    mutable std::vector<Row> shown;
};
