#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/Delegates.h"
#include "gui/CDrag.h"
#include "gui/CGui.h"
#include "gui/FrameClock.h"

#include <chrono>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

class CBitmap;
class CCtrl;
class CDragWin;
class CDropItem;
class CForeign;
class CWin;
class InputMethod;
class KeyPlayer;
class LiveTree;
class TouchInput;
class XdndTarget;
union _XEvent;

/// The running interface: the windows, the timers, the open menus, what is being dragged, and the
/// off-screen buffer that all windows are painted through. One in a program. Interface thread.
///
/// Everything happens in `run`: events are handled until there are none, timers are stepped, a
/// frame is made of all that has changed, and until more is due it waits for events. Modal windows
/// and menus run loops of the same shape inside.
class CApp : public CObject {
public:
    static constexpr int turnMs = 10;           ///< the shortest interval of a timer
    static constexpr int doubleClickTime = 400; ///< milliseconds
    static constexpr int dispatchMs = 40;

    int appCursor = 0;  ///< above 0 it replaces every window's cursor
    bool active = true; ///< one of the windows has the focus
    bool running = false;
    ListOf<CWin> menus;   ///< windows that are open as menus, the last one on top
    ListOf<CWin> windows; ///< visible top-level windows in the order in which they were shown
    ListOf<CCtrl> timers;
    CWin* mainWin = nullptr;
    CWin* topMenu = nullptr;  ///< last of `menus`
    CWin* modalWin = nullptr; ///< the innermost modal window, null without one
    CWin* hintWin = nullptr;  ///< owned; null unless one is installed
    bool hintsOn = true;
    CCtrl* hooverCtrl = nullptr;
    CCtrl* exclusiveCtrl = nullptr; ///< while set, presses on other controls do nothing
    CCtrl* keyHookCtrl = nullptr;   ///< gets all keys first
    CCtrl* menuCtrl = nullptr;      ///< whose context menu a key is opening; null without one
    CCtrl* mouseOverCtrl = nullptr; ///< the one that was told that the pointer is over it
    COnKey* onKey = nullptr;        ///< owned; gets the keys of every window before its controls
    COnChange* onHint = nullptr;    ///< owned; called with the control under the pointer, or null
    COnChange* onFileDialog = nullptr; ///< owned; a `CFileWin` was made and may get more places
    /// Of all windows that are made from now on: for each size its width, height, and pixels as
    /// alpha, red, green and blue from the high byte on.
    std::vector<unsigned long> icon;
    bool doubleBuffer = true;
    std::unique_ptr<CBitmap> backBuffer; ///< grows to the largest area painted
    std::unique_ptr<CGui> gui;           ///< the theme; starts with the dark look
    COnChange* onEndDrag = nullptr;      ///< owned; a drag ends, dropped or not
    /// Owned; takes drops on windows in which nobody else does. Null refuses them.
    COnChange* onStrayDrop = nullptr;
    std::unique_ptr<LiveTree> access; ///< null while nobody reads the program by it

    /// Whether presses of keys and buttons have to wait, for a moment, since what they act on is
    /// being changed. Null: they never do.
    std::function<bool()> inputHeld;
    KeyPlayer* keyPlayer = nullptr; ///< not owned; null while nobody plays on the keys

    CPoint lastMousePos;     ///< on the screen, of the last press
    long lastMouseTime = -1; ///< of the last press that can begin a double click, -1 none
    int lastModKey = 0;      ///< flags of the last mouse event
    int lastMouseBtn = 0;    ///< 1 left, 2 right button of the last press, 0 after a release
    int pressedButton = 0;   ///< number of the button that began the press; 0 without one
    CWin* lastWin = nullptr; ///< that is being told of its new focus
    ListOf<CDropItem>* dragList = nullptr; ///< owned, with its contents; null without a drag
    CCtrl *dragCtrl = nullptr, *dragOverCtrl = nullptr;
    CDrag drag{this};                  ///< of a control inside its window
    std::unique_ptr<TouchInput> touch; ///< null until `open`
    std::vector<CForeign*> foreign;    ///< places for windows of others; not owned
    double restY = 0, restX = 0;       ///< parts of a notch that `CWin::touch` has kept

    CApp();
    ~CApp() override;

    /// Connects to the display. Without one it writes a line to standard error and is false: the
    /// program then ends with status 1.
    bool open();
    /// Shows the window and runs until it is hidden or the server is lost.
    void run(CWin* main);
    /// Handles the events that wait. While more and more come, it returns after `dispatchMs`, so
    /// that the timers go on; with a modal window, also when that one is hidden.
    void dispatchEvents(const CWin* modal = nullptr);
    std::chrono::steady_clock::time_point dispatchEnd() const; ///< by when to return, from now on
    /// Steps the timers by the milliseconds that have passed, then waits for an event, the next
    /// timer or the end of a turn.
    void idle();
    /// The same, but waits until a timer is due: for loops in which only events and timers act.
    void longIdle();
    /// Calls `onTimer` after `ms` milliseconds, no sooner than 10. A control has
    /// one timer at most: a new one replaces it. Calls that came too late are left out.
    void addTimer(CCtrl* ctrl, int ms, bool repeat);
    void killTimer(CCtrl* ctrl);
    void nextWin(CWin* from, int mods); ///< gives the focus to the next window
    void activeChanged();               ///< asks whether a window has the focus; else menus close
    void killMenu(CWin* keep);          ///< closes the menus above `keep`, all for null

    /// Begins to drag from `ctrl`, null for another program. The caller fills `dragList`, which is
    /// empty now.
    void startDrag(CCtrl* ctrl);
    void endDrag(); ///< ends it, dropped or not
    ListOf<CDropItem>* getDraglist() const { return dragList; }
    ListOf<CDropItem>* getDropItems() const { return dragList; }
    bool hasDragObj(const CObject* object) const;           ///< dragged as the object of an item
    bool hasDragType(int dropType) const;                   ///< an item of that `CDropItem::type`
    bool dragHasObject(int objCategory, int objType) const; ///< an object of that class
    void dragStep(int btn);                                 ///< the pointer moved during a drag
    void drop(int btn); ///< the button was released during a drag
    /// The same for a drag of any program: at a point of the screen, over the window `under`, null
    /// for none of ours. `dragOver` tells whether a control, the window or `onStrayDrop` takes
    /// drops there.
    bool dragOver(CWin* under, CPoint pointer, int btn);
    void dropOn(CWin* under, CPoint pointer, int btn);
    void hideDragWin();

    /// Where a context menu opens: below the control whose menu a key has asked for, else at the
    /// pointer.
    CPoint menuPoint() const;

    void setCursor(int number); ///< for all windows, 0 or below gives each its own again
    void cancelHint();
    void updateHint(CCtrl* ctrl);
    void setHooverCtrl(CCtrl* ctrl, int x, int y);

    /// A surface for a part of a window in window coordinates, its clip being that part; false when
    /// there is nothing to paint. `force`: on the buffer, even for an empty rectangle.
    bool startDraw(CWin* win, CGraphic** g, CRect rect, bool force);
    void endDraw(CWin* win, CRect rect, bool force); ///< shows what was painted
    /// Paints one control, and all else of its window that waits for a paint, right now: for what
    /// has to be seen before work that keeps the loop from running.
    void drawNow(CWin* win, CCtrl* ctrl);
    /// Makes a frame now, not waiting until one is due: hands on the latest motion of the pointer,
    /// asks those that follow, and paints what has changed in all windows.
    void paintFrame();
    /// From now on `ctrl->onFrame` is asked before each frame, until it is deleted. As long as it
    /// finds changes, frames go on by themselves.
    void follow(CCtrl* ctrl);
    void redrawAll();

    /// Deletes a control or window that may be in use by a handler that is running: a window is
    /// hidden at once, the memory goes when no handler is on the stack.
    void deleteLater(CCtrl* ctrl);

    /// For a window that is dying: deletes first what waits for that in it.
    void purgeIn(const CWin* win);

    /// For windows and controls, which enter and leave by themselves.
    void addWindow(unsigned long handle, CWin* win);
    void removeWindow(unsigned long handle, CWin* win);
    CWin* windowOf(unsigned long handle) const; ///< null for a window of others
    /// The window that gets the keys of another: pages and their area leave them to the one around.
    CWin* keyWindow(CWin* win) const;
    /// The one with the focus, which may lie in a foreign window inside it; null for none of ours.
    CWin* focusedWindow() const;
    /// The innermost window under a point of the screen, null if that is not one of ours.
    CWin* winAtPos(int x, int y) const;
    void forget(const CCtrl* ctrl); ///< it is about to be deleted
    bool nextEvent(_XEvent& event); ///< takes one from the queue; false when none is waiting
    bool holdsNext() const;
    void handleEvent(const _XEvent& event); ///< hands it to its window

    /// Tells whether an address is code of a loaded plug-in; null while none can be. Only such code
    /// is called for the events of its window inside one of ours, as named by the window's property
    /// `_XEventProc`.
    bool (*isPluginCode)(const void* address) = nullptr;

    /// A handler, or a loop of a window, is on the stack: nothing that it may be using is deleted.
    class HandlerScope {
    public:
        explicit HandlerScope(CApp* application) : app(application) { app->handlers++; }
        ~HandlerScope() {
            if (--app->handlers == 0) app->purge();
        }
        HandlerScope(const HandlerScope&) = delete;
        HandlerScope& operator=(const HandlerScope&) = delete;

    private:
        CApp* app;
    };

private:
    void closeAsked(CWin* win);
    void strangersEvent(const _XEvent& event);
    void keyEvent(CWin* win, const _XEvent& event);
    bool keptByMethod(const _XEvent& event);
    bool write(CWin* win, const _XEvent& event, int mods);
    bool offerPlayer(CWin* win, const _XEvent& event);
    void press(CWin* win, const _XEvent& event);
    void wheel(CWin* win, const _XEvent& event);
    bool otherButton(const _XEvent& event) const;
    bool secondPress(const _XEvent& event) const;
    void foreignFocus(const CWin* win);
    void focusEvent(CWin* win, const _XEvent& event);
    void holdMotion(const _XEvent& event);
    void deliverMotion();
    bool frameWanted() const;
    void frameIfDue(bool eventsWait);
    void paintWindows();
    void moveDragWin();
    void detach(CCtrl* ctrl);
    void stepTimers(int ms);
    int dueMs();
    void waitForEvent(int ms);
    void purge();

    std::unordered_map<unsigned long, CWin*> windowTable;
    std::vector<CCtrl*> doomed;                    ///< owned, waiting for the handlers to end
    int handlers = 0;                              ///< on the stack
    std::chrono::steady_clock::time_point stepped; ///< until when the timers are
    FrameClock frames;
    FrameClock::Time wantedSince{}; ///< something waits for a frame; 0 for nothing
    FrameClock::Time followUntil{};
    std::vector<CCtrl*> followers;       ///< not owned
    std::unique_ptr<_XEvent> heldMotion; ///< waits for the frame, in logical pixels
    std::unique_ptr<CDragWin> dragWin;   ///< made on first use
    std::unique_ptr<XdndTarget> outsideDrags;
    std::unique_ptr<InputMethod> writing; ///< null until `open`
};
