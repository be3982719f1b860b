#pragma once

#include "gui/dialogs/CDialogWin.h"

class CardList;
class CCheckbox;
class CStringList;

/// "Welcome": asks for a kind of new project or one that was open lately, and whether to ask when
/// the program starts, which it writes into the settings. Space goes to
/// `onKeyDown`, unless a button has the focus: it plays the song behind the window.
class CWelcomeWin : public CDialogWin {
public:
    int kind;  ///< ProjectKind of the result
    CStr path; ///< to open, of `kindFile`

    /// `chosenKind` is the new project that is offered first; the list outlives the window.
    CWelcomeWin(CWin* owner, const CStringList& recent, int chosenKind);

    void accept() override;
    bool keyDown(int key, int mods) override;

private:
    CardList* addList(const char* name, const char* title, int left, int wide);
    void addStartSwitch();
    void fill(int chosenKind);
    void kindChanged(CObject* sender);
    void recentChanged(CObject* sender);
    void opened(CObject* sender);
    void browseClicked(CObject* sender);
    void atStartClicked(CObject* sender);

    const CStringList& recentPaths;
    CardList *kinds, *files;
    CCheckbox* atStart = nullptr;
};
