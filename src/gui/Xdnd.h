#pragma once

#include "base/Geometry.h"

class CApp;
class CWin;
union _XEvent;

/// Files that other programs drag over our windows, by the XDND protocol of versions 3 to 5. They
/// go the way of drags of our own: the list `CApp::dragList` has an item of type `dropFile` for
/// each, `onDragOver` and `onDrop` are called, `onEndDrag` at the end; `CApp::dragCtrl` is null.
/// What no control takes, or what is for a window outside a modal one, is refused. Interface
/// thread.
class XdndTarget {
public:
    explicit XdndTarget(CApp* application) : app(application) {}
    XdndTarget(const XdndTarget&) = delete;
    XdndTarget& operator=(const XdndTarget&) = delete;

    static void announce(unsigned long window); ///< that it takes drops
    /// Takes messages to one of our windows, and the end of a program that drags. False for any
    /// other event.
    bool handle(CWin* win, const _XEvent& event);

private:
    void enter(const _XEvent& event);
    bool offersFiles(const _XEvent& event) const;
    void position(CWin* win, const _XEvent& event);
    void fetchFiles(unsigned long time);
    bool hasFiles() const;
    void leave();
    void drop(CWin* win);
    void reply(CWin* win, unsigned long message, bool taken) const;

    CApp* app;
    unsigned long source = 0; ///< window of the program that drags, 0 without a drag
    bool fetched = false;     ///< its files are in `CApp::dragList`, if it had any
    bool taken = false;       ///< a control is there to take them
    CPoint pointer;           ///< on the screen, as last told
};
