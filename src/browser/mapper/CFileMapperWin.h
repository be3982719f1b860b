#pragma once

#include "base/CStr.h"
#include "gui/CWin.h"

class CButton;
class CDropdown;
class CFileMapper;
class CListbox;
class CStringList;

/// "Playlist": the lists, and the projects of the current one. As long as it shows, program changes
/// choose from it. Interface thread.
class CFileMapperWin : public CWin {
public:
    CDropdown* mapsDropdown = nullptr;
    CListbox* projectsList = nullptr;
    CFileMapper* mapper; ///< not owned

    /// `owner` is the main window, which gets the keys that are not used here.
    CFileMapperWin(CFileMapper* model, CWin* owner);
    ~CFileMapperWin() override;
    CFileMapperWin(const CFileMapperWin&) = delete;
    CFileMapperWin& operator=(const CFileMapperWin&) = delete;

    void setup(); ///< shows what the model has now
    void setCurrentMap(int i);

private:
    CButton* addButton(const char* name, const char* text, const char* told, int wide,
                       void (CFileMapperWin::*clicked)(CObject*));
    bool needsList();
    void addProject(const CStr& path);
    void mapsChanged(CObject* sender);
    void mapsMenuClicked(CObject* sender);
    void newMapClicked(CObject* sender);
    void deleteMapClicked(CObject* sender);
    void addClicked(CObject* sender);
    void deleteClicked(CObject* sender);
    void upClicked(CObject* sender);
    void downClicked(CObject* sender);
    void move(int by);
    void projectChanged(CObject* sender);
    void playProjectClicked(CObject* sender);
    void btnPaint(CObject* sender, CGraphic* g, CRect rect);
    void fileDrop(CObject* sender, int x, int y, int btn);

    int nextLeft = 0; ///< of the next button
    CStr folder;      ///< of the last dialog
};
