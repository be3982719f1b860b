#include "gui/Selections.h"

#include "gui/XConnection.h"

#include <X11/Xlib.h>

void copyText(const CStr& text) {
    if (Display* display = liveDisplay()) XStoreBytes(display, text.asChar(), text.length());
}

CStr pasteText() {
    Display* display = liveDisplay();
    if (!display) return CStr();
    int bytes = 0;
    char* found = XFetchBytes(display, &bytes);
    if (!found) return CStr();
    CStr text(found, size_t(bytes));
    XFree(found);
    return text;
}
