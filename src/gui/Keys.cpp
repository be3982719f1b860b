#include "gui/Keys.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

/// Key symbols without a character, by their distance from Home.
int keyOfSymbol(KeySym symbol) {
    constexpr KeySym home = 0xFF50, f1 = home + 110;
    constexpr KeySym backTab = 0xFE20; // what Shift makes of the Tab key
    constexpr int cursorKeys[] = {keyHome, keyLeft,   keyUp,       keyRight,
                                  keyDown, keyPageUp, keyPageDown, keyEnd};
    if (symbol >= home && symbol < home + 8) return cursorKeys[symbol - home];
    if (symbol >= f1 && symbol < f1 + 12) return keyF1 - int(symbol - f1);
    return symbol == backTab ? keyTab : 0;
}

int keyOfCharacter(unsigned char c) {
    switch (c) {
    case 8:
        return keyBackspace;
    case 9:
        return keyTab;
    case 13:
        return keyReturn;
    case 27:
        return keyEscape;
    case '*':
        return keyAsterisk;
    case 127:
        return keyDelete;
    default:
        return c;
    }
}

int modifiers(unsigned state) {
    return (state & ShiftMask ? modShift : 0) | (state & ControlMask ? modControl : 0) |
           (state & Mod1Mask ? modAlt : 0);
}

} // namespace

bool translateKey(const XEvent& event, int& key, int& mods) {
    key = mods = 0;
    XKeyEvent plain = event.xkey;
    plain.state &= ~unsigned(ControlMask);
    char text[255];
    KeySym symbol = NoSymbol;
    const int length = XLookupString(&plain, text, sizeof text, &symbol, nullptr);
    key = length == 1 ? keyOfCharacter(static_cast<unsigned char>(text[0])) : keyOfSymbol(symbol);
    if (length != 1 && key == 0) return false;
    mods = modifiers(event.xkey.state);
    return true;
}

int translateButton(int button, unsigned state) {
    constexpr int ofButton[] = {0, modLeft, modMiddle, modRight};
    const int own = button >= 0 && button < 4 ? ofButton[button] : 0;
    return own | (state & Button1Mask ? modLeft : 0) | (state & Button2Mask ? modMiddle : 0) |
           (state & Button3Mask ? modRight : 0) | modifiers(state);
}
