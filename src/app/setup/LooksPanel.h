#pragma once

#include "gui/CGroup.h"

class CQV;
class CTree;
class GuiItemPanel;

/// The page of the setup that chooses and edits the look: buttons for the skins and theme files, a
/// tree of all items by area, and the editor of the chosen one. Every change shows at once in the
/// whole program; the choice of a skin is written to the settings at once. Interface thread.
class LooksPanel : public CGroup {
public:
    /// It follows the size of its group when it is aligned so. `host` outlives it.
    LooksPanel(CWin* win, CQV* host, int left, int top, int width, int height);

private:
    void addButtons();
    void addTree();
    void showItem();
    void lightClicked(CObject* sender);
    void darkClicked(CObject* sender);
    void defaultClicked(CObject* sender);
    void openClicked(CObject* sender);
    void saveClicked(CObject* sender);
    void treeChanged(CObject* sender);

    CQV* qv;
    CTree* tree = nullptr;          ///< one of `controls`
    GuiItemPanel* editor = nullptr; ///< likewise
};
