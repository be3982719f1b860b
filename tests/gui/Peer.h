#pragma once

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

/// Another program's connection, on a thread of its own. `serve` answers requests for its
/// selections as `answer` says.
class Peer {
public:
    std::function<void(Peer&, const XSelectionRequestEvent&)> answer;
    Display* display = XOpenDisplay(nullptr);
    Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0);

    ~Peer() { XCloseDisplay(display); }
    Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    Atom atom(const char* name) const { return XInternAtom(display, name, False); }
    void own(const char* selection) {
        XSetSelectionOwner(display, atom(selection), window, CurrentTime);
        XSync(display, False);
    }
    void put(const XSelectionRequestEvent& asked, const std::string& bytes) {
        XChangeProperty(display, asked.requestor, asked.property, asked.target, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(bytes.data()), int(bytes.size()));
        notify(asked, asked.property);
    }
    void notify(const XSelectionRequestEvent& asked, Atom property) {
        XEvent reply{};
        reply.xselection = {
            SelectionNotify, 0,        True,      display, asked.requestor, asked.selection,
            asked.target,    property, asked.time};
        XSendEvent(display, asked.requestor, False, NoEventMask, &reply);
        XSync(display, False);
    }
    void send(Window to, const char* message, const std::vector<long>& data) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = to;
        event.xclient.message_type = atom(message);
        event.xclient.format = 32;
        std::copy(data.begin(), data.end(), event.xclient.data.l);
        XSendEvent(display, to, False, NoEventMask, &event);
        XSync(display, False);
    }
    /// Serves until a message of that name comes (then its data) or three seconds have gone.
    bool await(const char* message, std::vector<long>& data) {
        const Atom wanted = message ? atom(message) : None;
        for (int waited = 0; waited < 300 && !ended; waited++) {
            while (XPending(display)) {
                XEvent event;
                XNextEvent(display, &event);
                if (event.type == SelectionRequest && answer)
                    answer(*this, event.xselectionrequest);
                if (event.type != ClientMessage || event.xclient.message_type != wanted) continue;
                data.assign(event.xclient.data.l, event.xclient.data.l + 5);
                return true;
            }
            usleep(10000);
        }
        return false;
    }
    std::atomic<bool> ended{false};
};
