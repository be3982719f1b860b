#include "gui/SelectionFetch.h"

#include "gui/SelectionOwner.h"
#include "gui/XConnection.h"

#include <X11/Xlib.h>
#include <poll.h>

#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds patience{1};
constexpr size_t mostBytes = size_t(32) << 20;

/// One request, through a window of its own: what comes too late finds it gone.
class Fetch {
public:
    Fetch();
    ~Fetch();
    Fetch(const Fetch&) = delete;
    Fetch& operator=(const Fetch&) = delete;
    SelectionData run(Atom selection, Atom target, Time time);

private:
    bool waitFor(XEvent& event, int type);
    bool read(SelectionData& data, Atom& type);
    void readPieces(SelectionData& data);
    static Bool concerns(Display*, XEvent* event, XPointer fetch);

    Display* display = liveDisplay();
    const Atom property = xConnection().atoms.fetched;
    Window window = None;
};

Fetch::Fetch() {
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask;
    window = XCreateWindow(display, xConnection().root, -1, -1, 1, 1, 0, 0, InputOnly,
                           CopyFromParent, CWEventMask, &attributes);
}

Fetch::~Fetch() {
    if (!liveDisplay()) return;
    XDestroyWindow(display, window);
    XSync(display, False);
    XEvent rest;
    while (XCheckWindowEvent(display, window, PropertyChangeMask, &rest) ||
           XCheckTypedWindowEvent(display, window, SelectionNotify, &rest)) {
    }
}

Bool Fetch::concerns(Display*, XEvent* event, XPointer fetch) {
    return event->xany.window == reinterpret_cast<Fetch*>(fetch)->window ||
           selectionOwner().concerns(*event);
}

bool Fetch::waitFor(XEvent& event, int type) {
    const auto deadline = Clock::now() + patience;
    for (;;) {
        while (liveDisplay() &&
               XCheckIfEvent(display, &event, concerns, reinterpret_cast<XPointer>(this))) {
            if (event.xany.window != window)
                selectionOwner().handle(event);
            else if (event.type == type)
                return true;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (!liveDisplay() || left.count() <= 0) return false;
        pollfd server{ConnectionNumber(display), POLLIN, 0};
        poll(&server, 1, int(left.count()));
    }
}

/// Appends the property and deletes it. False when there is none, or more than we take.
bool Fetch::read(SelectionData& data, Atom& type) {
    int format = 0;
    unsigned long count = 0, rest = 0;
    unsigned char* found = nullptr;
    type = None;
    XGetWindowProperty(display, window, property, 0, long((mostBytes - data.bytes.size()) / 4 + 1),
                       True, AnyPropertyType, &type, &format, &count, &rest, &found);
    const bool usable = type != None && rest == 0;
    if (usable && format == 8) data.bytes.append(reinterpret_cast<const char*>(found), count);
    if (found) XFree(found);
    return usable && data.bytes.size() <= mostBytes;
}

/// A large selection comes in pieces: each time we delete one the next is put in its place, until
/// there is an empty one.
void Fetch::readPieces(SelectionData& data) {
    data.state = Fetched::late;
    for (XEvent event; waitFor(event, PropertyNotify);) {
        if (event.xproperty.atom != property || event.xproperty.state != PropertyNewValue) continue;
        const size_t before = data.bytes.size();
        Atom type;
        if (!read(data, type)) {
            if (type == None) continue; // it was the announcement, which is read already
            data.state = Fetched::refused;
            return;
        }
        data.type = type;
        if (data.bytes.size() > before) continue;
        data.state = Fetched::given;
        return;
    }
}

SelectionData Fetch::run(Atom selection, Atom target, Time time) {
    SelectionData data;
    XConvertSelection(display, selection, target, property, window, time);
    XEvent event;
    if (!waitFor(event, SelectionNotify)) {
        data.state = Fetched::late;
    } else if (event.xselection.property == property && read(data, data.type)) {
        data.state = Fetched::given;
        if (data.type == xConnection().atoms.incr) readPieces(data);
    }
    if (data.state != Fetched::given) data.bytes.clear();
    return data;
}

} // namespace

SelectionData fetchSelection(unsigned long selection, unsigned long target, unsigned long time) {
    return liveDisplay() ? Fetch().run(selection, target, time) : SelectionData();
}
