#include "panels/plugins/ParamList.h"

#include "engine/CComp.h"
#include "panels/plugins/ParamRow.h"
#include "plugins/PluginValues.h"

#include <algorithm>

namespace {

constexpr int margin = 4;

int countOf(CComp& comp) {
    return std::min(comp.numParams(), int(PluginValues::most));
}

} // namespace

ParamList::ParamList(CWin* owner, Workspace& space, CComp& of)
    : PanelBody(owner, "parameters", 0, 0, 1, 1), workspace(space), comp(of) {
    spokenName = "Parameters";
    arrange = [this](int wide) {
        int y = margin;
        for (ParamRow* row : rows) {
            row->setBounds(0, y, wide - margin, ParamRow::usualHeight);
            y += ParamRow::usualHeight;
        }
    };
    build();
}

void ParamList::build() {
    inner->clear();
    rows.clear();
    for (int i = 0; i < countOf(comp); i++) {
        rows.push_back(new ParamRow(win, workspace, comp, i));
        inner->addControl(rows.back());
    }
    resized();
}

void ParamList::refresh() {
    if (int(rows.size()) != countOf(comp)) build();
    for (ParamRow* row : rows)
        if (!row->visibleRect().empty()) row->refresh();
}
