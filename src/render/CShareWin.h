#pragma once

#include "gui/dialogs/CDialogWin.h"

class CDropdown;
class CEdit;
class CLabel;
class CRender;
class CSoundCloudAddOn;
class Workspace;

/// Asks for what a song is to be called at the service of an add-on, who may hear it, and lets the
/// user connect and disconnect an account. With a result the choices stand in `render` and in the
/// add-on.
class CShareWin : public CDialogWin {
public:
    /// `render.addOn` is loaded.
    CShareWin(Workspace& space, CWin* owner, CRender& choices);

    void accept() override;

private:
    void addRow(const char* label, CCtrl* field);
    bool nameKey(CObject* sender, int& key, int mods);
    void accountClicked(CObject* sender);
    void backClicked(CObject* sender);
    void connect();
    void showAccount();

    Workspace& workspace;
    CRender& render;
    CSoundCloudAddOn* addOn;
    CLabel* account;
    CButton* accountButton;
    CEdit* name;
    CDropdown* sharing;
    int nextTop = margin;
};

/// Asks for the code that the service has given to the user; empty gives up.
CStr askServiceCode(CWin* owner, CSoundCloudAddOn* addOn);
