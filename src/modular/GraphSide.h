#pragma once

#include "gui/CGroup.h"

class AnswerList;
class CObject;
class FindField;
class MiniMap;
class ModularView;
enum class GraphQuestion;

/// What stands beside the canvas: a field to find and connect by typing, a map of the graph, and
/// the answers to what was asked about it. Interface thread.
class GraphSide : public CGroup {
public:
    static constexpr int sideWidth = 208;

    GraphSide(CWin* win, ModularView& view);
    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void describe(Description& d, int part) const override;

    FindField* find() { return field; }
    AnswerList* answers() { return list; }
    void graphChanged(); ///< what was answered may be about what is gone
    void viewChanged();  ///< another part is seen

private:
    ModularView& view;
    FindField* field;
    MiniMap* map;
    AnswerList* list;
};
