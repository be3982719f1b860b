#pragma once

#include "setup/SetupPage.h"

class CCheckbox;
class CDropdown;
class CEdit;

/// Options of the program as a whole, all in the section "options".
class GlobalPage : public SetupPage {
public:
    GlobalPage(CSetupWin* window, CRect place);

private:
    void addStart();
    void addOptions();
    void addAltKey();
    void addText();
    void startChanged(CObject* sender);
    void optionChecked(CCheckbox* box);
    void altKeyChanged(CObject* sender);
    void smoothChecked(CCheckbox* sender);
    void fontChanged(CObject* sender);
    void sizeChanged(CObject* sender);
    void scaleChanged(CObject* sender);

    CDropdown *start = nullptr, *size = nullptr, *scale = nullptr, *altKey = nullptr;
    CEdit* font = nullptr;
};
