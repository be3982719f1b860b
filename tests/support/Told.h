#pragma once

#include "base/Messages.h"

#include <string>
#include <vector>

/// Keeps what the user is told, as "title: text", instead of showing it.
struct Told {
    static inline std::vector<std::string> messages;

    Told() {
        messages.clear();
        messageHooks().showMsg = [](CWin*, const CStr& title, const CStr& text, int flags) {
            messages.push_back((title + ": " + text).asChar());
            return answerOfEscape(flags);
        };
    }
    ~Told() { messageHooks().showMsg = nullptr; }
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;
};
