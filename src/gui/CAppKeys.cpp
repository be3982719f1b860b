// The keys of the windows, and the text that they write.
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/InputMethod.h"
#include "gui/KeyPlayer.h"
#include "gui/Keys.h"
#include "gui/Utf8.h"
#include "gui/controls/CForeign.h"

#include <X11/Xlib.h>

/// Keys are text only where a text field has the focus; elsewhere none may wait for a second one.
bool CApp::keptByMethod(const XEvent& event) {
    if (event.type != KeyPress && event.type != KeyRelease) return writing->keeps(event);
    CWin* win = windowOf(event.xkey.window);
    const CCtrl* target = win ? keyWindow(win)->keyTarget() : nullptr;
    const bool text = target && target->type == ctrlEdit && menus.empty();
    writing->writeIn(text ? event.xkey.window : 0);
    return text && writing->keeps(event);
}

CWin* CApp::keyWindow(CWin* win) const {
    if (CWin* owner = getMDIOwner(win)) return owner;
    return win->hasStyle(winPages) && win->parent ? win->outer() : win;
}

/// Gives what a press writes to the text field with the focus, character by character; false when
/// it is no text.
bool CApp::write(CWin* win, const XEvent& event, int mods) {
    constexpr uint32_t firstPrintable = ' ', deleted = 0x7f;
    if (mods & (modControl | modAlt)) return false;
    const std::string text = writing->textOf(event);
    const unsigned long handle = win->handle;
    bool written = false;
    for (size_t at = 0; at < text.size() && windowOf(handle) == win;) {
        const uint32_t character = nextCharacter(text, at);
        if (character < firstPrintable || character == deleted) continue;
        written = true;
        win->keyDown(keyOfCharacter(character), mods);
    }
    return written;
}

/// Text, menus, dialogs, and keys with Control or Alt go their own way; but who has been told of a
/// press is told of its end.
bool CApp::offerPlayer(CWin* win, const XEvent& event) {
    if (!keyPlayer) return false;
    if (event.type == KeyRelease) return keyPlayer->placeReleased(int(event.xkey.keycode));
    const CCtrl* target = win->keyTarget();
    const bool other = modalWin || !menus.empty() || (target && target->type == ctrlEdit) ||
                       (modifiersAfter(event) & (modControl | modAlt));
    return !other && keyPlayer->placePressed(int(event.xkey.keycode));
}

void CApp::keyEvent(CWin* win, const XEvent& event) {
    win = keyWindow(win);
    if (drag.running()) drag.setMods(modifiersAfter(event));
    if (offerPlayer(win, event)) return;
    int key, mods;
    const bool known = translateKey(event, key, mods);
    auto* target = win->keyTarget();
    for (CForeign* place : foreign)
        if (place == target && place->offer(event, key, mods)) return;
    if (event.type == KeyPress && write(win, event, modifiersAfter(event))) return;
    if (!known || (key == 0 && mods == 0)) return;
    if (event.type == KeyPress && key == keyEscape && drag.cancel()) return;
    if (event.type == KeyPress)
        win->keyDown(key, mods);
    else
        win->keyUp(key, mods);
}
