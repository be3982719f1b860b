#include "gui/TouchInput.h"

#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <array>

namespace {

using EventBits = std::array<unsigned char, XIMaskLen(XI_LASTEVENT)>;

void selectEvents(Display* display, Window window, int device, EventBits& bits) {
    XIEventMask mask{device, int(bits.size()), bits.data()};
    XISelectEvents(display, window, &mask, 1);
}

} // namespace

void TouchInput::open() {
    Display* display = liveDisplay();
    int firstEvent, firstError, major = 2, minor = 4;
    if (!display || !XQueryExtension(display, "XInputExtension", &opcode, &firstEvent, &firstError))
        return;
    if (XIQueryVersion(display, &major, &minor) != Success || major < 2) {
        opcode = 0;
        return;
    }
    pinches = major > 2 || minor >= 4;
    findDevices();
    EventBits bits{};
    XISetMask(bits.data(), XI_HierarchyChanged);
    selectEvents(display, xConnection().root, XIAllDevices, bits);
}

void TouchInput::findDevices() {
    translator.clear();
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(liveDisplay(), XIAllDevices, &count);
    for (int i = 0; devices && i < count; i++) translator.setDevice(&devices[i]);
    if (devices) XIFreeDeviceInfo(devices);
}

void TouchInput::watch(unsigned long window) {
    if (!opcode || !pinches || !liveDisplay()) return;
    EventBits bits{};
    for (int type : {XI_GesturePinchBegin, XI_GesturePinchUpdate, XI_GesturePinchEnd})
        XISetMask(bits.data(), type);
    selectEvents(liveDisplay(), window, XIAllMasterDevices, bits);
}

/// Raw motions come for all that the pointer does on the screen, so they are asked for only while
/// it is over us. Selected on our windows the plain ones would take the place of the core's.
void TouchInput::pointerInside(bool ours) {
    if (!opcode || ours == listening || !liveDisplay()) return;
    listening = ours;
    EventBits bits{};
    if (ours) XISetMask(bits.data(), XI_RawMotion);
    selectEvents(liveDisplay(), xConnection().root, XIAllMasterDevices, bits);
}

bool TouchInput::handle(const XEvent& event) {
    if (event.type != GenericEvent || !opcode || event.xcookie.extension != opcode) return false;
    XGenericEventCookie cookie = event.xcookie;
    if (!XGetEventData(liveDisplay(), &cookie)) return true;
    std::optional<TouchStep> step;
    if (cookie.evtype == XI_HierarchyChanged)
        findDevices();
    else if (cookie.evtype == XI_RawMotion)
        step = translator.scroll(cookie.data);
    else
        step = translator.pinch(cookie.data);
    XFreeEventData(liveDisplay(), &cookie);
    if (step) deliver(*step);
    return true;
}

void TouchInput::deliver(const TouchStep& step) {
    Window root, child;
    int x, y, inX, inY;
    unsigned state = 0;
    if (!XQueryPointer(liveDisplay(), xConnection().root, &root, &child, &x, &y, &inX, &inY,
                       &state))
        return;
    const CPoint at = toLogical(asPoint(x, y));
    CWin* win = app->winAtPos(at.x, at.y);
    if (!win || (app->modalWin && !app->modalWin->takesPress(win->handle))) return;
    const CPoint corner = win->getPos(true);
    win->touch(at.x - corner.x, at.y - corner.y, translateButton(0, state), step);
}
