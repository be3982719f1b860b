#pragma once

#include "base/CStr.h"

#include <functional>

class CCtrl;

/// What is being typed on a control that shows a value but is no text field. While it is, the
/// control counts as one (`ctrlEdit`), so that the keys of the program are text.
class TypedText {
public:
    enum Answer : int {
        passed, ///< the key is not for it
        kept,   ///< it became part of the text
        taken,  ///< Return: `end` gives what was typed
        left,   ///< Escape: the text is gone
    };

    /// `allowed` are the characters that begin and go on, at most `room` of them; a comma counts as
    /// a point. Both outlive it.
    TypedText(CCtrl* owner, const char* allowed, int room)
        : ctrl(owner), characters(allowed), most(room) {}

    std::function<void(const CStr& text)> onTyped; ///< what was typed, not empty

    bool typing() const { return on; }
    /// For the key handler of the control: true when the key was typed, or ends the typing.
    bool keyDown(int key, int mods);
    void finish();      ///< reports what was typed, if anything
    CStr shown() const; ///< with a mark behind, while there is room
    void begin();
    Answer key(int key, int mods);
    CStr end(); ///< the text, empty when nothing was being typed

private:
    bool insert(int key);

    CCtrl* ctrl;
    const char* characters;
    int most;
    int formerType = 0;
    bool on = false;
    CStr text;
};
