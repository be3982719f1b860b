#pragma once

#include "gui/Fonts.h"

struct _XDisplay;
union _XEvent;

/// The connection to the X server, made by `CApp::open`: one in a process. Nothing of the library's
/// own names leaks from here; ids of windows, atoms and cursors are plain numbers. Interface
/// thread.
///
/// An error of the server never ends the program: it is only noted in `xerror`. When the server
/// goes away, `lost` becomes true and nobody calls it any more.
class XConnection {
public:
    static constexpr int cursorCount = 11;

    struct Atoms {
        unsigned long self, eventProc, wmProtocols, wmDelete;
        unsigned long clipboard, targets, timestamp, multiple, atomPair, incr;
        unsigned long utf8String, utf8Plain, text, uriList, netName, netIcon;
        unsigned long fetched; ///< the property in which we want selections of others
        unsigned long dndAware, dndEnter, dndPosition, dndStatus, dndLeave, dndDrop, dndFinished;
        unsigned long dndSelection, dndTypeList, dndActionCopy;
        unsigned long xembed;     ///< type of the messages between a window and the one around it
        unsigned long motifHints; ///< 0 if no window manager has named it
        unsigned long netState, netMaxVert, netMaxHorz, netFullscreen; ///< as above
    };

    _XDisplay* display = nullptr; ///< owned
    int screen = 0;
    unsigned long root = 0, colormap = 0;
    unsigned long redMask = 0xff0000, greenMask = 0xff00, blueMask = 0xff; ///< of the visual
    Atoms atoms{};
    unsigned long cursors[cursorCount + 1] = {}; ///< by the number of `CCtrl::cursor`; 0 unused
    std::unique_ptr<TextFace> font = std::make_unique<TextFace>(); ///< of most texts; never null
    std::unique_ptr<TextFace>
        looks[12];              ///< the others, for `textFace`; null until they are asked for
    unsigned long userTime = 0; ///< the server's, of the latest key or button; 0 before the first
    bool lost = false;          ///< the server closed the connection

    bool open(); ///< true also if it is open already; false, with nothing held, without a display
    void close();
    /// Looks again for the atoms that are 0: a window manager may have come later.
    void findManagerAtoms();

private:
    void internAtoms();
    void makeCursors();
};

extern int xerror;         ///< code of the latest error of the server, 0 none since it was cleared
extern int xlibColorDepth; ///< of the root window, in bits; 24 without a display

XConnection& xConnection();
/// The display for a call of the library, null without a connection and after it was lost.
_XDisplay* liveDisplay();
/// Waits until the server has carried out all that was sent, and tells whether it met an error in
/// between: `xerror` is cleared first by the caller.
bool syncSucceeded();
/// The errors of the server come to this program again, after code of somebody else ran, which may
/// have taken them to itself.
void takeErrors();

CPoint mousePos(); ///< of the pointer on the screen
void setMousePos(int x, int y);
int screenWidth();
int screenHeight();
CRect screenRect();
/// The room for windows: all of the screen, over all its monitors.
CRect getDesktopBounds();
