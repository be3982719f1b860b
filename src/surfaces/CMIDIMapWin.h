#pragma once

#include "ui/CCompEditor.h"

#include <vector>

class CButton;
class CDropdown;
class CLabel;
class CMapPanel;
class CQV;
class CScrollPanel;
class TransportPanel;
class Workspace;

/// "MIDI controllers": which controllers of MIDI devices lead to which parameters, in lists of
/// which one is in force. Interface thread.
class CMIDIMapWin : public CCompEditor {
public:
    CMIDIMapWin(Workspace& workspace, CQV& host);
    ~CMIDIMapWin() override;
    CMIDIMapWin(const CMIDIMapWin&) = delete;
    CMIDIMapWin& operator=(const CMIDIMapWin&) = delete;

    void idle() override;
    void resized() override;
    void hide() override;
    void rebuild(); ///< the rows anew: the lists have changed

private:
    void addBar();
    void addHead();
    int rowsWidth() const;
    void followList();
    void updateLeds();
    void programChanged(CObject* sender);
    void programMenuClicked(CObject* sender);
    void learnClicked(CObject* sender);
    void addMapClicked(CObject* sender);
    void rename();
    void paintHead(CObject* sender, CGraphic* g, CRect rect);

    Workspace& workspace;
    CQV* qv;
    CDropdown* programs = nullptr;
    CButton *learn = nullptr, *add = nullptr;
    CLabel* display = nullptr; ///< the controller that moved last
    CCtrl* head = nullptr;     ///< the names of the columns
    TransportPanel* transport = nullptr;
    CScrollPanel* list = nullptr;
    std::vector<CMapPanel*> rows; ///< among the controls of the list
    CStr shownNames;              ///< of the lists
    int shownCC = 0;
};
