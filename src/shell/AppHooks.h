#pragma once

#include "engine/EditorHooks.h"

#include <memory>

class CApp;
class CCompEditor;
class CMainWin;
class DialogPlaces;
class LoopTick;

/// Fills in what the lower floors ask of the windows: message boxes, the status line, the places of
/// file dialogs, the loop that goes on while an edit waits, timers, the tick of the main window.
/// One at a time; interface thread.
class AppHooks : public EditorHooks {
public:
    AppHooks(CApp* app, CMainWin* window);
    ~AppHooks() override;
    AppHooks(const AppHooks&) = delete;
    AppHooks& operator=(const AppHooks&) = delete;

    void mainIdle() override;
    /// Opens the editor, or brings it to the front; or hides it.
    void showEditor(CComp* comp, bool show) override;
    void hideEditors(CComp* comp) override;
    bool editorVisible(CComp* comp) override;
    void deleteEditors(CComp* comp) override;
    void editMap(CComp* host) override;
    void refreshMap(CComp* host) override;
    void deleteMap(CComp* host) override { deleteEditors(host); }
    void idle(CComp* comp) override;

private:
    CCompEditor* editorOf(const CComp* comp) const;

    CMainWin* mainWin;
    std::unique_ptr<DialogPlaces> places;
    std::unique_ptr<LoopTick> timers;
};
