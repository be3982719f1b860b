#include "ui/CProgressWin.h"

#include "gui/CApp.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CTabs.h"
#include "ui/CProgressBar.h"
#include "ui/WorkScope.h"
#include "ui/Workspace.h"

namespace {

constexpr int contentWidth = 360, contentHeight = 108;
constexpr int textHeight = 20, barHeight = 16;
constexpr int barTop = CDialogWin::margin + textHeight + 4;

} // namespace

CProgressWin::CProgressWin(Workspace& space, const CStr& title)
    : CDialogWin(space.mainWindow(), title, contentWidth, contentHeight,
                 winCaption | winCentre | winEscape),
      workspace(space),
      status(new CLabel(this, "", margin, margin, contentWidth - 2 * margin, textHeight)),
      bar(new CProgressBar(this, "progress", margin, barTop, contentWidth - 2 * margin,
                           barHeight)) {
    addControl(status);
    addControl(bar);
    addButton("Cancel", new _COnChange<CProgressWin>(this, &CProgressWin::cancelClicked));
}

CProgressWin::~CProgressWin() {
    if (work) CDialogWin::hide();
}

void CProgressWin::cancelClicked(CObject*) {
    hide();
}

void CProgressWin::hide() {
    if (!work || cancelled) return;
    cancelled = true;
    status->setText("Cancelling...");
    firstButton->setEnabled(false);
}

void CProgressWin::hold() {
    app->killMenu(nullptr);
    work = std::make_unique<WorkScope>(workspace, this);
}

void CProgressWin::open() {
    if (!work) hold();
    show(true);
    setFocus(true);
    work->turn();
}

void CProgressWin::onStatus(const CStr& text) {
    if (!cancelled) status->setText(text);
    if (!visible) open();
}

bool CProgressWin::onRender(float done) {
    bar->setDone(done);
    if (work) work->turn();
    return !cancelled;
}

std::function<bool(const CStr& what, float done)> watchBy(CProgressWin& progress) {
    return [&progress, told = CStr()](const CStr& what, float done) mutable {
        if (!(what == told)) progress.onStatus(what);
        told = what;
        return progress.onRender(done);
    };
}
