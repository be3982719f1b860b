#pragma once

#include "setup/SetupPage.h"

class CButton;
class CListbox;

/// The folders that the browser shows, a list for each kind.
class FolderPage : public SetupPage {
public:
    FolderPage(CSetupWin* window, CRect place);

private:
    void addFolderSection(int mode, const CStr& title);
    void fill(CListbox* list);
    void folderChosen(CListbox* list);
    void addFolder(CButton* sender);
    void delFolder(CButton* sender);
    void tell(const CListbox* list); ///< that its folders have changed
};
