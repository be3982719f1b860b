#pragma once

#include "gui/CWin.h"
#include "surfaces/SurfacePlace.h"

#include <memory>

class CButton;
class CCS;
class CCSWin;
class CDropdown;
class CEdit;
class CLabel;
class CTree;
class CTreeNode;
class SurfaceFields;
class SurfacesRoom;
class CValue;
class Workspace;

/// "Control surface": the definition of a controller as a tree, and what can be set of the chosen
/// thing in it. Interface thread.
class CConfigWin : public CWin {
public:
    CConfigWin(Workspace& workspace, SurfacesRoom& room);
    ~CConfigWin() override;
    CConfigWin(const CConfigWin&) = delete;
    CConfigWin& operator=(const CConfigWin&) = delete;

    void idle();    ///< interface tick, while it shows
    void rebuild(); ///< the tree anew: the definition is another
    void hide() override;
    void resized() override;

private:
    void addBar();
    void addFields();
    CButton* addButton(const char* key, const char* text, const char* told, int wide,
                       void (CConfigWin::*clicked)(CObject*));
    void showFields();
    void follow(); ///< what is shown of the last message, the page and the file
    CTreeNode* add(CTreeNode* to, const CStr& text, SurfacePlace what);
    SurfacePlace chosen() const;
    void choose(const SurfacePlace& what);
    CStr nodeText(const CControlMap& shown) const;

    void openClicked(CObject* sender);
    void saveClicked(CObject* sender);
    void closeClicked(CObject* sender);
    void teachClicked(CObject* sender);
    void panelClicked(CObject* sender);
    void addClicked(CObject* sender);
    void deleteClicked(CObject* sender);
    void nodeChosen(CObject* sender);
    void changed();
    bool mayDrop(); ///< asks about changes that are in no file
    void fillOuts();
    void outChanged(CObject* sender);

    void addFoot();
    template <class T>
    CLabel* footField(T* made, const char* label, const char* told,
                      void (CConfigWin::*changed)(CObject*));
    void oscPortChanged(CObject* sender);
    void oscTargetChanged(CObject* sender);

    Workspace& workspace;
    SurfacesRoom& room;
    CCS& surface;
    CTree* tree = nullptr;
    CLabel *file = nullptr, *heard = nullptr;
    CButton *teach = nullptr, *addTo = nullptr, *del = nullptr, *save = nullptr;
    SurfaceFields* fields = nullptr;
    CDropdown* outs = nullptr;
    CValue* oscPort = nullptr;
    CEdit* oscTarget = nullptr;
    CLabel *outsLabel = nullptr, *oscPortLabel = nullptr, *oscTargetLabel = nullptr;
    int nextLeft = 0;
    int shownEvent = -1;
    int shownTaught = 0;
    bool shownWaits = false, shownPreset = false;
    std::unique_ptr<CCSWin> panel; ///< null until it shows first
    CStr folder;                   ///< of the last dialog
};
