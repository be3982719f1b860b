// When and how the application paints.
#include "gui/CApp.h"

#include "base/Numbers.h"
#include "gui/CBitmap.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <utility>

using Clock = std::chrono::steady_clock;

bool CApp::frameWanted() const {
    const auto waits = [](const auto& entry) { return !entry.second->pending.empty(); };
    return heldMotion || (!followers.empty() && Clock::now() < followUntil) ||
           std::any_of(windowTable.begin(), windowTable.end(), waits);
}

/// Events that wait come first, so that one frame shows them all, unless they keep it waiting.
void CApp::frameIfDue(bool eventsWait) {
    if (!frameWanted()) {
        wantedSince = {};
        return;
    }
    const auto now = Clock::now();
    if (wantedSince == Clock::time_point()) wantedSince = now;
    if (frames.due(now) && (!eventsWait || now - wantedSince >= FrameClock::period)) paintFrame();
}

void CApp::paintFrame() {
    const HandlerScope scope(this);
    const auto now = Clock::now();
    frames.made(now);
    wantedSince = {};
    deliverMotion();
    for (size_t i = 0; i < followers.size(); i++)
        if (followers[i]->shown() && followers[i]->onFrame())
            followUntil = now + FrameClock::followTime;
    paintWindows();
}

void CApp::paintWindows() {
    bool synced = false;
    for (const auto& [handle, win] : windowTable) {
        if (win->pending.empty()) continue;
        // A server that is slow must not be sent frames faster than it makes them.
        if (Display* display = liveDisplay(); display && !std::exchange(synced, true))
            XSync(display, False);
        win->paintPending();
    }
    if (Display* display = liveDisplay(); display && synced) XFlush(display);
}

void CApp::follow(CCtrl* ctrl) {
    followers.push_back(ctrl);
}

/// Of the motions between two frames the last one counts, as long as the same buttons are held.
void CApp::holdMotion(const XEvent& event) {
    if (heldMotion && (heldMotion->xmotion.window != event.xmotion.window ||
                       heldMotion->xmotion.state != event.xmotion.state))
        deliverMotion();
    heldMotion = std::make_unique<XEvent>(event);
}

void CApp::deliverMotion() {
    if (!heldMotion) return;
    const XMotionEvent motion = std::exchange(heldMotion, nullptr)->xmotion;
    if (CWin* win = windowOf(motion.window))
        win->mouseMove(motion.x, motion.y, translateButton(0, motion.state));
}

bool CApp::startDraw(CWin* win, CGraphic** g, CRect rect, bool force) {
    if (!liveDisplay() || (rect.empty() && !force)) return false;
    const bool buffered = doubleBuffer || force;
    if (buffered &&
        (!backBuffer || backBuffer->width < rect.right || backBuffer->height < rect.bottom)) {
        const int w = asMax(rect.right, backBuffer ? backBuffer->width : 1);
        const int h = asMax(rect.bottom, backBuffer ? backBuffer->height : 1);
        backBuffer.reset(); // before the new one is made: only one has to fit
        backBuffer = std::make_unique<CBitmap>(w, h);
    }
    CGraphic* surface = buffered ? backBuffer->graphic.get() : win->graphic.get();
    surface->originX = surface->originY = 0;
    surface->restoreClip(rect);
    surface->setClip(CRect());
    surface->fullPaint = rect == asRect(0, 0, win->width, win->height);
    *g = surface;
    return true;
}

void CApp::endDraw(CWin* win, CRect rect, bool force) {
    if ((!doubleBuffer && !force) || !backBuffer) return;
    win->graphic->restoreClip(rect);
    win->graphic->render(backBuffer.get(), rect.left, rect.top, rect.left, rect.top, rect.width(),
                         rect.height());
}

void CApp::drawNow(CWin* win, CCtrl* ctrl) {
    ctrl->redraw();
    win->paintPending();
    if (Display* display = liveDisplay()) XFlush(display);
}

void CApp::redrawAll() {
    const auto redraw = [](const auto& self, CWin* win) -> void {
        win->redraw();
        for (CWin* child : win->children) self(self, child);
    };
    for (CWin* win : windows) redraw(redraw, win);
}
