#include "gui/Selections.h"

#include "gui/SelectionFetch.h"
#include "gui/SelectionOwner.h"
#include "gui/Utf8.h"
#include "gui/XConnection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {

constexpr int mostCutBytes = 65536; // every server takes a request of that size

CStr asText(const std::string& bytes) {
    return CStr(bytes.data(), bytes.size());
}

/// The text of a selection that has an owner.
SelectionData fetchText(Atom selection) {
    const XConnection& x = xConnection();
    SelectionData data = fetchSelection(selection, x.atoms.utf8String, x.userTime);
    if (data.state == Fetched::refused) data = fetchSelection(selection, XA_STRING, x.userTime);
    if (data.type == XA_STRING) data.bytes = asUtf8(data.bytes);
    return data;
}

bool owned(Atom selection) {
    return selectionOwner().owns(selection) || XGetSelectionOwner(liveDisplay(), selection);
}

CStr textOf(Atom selection) {
    if (selectionOwner().owns(selection)) return asText(selectionOwner().getText(selection));
    return asText(fetchText(selection).bytes);
}

CStr cutBuffer() {
    int bytes = 0;
    char* found = XFetchBytes(liveDisplay(), &bytes);
    if (!found) return CStr();
    CStr text(found, size_t(bytes));
    XFree(found);
    return text;
}

} // namespace

void copyText(const CStr& text) {
    Display* display = liveDisplay();
    if (!display) return;
    const int length = text.length();
    XStoreBytes(display, text.asChar(), length > mostCutBytes ? 0 : length);
    selectionOwner().offer(asUtf8(text.asChar()), {xConnection().atoms.clipboard, XA_PRIMARY});
}

void offerSelected(const CStr& text) {
    selectionOwner().offer(asUtf8(text.asChar()), {XA_PRIMARY});
}

CStr selectedText() {
    return liveDisplay() && owned(XA_PRIMARY) ? textOf(XA_PRIMARY) : CStr();
}

CStr pasteText() {
    Display* display = liveDisplay();
    if (!display) return CStr();
    for (const Atom selection : {xConnection().atoms.clipboard, Atom(XA_PRIMARY)})
        if (owned(selection)) return textOf(selection);
    return cutBuffer();
}
