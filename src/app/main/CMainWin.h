#pragma once

#include "gui/CWin.h"

class CQV;
class SongView;
class StatusLine;
class Toolbar;

/// The one top-level window of the program, and the interface's link to the host: its timer is the
/// heartbeat of the engine's interface side.
class CMainWin : public CWin {
public:
    CMainWin(CApp* app, CQV* host);

    /// Makes the content, once the song is there.
    void init();
    /// Calls `CQV::idle`, which calls `idle` here.
    void onTimer() override;
    /// Turns changes of the engine into repaints.
    void idle();
    /// Keeps the window's place in the settings; the program ends when the window is hidden.
    void hide() override;
    /// Space, Home and Escape, in every window of the program.
    bool handleKeyDown(CObject* sender, int& key, int mods);
    bool keyDown(int key, int mods) override;
    void setStatus(const CStr& text);

private:
    void showHint(CObject* sender);
    void writeSettings();
    void showDevice();
    CStr deviceText() const;

    /// What the status line tells of the device; -1 none.
    struct DeviceState {
        int device = -1, frames = 0;
        float rate = 0.0f;
        bool operator==(const DeviceState&) const = default;
    };

    CQV* qv;
    DeviceState shownDevice{-2, 0, 0.0f}; ///< nothing told yet
    Toolbar* bar = nullptr;
    SongView* song = nullptr;
    StatusLine* status = nullptr;
};
