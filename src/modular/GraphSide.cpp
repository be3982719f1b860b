#include "modular/GraphSide.h"

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "engine/ObjectKinds.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "modular/AnswerList.h"
#include "modular/FindField.h"
#include "modular/MiniMap.h"
#include "modular/ModularView.h"

namespace {

constexpr int margin = 8, fieldHeight = 24, toldHeight = 20;

} // namespace

GraphSide::GraphSide(CWin* owner, ModularView& shown)
    : CGroup(owner, "graphside", 0, 0, int(sideWidth), 1), view(shown),
      field(new FindField(owner, shown)), map(new MiniMap(owner, shown)),
      list(new AnswerList(owner)) {
    for (CCtrl* ctrl : std::initializer_list<CCtrl*>{field, map, list}) addControl(ctrl);
    field->onTold = [this] { redraw(); };
    list->onGo = [this](CObject* blame) {
        if (CComp* box = asComp(blame)) return view.goTo(box);
        win->setKeyCtrl(&view);
        view.setItem(blame);
    };
}

void GraphSide::resized() {
    const int wide = asMax(1, width - 2 * margin);
    int y = margin;
    field->setBounds(margin, y, wide, fieldHeight);
    y += fieldHeight + toldHeight;
    map->setBounds(margin, y, wide, MiniMap::mapHeight);
    y += MiniMap::mapHeight + margin;
    list->setBounds(0, y, width, asMax(1, height - y));
    CGroup::resized();
}

void GraphSide::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, 0, 1, height));
    {
        const TextScope small(g, {TextSize::small});
        const CRect row =
            asRect(margin, margin + fieldHeight, width - margin, margin + fieldHeight + toldHeight);
        g->drawText(palette.dimText,
                    textFace({TextSize::small})->shortened(field->told, row.width()), row,
                    textLeft);
    }
    CGroup::paint(g, rect);
}

void GraphSide::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Beside the graph";
}

void GraphSide::graphChanged() {
    list->clear();
    field->forget();
    map->redraw();
}

void GraphSide::viewChanged() {
    map->redraw();
}
