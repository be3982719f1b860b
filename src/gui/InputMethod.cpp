#include "gui/InputMethod.h"

#include "gui/XConnection.h"

#include <X11/Xlib.h>

#include <clocale>
#include <cstring>
#include <langinfo.h>
#include <utility>

namespace {

/// The library makes characters of keys by the locale, which the program does not need otherwise.
void takeLocale() {
    std::setlocale(LC_CTYPE, "");
    const auto fits = [] {
        return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 && XSupportsLocale();
    };
    if (!fits()) std::setlocale(LC_CTYPE, "C.UTF-8");
}

} // namespace

void InputMethod::open() {
    Display* display = liveDisplay();
    if (tried || !display) return;
    tried = true;
    takeLocale();
    for (const char* modifiers : {"", "@im=none"}) { // the user's, else the library's own
        if (!XSetLocaleModifiers(modifiers)) continue;
        method = XOpenIM(display, nullptr, nullptr, nullptr);
        if (method) break;
    }
    if (!method) return;
    XIMCallback destroyed{reinterpret_cast<XPointer>(this), &InputMethod::gone};
    XSetIMValues(method, XNDestroyCallback, &destroyed, nullptr);
}

/// The program that was the method has ended; the next text asks for another.
void InputMethod::gone(XIM, char* self, char*) {
    auto* lost = reinterpret_cast<InputMethod*>(self);
    lost->method = nullptr;
    lost->context = nullptr;
    lost->window = 0;
    lost->tried = false;
}

void InputMethod::close() {
    writeIn(0);
    if (method && liveDisplay()) XCloseIM(method);
    method = nullptr;
    tried = false;
}

void InputMethod::writeIn(unsigned long wanted) {
    if (wanted == window) return;
    window = wanted;
    if (context && liveDisplay()) XDestroyIC(context);
    context = nullptr;
    if (!window) return;
    open();
    if (!method) return;
    context = XCreateIC(method, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow,
                        window, XNFocusWindow, window, nullptr);
    if (context) XSetICFocus(context);
}

bool InputMethod::keeps(const XEvent& event) {
    XEvent copy = event;
    return method && XFilterEvent(&copy, None);
}

std::string InputMethod::textOf(const XEvent& event) {
    if (!context || event.type != KeyPress) return {};
    XKeyEvent key = event.xkey;
    std::string text(32, '\0');
    KeySym symbol;
    Status status = XLookupNone;
    int length = Xutf8LookupString(context, &key, text.data(), int(text.size()), &symbol, &status);
    if (status == XBufferOverflow) {
        text.resize(size_t(length));
        length = Xutf8LookupString(context, &key, text.data(), length, &symbol, &status);
    }
    if (status != XLookupChars && status != XLookupBoth) return {};
    text.resize(size_t(length));
    return text;
}
