#pragma once

#include <cstdint>

union _XEvent;

/// Buttons and modifiers of the mouse and key handlers, as one set of bits.
enum ModFlag : int {
    modLeft = 1,
    modRight = 2,
    modMiddle = 4,
    modDouble = 8, ///< the press is the second one of a double click
    modShift = 16,
    modControl = 32,
    modAlt = 64,
};

/// Keys without a character of their own. All others are their character, from 1 on.
enum Key : int {
    keyHome = -1,
    keyLeft = -2,
    keyUp = -3,
    keyRight = -4,
    keyDown = -5,
    keyEnd = -6,
    keyDelete = -7,
    keyBackspace = -8,
    keyReturn = -9,
    keyTab = -10,
    keyEscape = -11,
    keyPageUp = -12,
    keyPageDown = -13,
    keyInsert = -14, ///< a name in shortcut tables; no key press gives it
    keyF1 = -15,     ///< F2 to F12 follow downwards
    keyF12 = -26,
    keyAsterisk = -27, ///< "*" is a shortcut key and never a character
    keyMenu = -28,     ///< opens the context menu
    keyMediaPlay = -29,
    keyMediaStop = -30,
    keyMediaPrior = -31, ///< rewinds too
    keyMediaNext = -32,  ///< winds forward too
    keyMediaRecord = -33,
};

/// A key that counts as Alt with the mouse, as window managers keep Alt and a drag to themselves.
enum class SecondAlt : int { none, super, altGr };
/// In force for the events that follow; at first none.
void setSecondAlt(SecondAlt key);

/// A key code with a small letter made a capital; all others as they are.
int upperKey(int key);
/// The key code of a character that was written.
int keyOfCharacter(uint32_t character);

/// The key code and modifiers of a key event. False for a key that means nothing here, such as a
/// modifier alone. Control leaves the character as it is: Control-A is 'a' with `modControl`. A key
/// of a layout whose letters are not Latin stands for the Latin letter or sign at its place, so
/// that shortcuts go by it; what it writes is told by `InputMethod`.
bool translateKey(const _XEvent& event, int& key, int& mods);
/// The modifiers that are held once a key event has happened.
int modifiersAfter(const _XEvent& event);
/// The flags of a mouse event: its own button (0 for a motion) and all that is held, from `state`.
int translateButton(int button, unsigned state);
