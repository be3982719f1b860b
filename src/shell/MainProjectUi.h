#pragma once

#include "project/ProjectUi.h"

class CMainWin;

/// What projects get of the main window. Its pages are made from the records of a
/// file, and stored in them.
class MainProjectUi : public ProjectUi {
public:
    explicit MainProjectUi(CMainWin* mainWin) : window(mainWin) {}

    void gatherWindows() override;
    void clearWindows() override;
    void showPages() override;
    void placeMainWindow() override;
    void waitCursor(bool on) override;
    void projectChanged(const CStr& path) override;
    void addRecent(const CStr& path) override;

private:
    CMainWin* window;
    bool opening = false; ///< the windows are those of a project that comes
};
