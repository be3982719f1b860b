#include "gui/TypedText.h"

#include "gui/CCtrl.h"
#include "gui/Keys.h"

#include <cstring>
#include <utility>

CStr TypedText::shown() const {
    return text.length() < most ? text + "-" : text;
}

void TypedText::begin() {
    if (on) return;
    on = true;
    text = "";
    formerType = std::exchange(ctrl->type, int(ctrlEdit));
}

CStr TypedText::end() {
    if (on) ctrl->type = formerType;
    on = false;
    return std::exchange(text, CStr());
}

bool TypedText::keyDown(int pressed, int mods) {
    const Answer answer = key(pressed, mods);
    if (answer == taken) finish();
    if (answer != passed) ctrl->redraw();
    return answer != passed;
}

void TypedText::finish() {
    const CStr typed = end();
    if (!typed.empty() && onTyped) onTyped(typed);
    ctrl->redraw();
}

TypedText::Answer TypedText::key(int key, int mods) {
    if (mods & (modControl | modAlt)) return passed;
    if (on && key == keyReturn) return taken;
    if (on && key == keyEscape) {
        end();
        return left;
    }
    if (on && key == keyBackspace) {
        text = text.sub(0, text.length() - 1);
        return kept;
    }
    return insert(key == ',' ? '.' : key) ? kept : passed;
}

bool TypedText::insert(int key) {
    if (key <= ' ' || key > '~' || !std::strchr(characters, key)) return false;
    begin();
    if (text.length() < most) text += CStr(char(key));
    return true;
}
