#include "gui/ForeignWindows.h"

#include "gui/CApp.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>

namespace {

bool insideOurs(const CApp* app, Window window) {
    Display* display = liveDisplay();
    while (display && window != None && window != xConnection().root) {
        Window rootFound, around = None, *inner = nullptr;
        unsigned count;
        if (!XQueryTree(display, window, &rootFound, &around, &inner, &count)) return false;
        if (inner) XFree(inner);
        if (app->windowOf(around)) return true;
        window = around;
    }
    return false;
}

} // namespace

uint64_t getProperty(unsigned long window, unsigned long atom) {
    const int former = xerror; // the window may have gone, which is no fault
    Atom type;
    int format = 0;
    unsigned long count = 0, rest;
    unsigned char* found = nullptr;
    XGetWindowProperty(liveDisplay(), window, atom, 0, 2, False, AnyPropertyType, &type, &format,
                       &count, &rest, &found);
    const auto* items = reinterpret_cast<const unsigned long*>(found);
    constexpr unsigned long half = 0xffffffff;
    uint64_t address = 0;
    if (items && format == 32 && count > 0) address = items[0] & half;
    if (items && format == 32 && count > 1) address |= uint64_t(items[1] & half) << 32;
    if (found) XFree(found);
    xerror = former;
    return address;
}

void callPlugin(const CApp* app, const XEvent& event) {
    if (!app->isPluginCode || !liveDisplay()) return;
    const auto* code = reinterpret_cast<const void*>(
        getProperty(event.xany.window, xConnection().atoms.eventProc));
    if (!code || !app->isPluginCode(code) || !insideOurs(app, event.xany.window)) return;
    XEvent copy = event;
    reinterpret_cast<void (*)(XEvent*)>(const_cast<void*>(code))(&copy);
}
