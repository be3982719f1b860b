#pragma once

#include "base/CStr.h"

class CWin;

/// Buttons of a message; the answer is one of them.
enum MessageButton : int { mbOk = 1, mbYes = 2, mbNo = 4, mbCancel = 8 };

/// What the program fills in at its start; a null hook leaves the default. All run on the interface
/// thread.
struct MessageHooks {
    /// Shows a message and returns the button. Default: a line on standard error, and the answer of
    /// Escape.
    int (*showMsg)(CWin* window, const CStr& title, const CStr& text, int flags) = nullptr;
    void (*setStatus)(const CStr& text) = nullptr; ///< the status line; default: nothing
    /// Keeps events and timers going while something waits; default: sleeps a millisecond.
    void (*pumpIdle)() = nullptr;
};
MessageHooks& messageHooks();

/// Makes the calling thread the interface thread; before that it is the one that started the
/// program.
void markInterfaceThread();
bool isInterfaceThread();

/// Shows a message with the buttons `flags` (none counts as OK) and returns the one pressed. On
/// another thread than the interface's it waits for `showQueuedMessages`, cut to 511 bytes, and the
/// answer is that of Escape.
int showMsg(CWin* window, const CStr& title, const CStr& text, int flags = mbOk);
/// Cancel, else No, else OK.
int answerOfEscape(int flags);
/// Shows what other threads left, up to 16 messages; what comes while so many wait is lost.
/// Interface thread.
void showQueuedMessages();

void setStatus(const CStr& text); ///< nothing on another thread
void pumpIdle();                  ///< on another thread the default
/// A line of diagnostic output.
void showStr(const CStr& text);
void dbg(const char* text);
