#pragma once

#include "setup/SetupPage.h"

/// Where the project and its audio lie.
class ProjectPage : public SetupPage {
public:
    ProjectPage(CSetupWin* window, CRect place);

private:
    void audioFolderClicked(CObject* sender);

    CLabel* audioFolder;
};
