#pragma once

#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

/// The pointer and the keys, by events that are sent to a window: as fast as the program takes
/// them, for tests of many gestures. Points lie in the window, at a scale of 100 %.
class SentEvents {
public:
    explicit SentEvents(CApp* application) : app(application) {}

    unsigned held = 0; ///< ShiftMask and so on, of the events that follow

    void press(CWin* win, CPoint at, unsigned button, bool again = false) {
        constexpr unsigned long apart = 2000, near = 50; // ms, to the press before
        time += again ? near : apart;
        send(win, ButtonPress, at, button);
        buttons |= Button1Mask << (button - 1);
        deliver();
    }
    void move(CWin* win, CPoint at) {
        send(win, MotionNotify, at, 0);
        deliver();
    }
    void release(CWin* win, CPoint at, unsigned button) {
        send(win, ButtonRelease, at, button);
        buttons &= ~(Button1Mask << (button - 1));
        deliver();
    }
    void wheel(CWin* win, CPoint at, unsigned button) {
        press(win, at, button);
        release(win, at, button);
    }
    void key(CWin* win, KeySym symbol) {
        for (const int type : {KeyPress, KeyRelease}) {
            XEvent event{};
            event.xkey.window = win->handle;
            event.xkey.keycode = XKeysymToKeycode(liveDisplay(), symbol);
            event.xkey.state = held | buttons;
            event.xkey.time = ++time;
            event.type = type;
            XSendEvent(liveDisplay(), win->handle, False, NoEventMask, &event);
        }
        deliver();
    }

private:
    void send(CWin* win, int type, CPoint at, unsigned button) {
        const CPoint corner = win->getPos(true);
        XEvent event{};
        event.type = type;
        event.xbutton.window = win->handle; // a motion has the same fields up to its state
        event.xbutton.root = xConnection().root;
        event.xbutton.time = ++time;
        event.xbutton.x = at.x;
        event.xbutton.y = at.y;
        event.xbutton.x_root = corner.x + at.x;
        event.xbutton.y_root = corner.y + at.y;
        event.xbutton.state = held | buttons;
        if (button) event.xbutton.button = button;
        event.xbutton.same_screen = True;
        XSendEvent(liveDisplay(), win->handle, False, NoEventMask, &event);
    }
    void deliver() {
        XSync(liveDisplay(), False);
        app->dispatchEvents();
    }

    CApp* app;
    unsigned buttons = 0; ///< that are down
    unsigned long time = 1;
};
