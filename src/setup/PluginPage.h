#pragma once

#include "plugins/scan/PluginList.h"
#include "setup/SetupPage.h"

#include <vector>

class CCheckbox;
class CDropdown;
class CListbox;
class PluginShelf;

/// What is known of the plug-ins in the folders: those that can be used, and why the others cannot.
class PluginPage : public SetupPage {
public:
    PluginPage(CSetupWin* window, CRect place);
    ~PluginPage() override;
    PluginPage(const PluginPage&) = delete;
    PluginPage& operator=(const PluginPage&) = delete;

private:
    void fill();
    void tellCount();
    float loadOf(const PluginList::Effect& effect) const; ///< in the song; below 0: it is not there
    CStr chosen() const; ///< of the format that is chosen, as in `PluginFile`; empty without one
    void rowChosen(CObject*);
    void formatChosen(CObject*);
    void trustClicked(CObject*);
    void groupsChosen(CObject*);
    void newClicked(CObject*);
    void againClicked(CObject*);
    void allClicked(CObject*);
    void stopClicked(CObject*);

    PluginShelf& shelf;
    CListbox* list;
    CLabel *count, *about;
    CButton *again, *stop;
    CCheckbox* trusted;
    CDropdown *groups, *formats;
    std::vector<std::vector<CStr>> lines; ///< the formats of each, as in `PluginFile`
};
