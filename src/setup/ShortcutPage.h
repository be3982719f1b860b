#pragma once

#include "setup/SetupPage.h"

class CAction;
class CCheckbox;
class CEdit;
class CTree;
class CTreeNode;

/// The keys of all actions.
class ShortcutPage : public SetupPage {
public:
    ShortcutPage(CSetupWin* window, CRect place);

private:
    void setupActionTree(int treeWidth);
    void addActions(CTreeNode* node);
    void addKeyFields(int x);
    CCheckbox* addModifier(const char* text, int flag, int x);
    CAction* action() const; ///< the chosen one; null without
    void showAction();
    CStr otherUse() const;
    void actionChanged(CObject* sender);
    void actionKeyChanged(CObject* sender);
    void modKeyChanged(CObject* sender);
    bool keyPressed(CObject* sender, int& key, int mods);

    CTree* tree = nullptr;
    CEdit* keyEdit = nullptr;
    CCheckbox *shift = nullptr, *control = nullptr, *alt = nullptr;
    CLabel *title = nullptr, *note = nullptr;
};
