#include "Hands.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <thread>

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

namespace {

constexpr int pauseMs = 8;

struct Stroke {
    unsigned long symbol, modifier; ///< 0 for none
};

/// What does something in the program or in a text field, and the same with Control and Shift.
constexpr Stroke strokes[] = {
    {XK_space, 0},        {XK_Return, 0},
    {XK_Escape, 0},       {XK_Tab, 0},
    {XK_Tab, XK_Shift_L}, {XK_Up, 0},
    {XK_Down, 0},         {XK_Left, 0},
    {XK_Right, 0},        {XK_Right, XK_Shift_L},
    {XK_Home, 0},         {XK_End, 0},
    {XK_Prior, 0},        {XK_Next, 0},
    {XK_Delete, 0},       {XK_BackSpace, 0},
    {XK_F1, 0},           {XK_F2, 0},
    {XK_F3, 0},           {XK_F5, 0},
    {XK_F6, 0},           {XK_F7, 0},
    {XK_F9, 0},           {XK_F10, 0},
    {XK_F11, 0},          {XK_a, XK_Control_L},
    {XK_b, XK_Control_L}, {XK_c, XK_Control_L},
    {XK_d, XK_Control_L}, {XK_e, XK_Control_L},
    {XK_f, XK_Control_L}, {XK_g, XK_Control_L},
    {XK_h, XK_Control_L}, {XK_i, XK_Control_L},
    {XK_i, XK_Shift_L},   {XK_k, XK_Control_L},
    {XK_l, XK_Control_L}, {XK_n, XK_Control_L},
    {XK_o, XK_Control_L}, {XK_p, XK_Control_L},
    {XK_q, XK_Control_L}, {XK_r, XK_Control_L},
    {XK_r, XK_Shift_L},   {XK_s, XK_Control_L},
    {XK_t, XK_Control_L}, {XK_u, XK_Control_L},
    {XK_v, XK_Control_L}, {XK_x, XK_Control_L},
    {XK_x, XK_Shift_L},   {XK_y, XK_Control_L},
    {XK_y, XK_Control_L}, {XK_z, XK_Control_L},
    {XK_z, XK_Control_L}, {XK_Tab, XK_Control_L},
};
constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz0123456789+-<./,";

} // namespace

Hands::~Hands() {
    if (display) XCloseDisplay(display);
}

bool Hands::open() {
    display = XOpenDisplay(nullptr);
    return display != nullptr;
}

void Hands::act() {
    const int choice = upTo(100);
    if (choice < 40)
        key();
    else if (choice < 45)
        word();
    else if (choice < 80)
        click();
    else
        drag();
    std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
}

void Hands::pointAnywhere() {
    const int screen = DefaultScreen(display);
    XTestFakeMotionEvent(display, screen, upTo(DisplayWidth(display, screen)),
                         upTo(DisplayHeight(display, screen)), CurrentTime);
    XFlush(display);
}

void Hands::hold(unsigned long symbol, bool down) {
    if (const KeyCode code = XKeysymToKeycode(display, symbol))
        XTestFakeKeyEvent(display, code, down, CurrentTime);
}

void Hands::press(unsigned long symbol) {
    hold(symbol, true);
    hold(symbol, false);
    XFlush(display);
}

void Hands::key() {
    const bool letter = upTo(3) == 0;
    const Stroke stroke =
        letter ? Stroke{static_cast<unsigned char>(letters[upTo(int(sizeof letters - 1))]), 0}
               : strokes[upTo(int(std::size(strokes)))];
    if (stroke.modifier) hold(stroke.modifier, true);
    press(stroke.symbol);
    if (stroke.modifier) hold(stroke.modifier, false);
    XFlush(display);
}

void Hands::word() {
    for (int left = 1 + upTo(6); left > 0; --left)
        press(static_cast<unsigned char>(letters[upTo(int(sizeof letters - 1))]));
}

void Hands::click() {
    constexpr unsigned buttons[] = {1, 1, 1, 1, 1, 2, 3, 3, 4, 5};
    const unsigned button = buttons[upTo(int(std::size(buttons)))];
    pointAnywhere();
    for (int times = upTo(5) == 0 ? 2 : 1; times > 0; --times) {
        XTestFakeButtonEvent(display, button, True, CurrentTime);
        XTestFakeButtonEvent(display, button, False, CurrentTime);
    }
    XFlush(display);
}

void Hands::drag() {
    const unsigned button = upTo(4) == 0 ? 3 : 1;
    pointAnywhere();
    XTestFakeButtonEvent(display, button, True, CurrentTime);
    for (int steps = 2 + upTo(6); steps > 0; --steps) {
        pointAnywhere();
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    }
    XTestFakeButtonEvent(display, button, False, CurrentTime);
    XFlush(display);
}
