#include "ui/PluginMenu.h"

#include "base/Numbers.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "plugins/CVST.h"
#include "plugins/PluginPlaces.h"
#include "ui/MenuDeed.h"
#include "ui/PluginShelf.h"
#include "ui/Workspace.h"

#include <map>
#include <vector>

namespace {

using Chosen = std::function<void(std::unique_ptr<CComp>)>;

bool fits(const PluginFacts& facts, PluginUse use) {
    if (use == PluginUse::any) return true;
    return use == PluginUse::instrument ? facts.instrument : !facts.instrument && facts.inputs > 0;
}

void make(Workspace& workspace, const CStr& path, const Chosen& chosen) {
    if (std::unique_ptr<CComp> made = makePlugin(workspace, path)) chosen(std::move(made));
}

void addEntry(CPopup* popup, Workspace& workspace, const PluginList::Entry& entry,
              const Chosen& chosen) {
    addDeed(popup, entry.facts.name,
            [&workspace, path = entry.path, chosen] { make(workspace, path, chosen); });
}

void addByMaker(CPopup* popup, Workspace& workspace, const PluginShelf& shelf, PluginUse use,
                const Chosen& chosen) {
    const auto before = [](const CStr& a, const CStr& b) { return compareText(a, b) < 0; };
    std::map<CStr, std::vector<const PluginList::Entry*>, decltype(before)> makers(before);
    for (const PluginList::Entry* entry : shelf.list.usable())
        if (fits(entry->facts, use)) makers[entry->facts.vendor].push_back(entry);
    for (const auto& [maker, entries] : makers) {
        CPopup* sub = popup->addSub(maker.empty() ? CStr("Unknown") : maker);
        for (const PluginList::Entry* entry : entries) addEntry(sub, workspace, *entry, chosen);
    }
}

void openFile(Workspace& workspace, const Chosen& chosen) {
    CFileWin dialog(workspace.mainWindow(), "Open plug-in", ".so", workspace.dialogFolder(), "",
                    false);
    dialog.showModal();
    if (!dialog.result) return;
    allowPlugin(dialog.path);
    make(workspace, dialog.path, chosen);
}

} // namespace

std::unique_ptr<CComp> makePlugin(Workspace& workspace, const CStr& path) {
    std::unique_ptr<CVST> made = newPlugin(workspace.host(), path);
    if (made) workspace.pluginShelf().used(path);
    return made;
}

void fillPluginMenu(CPopup* popup, Workspace& workspace, PluginUse use, const Chosen& chosen) {
    const PluginShelf& shelf = workspace.pluginShelf();
    for (const PluginList::Entry* entry : shelf.recent())
        if (fits(entry->facts, use)) addEntry(popup, workspace, *entry, chosen);
    popup->addSeparator();
    addByMaker(popup, workspace, shelf, use, chosen);
    popup->addSeparator();
    if (shelf.scan.busy())
        popup
            ->add("Looking at plug-ins: " + asStr(shelf.scan.done()) + " of " +
                      asStr(shelf.scan.total()),
                  nullptr)
            ->enabled = false;
    addDeed(popup, "Open file...", [&workspace, chosen] { openFile(workspace, chosen); });
}
