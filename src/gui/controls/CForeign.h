#pragma once

#include "gui/CCtrl.h"

#include <functional>

union _XEvent;

/// A place for a window of somebody else, such as the editor of a plug-in. Who shows it is either
/// given `socket` to make its window in, or its window is taken in by `embed`. The messages of
/// XEMBED are sent and understood; a window that knows nothing of them is shown all the same, and
/// so is one that does not ask to be mapped. The window follows the control, and the control takes
/// the size that the window gives itself: `onChange` tells of that and of its coming and going.
///
/// Keys: wherever the pointer is and whoever has the server's focus, the host is asked first by
/// `hostTakes`; all others reach the foreign window while it has the focus. Interface thread.
class CForeign : public CCtrl {
public:
    /// Whether the program takes a key itself; empty: all are the foreign window's. It decides
    /// only: the keyboard waits for the answer. What it takes goes to the window as any other key.
    std::function<bool(int key, int mods)> hostTakes;

    CForeign(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CForeign() override; ///< gives back a window that was taken in, unmapped
    CForeign(const CForeign&) = delete;
    CForeign& operator=(const CForeign&) = delete;

    unsigned long socket() const { return frame; } ///< an X window for others to put theirs into
    unsigned long guest() const { return inner; }  ///< the window inside; 0 without one
    bool embed(unsigned long window); ///< takes a window in; false when there is no such window
    void release();                   ///< puts it back on the screen, unmapped

    void paint(CGraphic* g, CRect rect) override;
    void setFocus(bool on) override;

    /// For the application, which passes on what concerns the window inside.
    bool handle(const _XEvent& event); ///< true for an event of its own
    bool offer(const _XEvent& event, int key,
               int mods);    ///< a key for what has the focus; true: sent
    void follow();           ///< moves, sizes and shows the window as the control is now
    void activated(bool on); ///< the window around has got or lost the focus
    bool holds(unsigned long window) const; ///< the window, or one inside it, is in here

private:
    void adopt(unsigned long window);
    void lost();
    void sized(int deviceWidth, int deviceHeight);
    void keyGrabbed(const _XEvent& event);
    void message(const long* words);
    void send(long what, long detail = 0, long first = 0);
    CRect seen() const;

    unsigned long frame = 0, inner = 0;
    bool taken = false;  ///< it was made elsewhere
    bool mapped = false; ///< the frame is
    CPoint told;         ///< size that the window inside was told, or told us
    CRect frameAt;       ///< device pixels, in the window around
    CPoint innerAt;      ///< device pixels, in the frame
};
