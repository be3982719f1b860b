#pragma once

#include "gui/dialogs/CDialogWin.h"
#include "sequencer/render/RenderExport.h"

#include <functional>
#include <memory>

class CLabel;
class Workspace;
class CProgressBar;
class WorkScope;

/// Shows how far a render is that has nothing to ask. Made on the stack around the render; it comes
/// up with the first status, and goes with the object. Cancel, Escape and the close button end the
/// render.
class CProgressWin : public CDialogWin, public RenderUi {
public:
    CProgressWin(Workspace& space, const CStr& title);
    ~CProgressWin() override;

    /// The user waits from now on, though the window is still to come up.
    void hold();
    void hide() override;
    void onStatus(const CStr& text) override;
    bool onRender(float done) override;

private:
    void open();
    void cancelClicked(CObject* sender);

    Workspace& workspace;
    CLabel* status;
    CProgressBar* bar;
    std::unique_ptr<WorkScope> work; ///< while it is shown
    bool cancelled = false;
};

/// Shows how far the work is that calls it, once it does: told what is worked on, and what part of
/// all is done, 0 to 1; false once it is cancelled. `progress` outlives it.
std::function<bool(const CStr& what, float done)> watchBy(CProgressWin& progress);
