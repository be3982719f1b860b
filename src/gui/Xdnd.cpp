#include "gui/Xdnd.h"

#include "base/Paths.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Scale.h"
#include "gui/SelectionFetch.h"
#include "gui/Selections.h"
#include "gui/UriList.h"
#include "gui/XConnection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>

namespace {

constexpr long oldest = 3, newest = 5; // versions
constexpr long mostTypes = 256;
constexpr int typesInMessage = 3;

/// The modifiers that are held, as of a drag with the left button.
int heldButtons() {
    Window rootFound, child;
    int x, y, winX, winY;
    unsigned state = 0;
    XQueryPointer(liveDisplay(), xConnection().root, &rootFound, &child, &x, &y, &winX, &winY,
                  &state);
    return translateButton(Button1, state);
}

} // namespace

void XdndTarget::announce(unsigned long window) {
    XChangeProperty(liveDisplay(), window, xConnection().atoms.dndAware, XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&newest), 1);
}

bool XdndTarget::handle(CWin* win, const XEvent& event) {
    const XConnection::Atoms& atoms = xConnection().atoms;
    if (event.type == DestroyNotify && source && event.xdestroywindow.window == source) {
        leave();
        return true;
    }
    if (event.type != ClientMessage || event.xclient.format != 32 || !win) return false;
    const Atom message = event.xclient.message_type;
    const bool current = source && static_cast<Window>(event.xclient.data.l[0]) == source;
    if (message == atoms.dndEnter)
        enter(event);
    else if (message == atoms.dndPosition && current)
        position(win, event);
    else if (message == atoms.dndLeave && current)
        leave();
    else if (message == atoms.dndDrop && current)
        drop(win);
    else
        return message == atoms.dndPosition || message == atoms.dndLeave ||
               message == atoms.dndDrop;
    return true;
}

void XdndTarget::enter(const XEvent& event) {
    if (source) leave();
    const long version = event.xclient.data.l[1] >> 24;
    // Nobody else drags while we do.
    const auto dragger = static_cast<Window>(event.xclient.data.l[0]);
    if (app->dragList || !dragger || app->windowOf(dragger) || version < oldest ||
        !offersFiles(event))
        return;
    source = dragger;
    fetched = taken = false;
    XSelectInput(liveDisplay(), source, StructureNotifyMask); // it may end without a word
}

/// More than three forms stand in a property of the source.
bool XdndTarget::offersFiles(const XEvent& event) const {
    const XConnection::Atoms& atoms = xConnection().atoms;
    const long* data = event.xclient.data.l;
    if (!(data[1] & 1))
        return std::count(data + 2, data + 2 + typesInMessage, long(atoms.uriList)) > 0;
    Atom type;
    int format = 0;
    unsigned long count = 0, rest;
    unsigned char* found = nullptr;
    XGetWindowProperty(liveDisplay(), static_cast<Window>(data[0]), atoms.dndTypeList, 0, mostTypes,
                       False, XA_ATOM, &type, &format, &count, &rest, &found);
    const auto* types = reinterpret_cast<const Atom*>(found);
    const bool offered =
        types && format == 32 && std::count(types, types + count, atoms.uriList) > 0;
    if (found) XFree(found);
    return offered;
}

void XdndTarget::position(CWin* win, const XEvent& event) {
    const auto place = static_cast<unsigned long>(event.xclient.data.l[2]);
    pointer = toLogical(asPoint(int(place >> 16 & 0xffff), int(place & 0xffff)));
    if (!fetched) fetchFiles(static_cast<Time>(event.xclient.data.l[3]));
    const bool allowed = !app->modalWin || app->modalWin->takesPress(win->handle);
    CWin* under = allowed && hasFiles() ? win->innermostAt(pointer) : nullptr;
    taken = app->dragOver(under, pointer, heldButtons());
    reply(win, xConnection().atoms.dndStatus, taken);
}

void XdndTarget::fetchFiles(unsigned long time) {
    const XConnection::Atoms& atoms = xConnection().atoms;
    fetched = true;
    const SelectionData data = fetchSelection(atoms.dndSelection, atoms.uriList, time);
    const std::vector<CStr> paths = pathsOfUriList(data.bytes);
    if (paths.empty()) return;
    app->startDrag(nullptr);
    for (const CStr& path : paths) {
        auto* item = new CDropItem(extractFileName(path), dropFile);
        item->path = path;
        app->dragList->add(item);
    }
}

bool XdndTarget::hasFiles() const {
    return app->dragList && !app->dragCtrl;
}

void XdndTarget::leave() {
    XSelectInput(liveDisplay(), source, NoEventMask);
    source = 0;
    app->dragOver(nullptr, pointer, 0);
    if (hasFiles()) app->endDrag();
}

void XdndTarget::drop(CWin* win) {
    const bool mine = taken && hasFiles();
    // The source learns it first, as a receiver may ask the user something.
    reply(win, xConnection().atoms.dndFinished, mine);
    if (!mine) {
        leave();
        return;
    }
    XSelectInput(liveDisplay(), source, NoEventMask);
    source = 0;
    app->dropOn(win->innermostAt(pointer), pointer, heldButtons());
}

void XdndTarget::reply(CWin* win, unsigned long message, bool accepted) const {
    constexpr long acceptBit = 1, wholeWindowBit = 2;
    const XConnection::Atoms& atoms = xConnection().atoms;
    const long action = accepted ? long(atoms.dndActionCopy) : 0;
    const bool status = message == atoms.dndStatus;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = source;
    event.xclient.message_type = message;
    event.xclient.format = 32;
    event.xclient.data.l[0] = long(win->handle);
    event.xclient.data.l[1] = (accepted ? acceptBit : 0) | (status ? wholeWindowBit : 0);
    event.xclient.data.l[status ? 4 : 2] = action;
    XSendEvent(liveDisplay(), source, False, NoEventMask, &event);
    XFlush(liveDisplay());
}
