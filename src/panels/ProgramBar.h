#pragma once

#include "gui/CGroup.h"

#include <functional>

class CButton;
class CComp;
class CPopup;
class NameField;
class Workspace;

/// The programs of a component: the current one by name, its neighbours by two buttons, and in a
/// menu all of them and what can be done with them. Interface thread.
class ProgramBar : public CGroup {
public:
    static constexpr int usualHeight = 36;
    static constexpr int contentWidth = 312; ///< that its own controls take

    /// What the component can do beside what all can; what is empty is not offered.
    struct Deeds {
        std::function<void()> add;             ///< a program, which becomes the current one
        std::function<void(CPopup*)> addKinds; ///< adds entries that each make one
        std::function<void(const CStr&path)> open, save;
        const char* extension = ""; ///< of files, with its point
        /// Renames the current one; empty: a program of `CComp::progs` is renamed, and can be
        /// deleted.
        std::function<void(const CStr& name)> rename;
    };

    ProgramBar(CWin* win, Workspace& workspace, CComp* comp, Deeds deeds);
    ~ProgramBar() override;

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void refresh(); ///< follows the component

private:
    void addMenuEntry(CPopup* popup, const char* text, void (ProgramBar::*chosen)(CObject*));
    void nameClicked(CObject*);
    void programChosen(CObject* sender);
    void stepClicked(CCtrl* sender);
    void addClicked(CObject*);
    void renameClicked(CObject*);
    void removeClicked(CObject*);
    void openClicked(CObject*);
    void saveClicked(CObject*);
    void paintArrow(CButton* b, CGraphic* g, CRect rect);
    void choose(int index);

    Workspace& workspace;
    CComp* comp;
    Deeds deeds;
    CButton *name, *before, *behind;
    NameField* field = nullptr;
};
