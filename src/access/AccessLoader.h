#pragma once

#include "base/Atomic.h"
#include "base/CThread.h"

#include <memory>

class CApp;
class CWin;

/// Shows the windows to assistive technology while the desktop has some. A thread asks the session
/// bus, which nobody waits for; without such a bus, or with nobody listening, nothing is loaded.
/// Interface thread.
class AccessLoader {
public:
    /// Both outlive it. `program` is what the desktop is told that this is.
    AccessLoader(CApp* app, CWin* window, const CStr& program);
    ~AccessLoader();
    AccessLoader(const AccessLoader&) = delete;
    AccessLoader& operator=(const AccessLoader&) = delete;

private:
    class Asker;
    class Tick;
    void follow();
    void open();

    CApp* app;
    CStr program;
    std::unique_ptr<Asker> asker; ///< null without a session bus
    std::unique_ptr<Tick> tick;
    void* module = nullptr; ///< stays loaded
    bool failed = false;    ///< the module is missing: no second try
};
