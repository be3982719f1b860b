#pragma once

#include "base/CStr.h"
#include "gui/CGroup.h"

#include <vector>

class CButton;
class NameField;
class NoteState;
enum class EventColumn;

/// The object bar of the note editor: the cells of the first selected event. A press types over one
/// for all that is selected, the wheel steps it. Interface thread.
class NoteObjects : public CGroup {
public:
    static constexpr int barHeight = 22;

    NoteObjects(CWin* win, NoteState& state);

    void paint(CGraphic* g, CRect rect) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;
    void refresh();   ///< the selection, or what is selected, has changed
    void dropField(); ///< one that was left
    void callOff();   ///< what is being typed is about nothing any more

private:
    void rebuild();
    void clicked(CButton* cell);
    void typed(EventColumn column, const CStr& text);

    NoteState& state;
    std::vector<CButton*> cells; ///< of the columns, in their order
    NameField* field = nullptr;  ///< while one is typed over
    int partType = 0;
    CStr chord;   ///< that the selected notes form; empty for none
    int endX = 0; ///< behind the last cell
};
