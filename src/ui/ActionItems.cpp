#include "ui/ActionItems.h"

#include "base/Delegates.h"
#include "gui/controls/CPopup.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

class RunAction : public COnChange {
public:
    RunAction(Workspace& around, CAction* one) : workspace(around), action(one) {}
    void operator()(CObject*) override { workspace.runAction(action); }

private:
    Workspace& workspace;
    CAction* action;
};

} // namespace

CMenuItem* addActionItem(CPopup* popup, Workspace& workspace, const char* name, const CStr& text) {
    CAction* action = workspace.commands().getAction(name);
    if (!action->bound()) return nullptr;
    CStr line = text.empty() ? action->label : text;
    const CStr shortcut = workspace.shortcutOf(action);
    if (!shortcut.empty()) line += "\t" + shortcut;
    CMenuItem* item = popup->add(line, new RunAction(workspace, action));
    item->enabled = workspace.canRun(action);
    item->checked = workspace.isOn(action);
    return item;
}

void addActionItems(CPopup* popup, Workspace& workspace, std::initializer_list<const char*> names) {
    popup->addSeparator();
    for (const char* name : names) addActionItem(popup, workspace, name);
}
