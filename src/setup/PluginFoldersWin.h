#pragma once

#include "gui/dialogs/CDialogWin.h"
#include "plugins/remote/PluginProcesses.h"

#include <set>
#include <string>

class CButton;
class CListbox;
class CQV;
class Workspace;

/// Names the folders in which plug-ins are looked for: a list, and buttons that add and delete.
class PluginFoldersWin : public CDialogWin {
public:
    PluginFoldersWin(CWin* owner, CQV* host);

private:
    void fill();
    void addClicked(CObject*);
    void delClicked(CObject*);
    void rowChosen(CObject*);

    CQV* host;
    CListbox* list;
    CButton* del;
};

/// Where plug-ins run, and what they ask of the windows. The user is asked where those are that are
/// not found, once for each while the answer is no. Interface thread.
class AskPluginFolders : public PlacePlugins {
public:
    AskPluginFolders(Workspace& workspace, std::shared_ptr<PluginProcesses> processes);

    bool askFolders(const CStr& name) override;
    void called() override;

private:
    Workspace& workspace;
    std::set<std::string> refused;
};
