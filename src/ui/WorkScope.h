#pragma once

class CApp;
class Workspace;
class CWin;

/// The interface thread at work inside a handler. As long as it stands the program is modal to one
/// window, and no project is loaded or closed. The work has to call `turn` every few milliseconds.
class WorkScope {
public:
    /// `window` is shown already; both outlive the scope.
    WorkScope(Workspace& space, CWin* window);
    ~WorkScope();
    WorkScope(const WorkScope&) = delete;
    WorkScope& operator=(const WorkScope&) = delete;

    /// Handles the events that wait. Timers stand still, as the graph is not theirs meanwhile.
    void turn();

private:
    Workspace& workspace;
    CApp* app;
    CWin* former; ///< that was modal before
};
