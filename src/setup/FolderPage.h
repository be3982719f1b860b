#pragma once

#include "setup/SetupPage.h"

class CListbox;

/// The folders that the browser shows, a list for each kind.
class FolderPage : public SetupPage {
public:
    FolderPage(CSetupWin* window, CRect place);

private:
    void addFolderSection(int mode, const CStr& title);
    void fill(CListbox* list);
    void folderChosen(CObject* sender);
    void addFolder(CObject* sender);
    void delFolder(CObject* sender);
    void tell(const CListbox* list); ///< that its folders have changed
};
