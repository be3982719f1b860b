#pragma once

#include <cstdint>
#include <string>

struct _XIC;
struct _XIM;
union _XEvent;

/// What turns keys into text: the desktop's input method, or where none runs the library's own,
/// with its dead keys and compose sequences. Opened when text is written for the first time.
/// Interface thread.
class InputMethod {
public:
    InputMethod() = default;
    ~InputMethod() { close(); }
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    void close();
    /// The X window in which text is being written, 0 while none is. What was begun in another one
    /// is dropped.
    void writeIn(unsigned long window);
    void left(unsigned long gone) { ///< that window is about to be destroyed
        if (gone == window) writeIn(0);
    }
    /// True when the method has kept an event; of keys only those that write are to be given.
    bool keeps(const _XEvent& event);
    /// The text that a press writes in the window of `writeIn`, in UTF-8; empty for none.
    std::string textOf(const _XEvent& event);

private:
    static void gone(_XIM* method, char* self, char* unused);
    void open();

    _XIM* method = nullptr;
    _XIC* context = nullptr; ///< of `window`
    unsigned long window = 0;
    bool tried = false;
};
