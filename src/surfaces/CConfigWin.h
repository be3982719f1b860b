#pragma once

#include "gui/CWin.h"

#include <vector>

class CButton;
class CCS;
class CDropdown;
class CEdit;
class CLabel;
class CTree;
class CTreeNode;
class SurfacesRoom;
class CValue;
class Workspace;
struct CControlMap;
struct CHWCtrl;
struct CHWCtrlGroup;
struct CControlPages;
struct CControlSectionPage;

/// "Control surface": the definition of a controller as a tree, and what can be set of the chosen
/// thing in it. Interface thread.
class CConfigWin : public CWin {
public:
    CConfigWin(Workspace& workspace, SurfacesRoom& room);

    void idle();    ///< interface tick, while it shows
    void rebuild(); ///< the tree anew: the definition is another
    void hide() override;
    void resized() override;

private:
    /// A node of the tree by its places in the definition; -1 for what it is not in.
    struct Chosen {
        int kind = 0; ///< NodeOf
        int a = -1, b = -1, c = -1;
    };

    void addBar();
    void addFields();
    CButton* addButton(const char* key, const char* text, const char* told, int wide,
                       void (CConfigWin::*clicked)(CObject*));
    template <class T>
    T* field(T* made, const char* spoken, void (CConfigWin::*changed)(CObject*));
    void showFields();
    void follow(); ///< what is shown of the last message, the page and the file
    CTreeNode* add(CTreeNode* to, const CStr& text, Chosen what);
    Chosen chosen() const;
    void choose(Chosen what);
    CHWCtrlGroup* group() const;
    CHWCtrl* ctrl() const;
    CControlPages* section() const;
    CControlSectionPage* page() const;
    CControlMap* map() const;
    CStr* nameOf() const; ///< of what is chosen; null without one
    CStr nodeText(const CControlMap& shown) const;

    void openClicked(CObject* sender);
    void saveClicked(CObject* sender);
    void closeClicked(CObject* sender);
    void teachClicked(CObject* sender);
    void addClicked(CObject* sender);
    void deleteClicked(CObject* sender);
    void nodeChosen(CObject* sender);
    void nameChanged(CObject* sender);
    void numberChanged(CObject* sender);
    void sysexChanged(CObject* sender);
    void modeChanged(CObject* sender);
    void groupChanged(CObject* sender);
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
    CEdit *name = nullptr, *sysex = nullptr;
    CValue *cc = nullptr, *param = nullptr;
    CDropdown *mode = nullptr, *leads = nullptr, *outs = nullptr;
    CValue* oscPort = nullptr;
    CEdit* oscTarget = nullptr;
    CLabel *outsLabel = nullptr, *oscPortLabel = nullptr, *oscTargetLabel = nullptr;
    std::vector<CCtrl*> fields;  ///< all of these that show what is chosen
    std::vector<CLabel*> labels; ///< of each of them
    int nextLeft = 0;
    int shownEvent = -1;
    size_t shownCtrls = 0;
    CStr folder; ///< of the last dialog
};
