#include "gui/SelectionOwner.h"

#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <iterator>

namespace {

constexpr size_t pieceBytes = 65536; // every server takes a request of that size
constexpr size_t mostTransfers = 16;
constexpr std::chrono::seconds patience{10};

const unsigned char* bytesOf(const void* data) {
    return static_cast<const unsigned char*>(data);
}

} // namespace

SelectionOwner& selectionOwner() {
    static SelectionOwner owner;
    return owner;
}

void SelectionOwner::close() {
    Display* display = liveDisplay();
    if (display && window) XDestroyWindow(display, window);
    *this = SelectionOwner();
}

SelectionOwner::Offer& SelectionOwner::offerOf(unsigned long selection) {
    for (Offer& o : offers)
        if (o.selection == selection) return o;
    return offers.emplace_back(Offer{selection, std::make_shared<std::string>(), 0});
}

const std::string& SelectionOwner::getText(unsigned long selection) const {
    static const std::string nothing;
    for (const Offer& o : offers)
        if (o.selection == selection) return *o.text;
    return nothing;
}

void SelectionOwner::offer(const std::string& utf8,
                           std::initializer_list<unsigned long> selections) {
    Display* display = liveDisplay();
    if (!display) return;
    const XConnection& x = xConnection();
    const Text text = std::make_shared<std::string>(utf8);
    const unsigned long time = x.userTime;
    if (!window)
        window = XCreateWindow(display, x.root, -1, -1, 1, 1, 0, 0, InputOnly, CopyFromParent, 0,
                               nullptr);
    for (const Atom selection : selections) {
        Offer& mine = offerOf(selection);
        mine.text = text;
        mine.time = time;
        XSetSelectionOwner(display, selection, window, time);
        // A request older than what somebody else did is passed over.
        if (!owns(selection)) XSetSelectionOwner(display, selection, window, CurrentTime);
    }
}

bool SelectionOwner::owns(unsigned long selection) const {
    Display* display = liveDisplay();
    return display && window && XGetSelectionOwner(display, selection) == window;
}

bool SelectionOwner::concerns(const XEvent& event) const {
    if (window && event.xany.window == window) return true;
    return std::any_of(transfers.begin(), transfers.end(), [&](const Transfer& t) {
        return (event.type == PropertyNotify && event.xproperty.window == t.requestor &&
                event.xproperty.atom == t.property) ||
               (event.type == DestroyNotify && event.xdestroywindow.window == t.requestor);
    });
}

bool SelectionOwner::handle(const XEvent& event) {
    if (!concerns(event)) return false;
    if (event.type == SelectionRequest) {
        answer(event);
    } else if (event.type == PropertyNotify && event.xproperty.state == PropertyDelete) {
        sendPiece(transferOf(event));
    } else if (event.type == DestroyNotify) {
        transfers.remove_if(
            [&](const Transfer& t) { return t.requestor == event.xdestroywindow.window; });
    }
    return true;
}

void SelectionOwner::answer(const XEvent& event) {
    Display* display = liveDisplay();
    const XSelectionRequestEvent& asked = event.xselectionrequest;
    const Atom property = asked.property ? asked.property : asked.target; // as in old programs
    bool given = owns(asked.selection);
    const Offer mine = offerOf(asked.selection);
    if (given && asked.target == xConnection().atoms.multiple)
        given = answerMany(mine, asked.requestor, property);
    else if (given)
        given = convert(mine, asked.requestor, asked.target, property);
    XEvent reply{};
    reply.xselection.type = SelectionNotify;
    reply.xselection.requestor = asked.requestor;
    reply.xselection.selection = asked.selection;
    reply.xselection.target = asked.target;
    reply.xselection.property = given ? property : None;
    reply.xselection.time = asked.time;
    XSendEvent(display, asked.requestor, False, NoEventMask, &reply);
    XFlush(display);
}

/// Several forms at once: the property names pairs of target and property, and a refused one
/// becomes None.
bool SelectionOwner::answerMany(const Offer& offer, unsigned long requestor,
                                unsigned long property) {
    constexpr long mostItems = 64;
    Display* display = liveDisplay();
    Atom type;
    int format = 0;
    unsigned long count = 0, rest;
    unsigned char* found = nullptr;
    XGetWindowProperty(display, requestor, property, 0, mostItems, False, AnyPropertyType, &type,
                       &format, &count, &rest, &found);
    const bool usable = found && format == 32;
    if (usable) {
        auto* items = reinterpret_cast<Atom*>(found);
        for (unsigned long i = 0; i + 1 < count; i += 2)
            if (!items[i + 1] || !convert(offer, requestor, items[i], items[i + 1]))
                items[i + 1] = None;
        XChangeProperty(display, requestor, property, xConnection().atoms.atomPair, 32,
                        PropModeReplace, found, int(count));
    }
    if (found) XFree(found);
    return usable;
}

bool SelectionOwner::convert(const Offer& offer, unsigned long requestor, unsigned long target,
                             unsigned long property) {
    const XConnection::Atoms& atoms = xConnection().atoms;
    const auto putItems = [&](Atom type, const unsigned long* items, int count) {
        XChangeProperty(liveDisplay(), requestor, property, type, 32, PropModeReplace,
                        bytesOf(items), count);
        return true;
    };
    const Atom forms[] = {atoms.utf8String, atoms.utf8Plain, atoms.text,     XA_STRING,
                          atoms.targets,    atoms.multiple,  atoms.timestamp};
    if (target == atoms.targets) return putItems(XA_ATOM, forms, int(std::size(forms)));
    if (target == atoms.timestamp) return putItems(XA_INTEGER, &offer.time, 1);
    if (target == XA_STRING) {
        put(requestor, property, target, std::make_shared<std::string>(asLatin1(*offer.text)));
    } else if (target == atoms.utf8String || target == atoms.utf8Plain || target == atoms.text) {
        put(requestor, property, target == atoms.text ? atoms.utf8String : target, offer.text);
    } else {
        return false;
    }
    return true;
}

void SelectionOwner::put(unsigned long requestor, unsigned long property, unsigned long type,
                         Text bytes) {
    if (bytes->size() > pieceBytes) {
        begin({requestor, property, type, std::move(bytes), 0, 0, Clock::now()});
        return;
    }
    XChangeProperty(liveDisplay(), requestor, property, type, 8, PropModeReplace,
                    bytesOf(bytes->data()), int(bytes->size()));
}

void SelectionOwner::begin(Transfer transfer) {
    Display* display = liveDisplay();
    dropIdle();
    XWindowAttributes attributes{};
    XGetWindowAttributes(display, transfer.requestor, &attributes);
    transfer.formerMask = attributes.your_event_mask;
    XSelectInput(display, transfer.requestor,
                 transfer.formerMask | PropertyChangeMask | StructureNotifyMask);
    const unsigned long size = transfer.bytes->size();
    XChangeProperty(display, transfer.requestor, transfer.property, xConnection().atoms.incr, 32,
                    PropModeReplace, bytesOf(&size), 1);
    transfers.push_back(std::move(transfer));
}

std::list<SelectionOwner::Transfer>::iterator SelectionOwner::transferOf(const XEvent& event) {
    return std::find_if(transfers.begin(), transfers.end(), [&](const Transfer& t) {
        return t.requestor == event.xproperty.window && t.property == event.xproperty.atom;
    });
}

/// The last piece is empty.
void SelectionOwner::sendPiece(std::list<Transfer>::iterator transfer) {
    if (transfer == transfers.end()) return;
    Transfer& t = *transfer;
    const size_t size = std::min(pieceBytes, t.bytes->size() - t.done);
    XChangeProperty(liveDisplay(), t.requestor, t.property, t.type, 8, PropModeReplace,
                    bytesOf(t.bytes->data() + t.done), int(size));
    XFlush(liveDisplay());
    t.done += size;
    t.touched = Clock::now();
    if (size == 0) end(transfer);
}

std::list<SelectionOwner::Transfer>::iterator
SelectionOwner::end(std::list<Transfer>::iterator transfer) {
    XSelectInput(liveDisplay(), transfer->requestor, transfer->formerMask);
    return transfers.erase(transfer);
}

/// Gives up transfers that nobody goes on with, and the oldest when there are too many.
void SelectionOwner::dropIdle() {
    const auto now = Clock::now();
    for (auto at = transfers.begin(); at != transfers.end();)
        at = now - at->touched > patience || transfers.size() >= mostTransfers ? end(at)
                                                                               : std::next(at);
}
