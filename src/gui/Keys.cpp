#include "gui/Keys.h"

#include <X11/XF86keysym.h>
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <cwctype>
#include <iterator>

namespace {

struct SymbolKey {
    KeySym symbol;
    int key;
};
// The keypad without Num Lock has symbols of its own, and Shift makes another key of Tab.
constexpr SymbolKey symbolKeys[] = {
    {XK_Home, keyHome},
    {XK_Left, keyLeft},
    {XK_Up, keyUp},
    {XK_Right, keyRight},
    {XK_Down, keyDown},
    {XK_Prior, keyPageUp},
    {XK_Next, keyPageDown},
    {XK_End, keyEnd},
    {XK_KP_Home, keyHome},
    {XK_KP_Left, keyLeft},
    {XK_KP_Up, keyUp},
    {XK_KP_Right, keyRight},
    {XK_KP_Down, keyDown},
    {XK_KP_Prior, keyPageUp},
    {XK_KP_Next, keyPageDown},
    {XK_KP_End, keyEnd},
    {XK_KP_Delete, keyDelete},
    {XK_ISO_Left_Tab, keyTab},
    {XK_Menu, keyMenu},
    {XF86XK_AudioPlay, keyMediaPlay},
    {XF86XK_AudioPause, keyMediaPlay},
    {XF86XK_AudioStop, keyMediaStop},
    {XF86XK_AudioPrev, keyMediaPrior},
    {XF86XK_AudioRewind, keyMediaPrior},
    {XF86XK_AudioNext, keyMediaNext},
    {XF86XK_AudioForward, keyMediaNext},
    {XF86XK_AudioRecord, keyMediaRecord},
};

/// Of symbols without a character; 0 for those that mean nothing here.
int keyOfSymbol(KeySym symbol) {
    if (symbol >= XK_F1 && symbol <= XK_F12) return keyF1 - int(symbol - XK_F1);
    const auto* found = std::find_if(std::begin(symbolKeys), std::end(symbolKeys),
                                     [&](const SymbolKey& k) { return k.symbol == symbol; });
    return found == std::end(symbolKeys) ? 0 : found->key;
}

/// Of the main block of a keyboard, by the code that its keys have everywhere; 0 for others.
int latinAt(unsigned code, bool shifted) {
    struct Row {
        unsigned first;
        const char *plain, *shifted;
    };
    constexpr Row rows[] = {{10, "1234567890-=", "!@#$%^&*()_+"},
                            {24, "qwertyuiop[]", "QWERTYUIOP{}"},
                            {38, "asdfghjkl;'`", "ASDFGHJKL:\"~"},
                            {51, "\\zxcvbnm,./", "|ZXCVBNM<>?"}};
    for (const Row& row : rows)
        if (code >= row.first && code - row.first < std::strlen(row.plain))
            return (shifted ? row.shifted : row.plain)[code - row.first];
    return 0;
}

/// What stands at the place of a key in another layout that the user has, else where it usually is;
/// 0 for none. The plain symbol of the key decides whether its layout has Latin letters.
int latinPlace(XKeyEvent key) {
    constexpr int layouts = 4;
    constexpr KeySym lastLatin = 0xff;
    const bool shifted = key.state & ShiftMask;
    const int layout = int(XkbGroupForCoreState(key.state));
    const auto symbolIn = [&](int group, int level) {
        return XkbKeycodeToKeysym(key.display, KeyCode(key.keycode), unsigned(group),
                                  unsigned(level));
    };
    if (symbolIn(layout, 0) <= lastLatin) return 0;
    for (int group = 0; group < layouts; group++) {
        const KeySym symbol = symbolIn(group, shifted);
        if (symbol > ' ' && symbol < 0x7f) return int(symbol);
    }
    return latinAt(key.keycode, shifted);
}

unsigned secondAltMask = 0; ///< of the state of an event

int modifiers(unsigned state) {
    return (state & ShiftMask ? modShift : 0) | (state & ControlMask ? modControl : 0) |
           (state & Mod1Mask ? modAlt : 0);
}

bool isSecondAlt(KeySym symbol) {
    if (secondAltMask == Mod4Mask) return symbol == XK_Super_L || symbol == XK_Super_R;
    return secondAltMask == Mod5Mask && symbol == XK_ISO_Level3_Shift;
}

} // namespace

void setSecondAlt(SecondAlt key) {
    secondAltMask = key == SecondAlt::super ? Mod4Mask : key == SecondAlt::altGr ? Mod5Mask : 0;
}

int upperKey(int key) {
    if (key < 0) return key;
    return key <= 255 ? std::toupper(key) : int(std::towupper(std::wint_t(key)));
}

int keyOfCharacter(uint32_t c) {
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
        return int(c);
    }
}

bool translateKey(const XEvent& event, int& key, int& mods) {
    key = mods = 0;
    XKeyEvent plain = event.xkey;
    plain.state &= ~unsigned(ControlMask);
    constexpr KeySym firstHigh = 0xa0;
    char text[255];
    KeySym symbol = NoSymbol;
    const int length = XLookupString(&plain, text, sizeof text, &symbol, nullptr);
    // Beyond ASCII the text depends on the locale, the symbol is the character of Latin-1.
    const bool ascii = length == 1 && static_cast<unsigned char>(text[0]) < 0x80;
    key = ascii                                   ? keyOfCharacter(uint32_t(text[0]))
          : symbol >= firstHigh && symbol <= 0xff ? int(symbol)
                                                  : keyOfSymbol(symbol);
    if (!ascii && key == 0 && !IsModifierKey(symbol))
        key = keyOfCharacter(uint32_t(latinPlace(plain)));
    if (!ascii && key == 0) return false;
    mods = modifiers(event.xkey.state);
    return true;
}

int modifiersAfter(const XEvent& event) {
    XKeyEvent key = event.xkey;
    const KeySym symbol = XLookupKeysym(&key, 0);
    const int own = symbol == XK_Shift_L || symbol == XK_Shift_R       ? modShift
                    : symbol == XK_Control_L || symbol == XK_Control_R ? modControl
                    : symbol == XK_Alt_L || symbol == XK_Alt_R         ? modAlt
                    : isSecondAlt(symbol)                              ? modAlt
                                                                       : 0;
    const int before = modifiers(key.state) | (key.state & secondAltMask ? modAlt : 0);
    return event.type == KeyPress ? before | own : before & ~own;
}

int translateButton(int button, unsigned state) {
    constexpr int ofButton[] = {0, modLeft, modMiddle, modRight};
    const int own = button >= 0 && button < 4 ? ofButton[button] : 0;
    return own | (state & Button1Mask ? modLeft : 0) | (state & Button2Mask ? modMiddle : 0) |
           (state & Button3Mask ? modRight : 0) | modifiers(state) |
           (state & secondAltMask ? modAlt : 0);
}
