#include "plugins/MadeEditor.h"

#include <X11/Xlib.h>

MadeEditor::MadeEditor(unsigned long parent) : display(XOpenDisplay(nullptr)) {
    if (!display) return;
    window = XCreateSimpleWindow(display, parent, 0, 0, 300, 200, 0, 0, 0x336699);
    XSelectInput(display, window, KeyPressMask | ButtonPressMask);
    XMapWindow(display, window);
    XSync(display, False);
}

MadeEditor::~MadeEditor() {
    if (display) XCloseDisplay(display);
}

void MadeEditor::setSize(int width, int height) {
    if (display) XResizeWindow(display, window, unsigned(width), unsigned(height));
}

void MadeEditor::idle() {
    while (display && XPending(display)) {
        XEvent event;
        XNextEvent(display, &event);
        keys += event.type == KeyPress;
        clicks += event.type == ButtonPress;
        if (event.type == ButtonPress) XSetInputFocus(display, window, RevertToParent, CurrentTime);
    }
}
