#include "ui/ActionItems.h"

#include "base/Delegates.h"
#include "gui/controls/CPopup.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

class RunAction : public COnChange {
public:
    RunAction(const Commands& all, const CAction* one) : commands(all), action(one) {}
    void operator()(CObject*) override { commands.run(action); }

private:
    const Commands& commands;
    const CAction* action;
};

} // namespace

CMenuItem* addActionItem(CPopup* popup, Workspace& workspace, const char* name, const CStr& text) {
    const Commands& commands = workspace.commands();
    const CAction* action = commands.getAction(name);
    if (!action->bound()) return nullptr;
    CStr line = text.empty() ? action->label : text;
    const CStr shortcut = workspace.shortcutOf(action);
    if (!shortcut.empty()) line += "\t" + shortcut;
    CMenuItem* item = popup->add(line, new RunAction(commands, action));
    item->enabled = action->isReady();
    item->checked = action->isOn();
    return item;
}
