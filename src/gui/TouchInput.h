#pragma once

#include "gui/TouchTranslator.h"

class CApp;
class CWin;
union _XEvent;

/// What touchpads do over the windows of the program, by the X Input Extension where the server has
/// it: their steps go to the control under the pointer, see `CWin::touch`. Interface thread.
class TouchInput {
public:
    explicit TouchInput(CApp* application) : app(application) {}

    void open();                       ///< on a display that is open
    void watch(unsigned long window);  ///< a window of ours wants pinches
    void pointerInside(bool ours);     ///< whether scrolling is for us at all
    bool handle(const _XEvent& event); ///< true when it was an event of the extension
    bool isCopy(unsigned long time) const { return translator.isCopy(time); }

private:
    void findDevices();
    void deliver(const TouchStep& step);

    CApp* app;
    TouchTranslator translator;
    int opcode = 0; ///< of the extension, 0 without it
    bool pinches = false, listening = false;
};
