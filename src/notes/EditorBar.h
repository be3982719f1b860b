#pragma once

#include "gui/CGroup.h"

#include <vector>

class CAction;
class CButton;
class ChordButton;
class EditedPart;
class EditorBody;
class GridButton;
class ScaleButton;

/// The strip above the editor: which part it shows, switches, and the grid. Interface thread.
class EditorBar : public CGroup {
public:
    static constexpr int barHeight = 26;

    EditorBar(CWin* win, const EditedPart& shown);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void refresh();                       ///< follows what it shows
    void setBody(const EditorBody& body); ///< has the switches of that body alone

private:
    void place();
    CButton* addSwitch(const char* action, const char* text, int wide);
    void clicked(CButton* sender);

    const EditedPart& shown;
    std::vector<CButton*> switches; ///< `userPtr` is the action
    GridButton* grid;
    ScaleButton* scale;
    ChordButton* chord;
    CStr title;
    int nextX = 0;
};
