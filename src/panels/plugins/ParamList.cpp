#include "panels/plugins/ParamList.h"

#include "panels/plugins/FileRow.h"
#include "panels/plugins/ParamRow.h"
#include "plugins/CVST.h"
#include "plugins/PluginValues.h"

#include <algorithm>

namespace {

constexpr int margin = 4;

int countOf(CVST& plugin) {
    return std::min(plugin.numParams(), int(PluginValues::most));
}

std::vector<Plugin::File> filesOf(const CVST& plugin) {
    return plugin.opened() ? plugin.loaded()->files() : std::vector<Plugin::File>();
}

} // namespace

ParamList::ParamList(CWin* owner, Workspace& space, CVST& of)
    : PanelBody(owner, "parameters", 0, 0, 1, 1), workspace(space), plugin(of) {
    spokenName = "Parameters";
    arrange = [this](int wide) {
        int y = margin;
        const auto lay = [&](CCtrl* row) {
            row->setBounds(0, y, wide - margin, ParamRow::usualHeight);
            y += ParamRow::usualHeight;
        };
        for (FileRow* row : files) lay(row);
        for (ParamRow* row : rows) lay(row);
    };
    build();
}

void ParamList::build() {
    inner->clear();
    files.clear();
    rows.clear();
    for (int i = 0; i < int(filesOf(plugin).size()); i++) {
        files.push_back(new FileRow(win, workspace, plugin, i));
        inner->addControl(files.back());
    }
    for (int i = 0; i < countOf(plugin); i++) {
        rows.push_back(new ParamRow(win, workspace, plugin, i));
        inner->addControl(rows.back());
    }
    resized();
}

void ParamList::refresh() {
    const std::vector<Plugin::File> known = filesOf(plugin);
    if (int(rows.size()) != countOf(plugin) || files.size() != known.size()) build();
    for (size_t i = 0; i < std::min(files.size(), known.size()); i++) files[i]->show(known[i]);
    for (ParamRow* row : rows)
        if (!row->visibleRect().empty()) row->refresh();
}
