#include "ui/PluginMenu.h"

#include "base/Numbers.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "plugins/CVST.h"
#include "plugins/PluginPlaces.h"
#include "ui/MenuDeed.h"
#include "ui/PluginShelf.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <map>
#include <vector>

namespace {

using Chosen = std::function<void(std::unique_ptr<CComp>)>;

/// With its format where there are others of it.
CStr recentName(const PluginShelf& shelf, const PluginList::Entry& entry) {
    for (const PluginList::Effect& effect : shelf.list.effects())
        if (effect.size() > 1 && std::ranges::find(effect, &entry) != effect.end())
            return entry.facts.name + " (" + formatName(entry.format()) + ")";
    return entry.facts.name;
}

bool fits(const PluginFacts& facts, PluginUse use) {
    if (use == PluginUse::any) return true;
    return use == PluginUse::instrument ? facts.instrument : !facts.instrument && facts.inputs > 0;
}

void make(Workspace& workspace, const CStr& path, const Chosen& chosen) {
    if (std::unique_ptr<CComp> made = makePlugin(workspace, path)) chosen(std::move(made));
}

void addEntry(CPopup* popup, const CStr& text, Workspace& workspace, const PluginList::Entry& entry,
              const Chosen& chosen) {
    addDeed(popup, text,
            [&workspace, path = entry.path, chosen] { make(workspace, path, chosen); });
}

void addEffect(CPopup* popup, Workspace& workspace, const PluginList::Effect& effect,
               const Chosen& chosen) {
    const PluginList::Entry& usual = *effect.front();
    if (effect.size() == 1) return addEntry(popup, usual.facts.name, workspace, usual, chosen);
    CPopup* formats = popup->addSub(usual.facts.name);
    for (const PluginList::Entry* one : effect)
        addEntry(formats, formatName(one->format()), workspace, *one, chosen);
}

void addByMaker(CPopup* popup, Workspace& workspace, const PluginShelf& shelf, PluginUse use,
                const Chosen& chosen) {
    const auto before = [](const CStr& a, const CStr& b) { return compareText(a, b) < 0; };
    std::map<CStr, std::vector<PluginList::Effect>, decltype(before)> makers(before);
    for (const PluginList::Effect& effect : shelf.list.effects())
        if (fits(effect.front()->facts, use))
            makers[effect.front()->facts.vendor].push_back(effect);
    for (const auto& [maker, effects] : makers) {
        CPopup* sub = popup->addSub(maker.empty() ? CStr("Unknown") : maker);
        for (const PluginList::Effect& effect : effects) addEffect(sub, workspace, effect, chosen);
    }
}

void openFile(Workspace& workspace, const Chosen& chosen) {
    CFileWin dialog(workspace.mainWindow(), "Open plug-in", PluginFile::pickable,
                    workspace.dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    const CStr file = PluginFile::ofPicked(dialog.path);
    allowPlugin(file);
    make(workspace, file, chosen);
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
        if (fits(entry->facts, use))
            addEntry(popup, recentName(shelf, *entry), workspace, *entry, chosen);
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
