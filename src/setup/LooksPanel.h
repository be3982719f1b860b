#pragma once

#include "gui/CGroup.h"

class CGuiItemPanel;
class CQV;
class CScrollPanel;
class CTree;

/// The page of the setup that chooses and edits the look: buttons for the skins and theme files, a
/// tree of all items by area, and the editor of the chosen one. Every change shows at once in the
/// whole program; which skin or file it is goes to the settings at once. Interface thread.
class LooksPanel : public CGroup {
public:
    /// It follows the size of its group when it is aligned so. `host` outlives it.
    LooksPanel(CWin* win, CQV* host, int left, int top, int width, int height);

private:
    void addButtons();
    void addButton(const char* text, void (LooksPanel::*clicked)(CObject*));
    void addTree();
    void addEditor();
    void skinChosen(int look);
    CStr themeFolder() const;
    void lightClicked(CObject* sender);
    void darkClicked(CObject* sender);
    void defaultClicked(CObject* sender);
    void openClicked(CObject* sender);
    void saveClicked(CObject* sender);
    void treeChanged(CObject* sender);
    void editorChanged(CObject* sender);

    CQV* qv;
    CTree* tree = nullptr;          ///< one of `controls`, as the next
    CScrollPanel* scroll = nullptr; ///< around the editor
    CGuiItemPanel* editor = nullptr;
    int buttonX = 0; ///< where the next button comes
};
