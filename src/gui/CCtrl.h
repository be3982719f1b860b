#pragma once

#include "base/CObject.h"
#include "base/Delegates.h"
#include "gui/access/Accessible.h"

#include <type_traits>

class CGraphic;
class CGroup;
class CWin;
struct TouchStep;

/// Classes of the tree, in `CObject::category`; `type` is free for the control.
enum CtrlCategory : int { catCtrl = 1, catGroup = 2, catGroupLike = 3, catWin = 4 };

/// Types of controls that others ask for.
enum CtrlType : int { ctrlFader = 2, ctrlEdit = 3 };

/// How a control follows the size of its group; see `CGroup::resized`.
enum AlignFlag : int {
    alignRight = 8,         ///< stays `alignX` from the right edge
    alignBottom = 16,       ///< stays `alignY` from the bottom
    alignWidth = 0x200,     ///< stretches up to `alignX` from the right edge
    alignHeight = 0x400,    ///< stretches up to `alignY` from the bottom
    alignMiddleX = 0x800,   ///< its middle is at `alignX` percent of the width
    alignPercentY = 0x1000, ///< `alignY` percent of the free height is above it
};

/// A rectangle of a window that paints itself and takes the mouse and keys. Interface thread.
///
/// Handlers get coordinates from the control's own corner, and flags as in gui/Keys.h. Handlers
/// change state and call `redraw`; `paint` only reads.
class CCtrl : public CObject, public Accessible {
public:
    bool visible = true;          ///< a hidden control is neither drawn nor hit
    bool enabled = true;          ///< a disabled one is drawn but never hit
    int tag = 0;                  ///< free for the owner
    int scrollX = 0, scrollY = 0; ///< a group draws its children shifted by minus this
    void* data = nullptr;         ///< free for the owner
    CStr hint;
    CStr spokenName; ///< what a person calls it, if neither its text nor its label says so
    int align = 0, alignX = 0, alignY = 0; ///< AlignFlag; margins or percentages
    CWin* win;                             ///< never null
    CGroup* parent = nullptr;     ///< null for a window's client area; of a window: its owner
    int absX = 0, absY = 0;       ///< place in the window at the last paint
    int left, top, width, height; ///< from the parent's corner
    int cursor = 1;               ///< number of the cursor shown over the control
    bool hooverable = false;      ///< asks for `mouseOver`
    bool tabStop = false;         ///< the Tab key stops here
    void* userPtr = nullptr;
    int timerInterval = 0, timerCount = 0; ///< milliseconds; set by `CApp::addTimer`
    bool timerRepeat = false;

    /// All owned, null at first. Who sets one that is set deletes the former; `wire` does both.
    COnChange* onChange = nullptr;
    COnPaint* onPaint = nullptr;
    COnMouse *onMouseDown = nullptr, *onMouseMove = nullptr, *onMouseUp = nullptr;
    COnKey *onKeyDown = nullptr, *onKeyUp = nullptr;
    COnChange* onDrag = nullptr; ///< the press has moved far enough to become a drag
    COnMouse *onDrop = nullptr, *onDragOver = nullptr;
    COnWheel* onWheel = nullptr;

    /// Belongs to the caller until a group adopts it with `addControl`.
    CCtrl(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CCtrl() override;

    /// Asks for a repaint, which comes with the next frame; all requests until then become one.
    virtual void redraw();
    void redraw(CRect part); ///< from its own corner
    /// Moves what a part of it shows, children included, by copying, and asks for a repaint of what
    /// that lays bare. For who scrolls: first change what `paint` and hits go by, then call this.
    void scrollArea(CRect part, int dx, int dy);
    /// Paints all of `rect`, its bounds from its own corner, or only what `CGraphic::asked` and
    /// `wants` tell, which is quicker; the surface cuts off the rest.
    virtual void paint(CGraphic* g, CRect rect);
    virtual void mouseDown(int x, int y, int btn);
    virtual void mouseMove(int x, int y, int btn); ///< with or without a press
    virtual void mouseUp(int x, int y, int btn);
    virtual bool keyDown(int key, int mods); ///< true when the key was taken
    virtual bool keyUp(int key, int mods);
    virtual void onTimer() {}
    /// Before a frame, for who is told to `CApp::follow`: takes the values that it shows and asks
    /// for a repaint where they have changed; whether they have.
    virtual bool onFrame() { return false; }
    virtual bool contextMenu() { return false; } ///< opens it by a key; false without one
    virtual void setFocus(bool on) { static_cast<void>(on); }       ///< key focus came or went
    virtual bool mouseWheel(int x, int y, int btn, int dy, int dx); ///< true when it was taken
    /// Fine steps of a touchpad; true when they were taken. Those that nobody takes become turns of
    /// the wheel, one for each whole notch.
    virtual bool touch(int x, int y, int btn, const TouchStep& step);
    virtual void mouseOver(bool enter, int x, int y);
    virtual void needUpdate() {}
    virtual void _changed(CObject* sender, void* arg); ///< upward, to the window
    virtual void notify(const CStr& what, CObject* sender);

    void setBounds(int l, int t, int w, int h);
    void setAlign(int how, int x, int y);
    bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
    /// What of a part of it lies within all groups around, in the window; empty for nothing.
    CRect visiblePart(CRect part) const;
    CRect visibleRect() const { return visiblePart(clientRect()); }
    CRect clientRect() const { return asRect(0, 0, width, height); }

    /// Whether the control can be seen, it and all groups around it.
    bool shown() const;
    bool isPushed() const;  ///< it took the press and still has the mouse
    bool isHovered() const; ///< the pointer is over it; only with `hooverable`
    bool hasKeyFocus() const;

private:
    void leaveApp();
    bool isCovered(const CRect& part) const;
};

/// Puts a new delegate in place of the one in `slot`, which is deleted.
template <class D>
void wire(D*& slot, std::type_identity_t<D>* delegate) {
    delete slot;
    slot = delegate;
}

CRect ctrlBounds(const CCtrl* ctrl); ///< from the parent's corner
