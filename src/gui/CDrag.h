#pragma once

#include "base/Geometry.h"

#include <memory>

class CApp;
class CCtrl;

/// Where a drag is, in pixels from the control's corner.
struct DragPoint {
    CPoint at;     ///< of the pointer; it may lie outside the control
    CPoint anchor; ///< of the press; it moves along with what was scrolled since
    int btn = 0;   ///< ModFlag: the button that began it, and the modifiers that are held now
};

/// What a drag does. It outlives the drag, or its control is deleted first.
class DragHandler {
public:
    virtual ~DragHandler() = default;
    virtual void dragBegin(const DragPoint&) {} ///< the pointer has left the room of a click
    /// The pointer, the modifiers or the content under the pointer have moved.
    virtual void dragMove(const DragPoint& point) = 0;
    virtual void dragEnd(const DragPoint&) {}   ///< released: what was moved last stays
    virtual void dragCancel() {}                ///< all becomes as it was before `dragBegin`
    virtual void dragClick(const DragPoint&) {} ///< released without `dragBegin`
    virtual bool dragWheel(const DragPoint&, int dy, int dx); ///< true when it was taken
    /// The pointer is at an edge: scrolls the content by so many pixels at most, and tells by how
    /// many it has been.
    virtual CPoint dragScroll(CPoint by);
};

/// The drag of a control from its press to the release, one at a time; the application's `drag`.
/// Escape, the press of another button, and the loss of the window end it as if it had not been.
/// Meanwhile the control's `mouseMove` is not called. Interface thread.
class CDrag {
public:
    static constexpr int clickRoom = 4; ///< pixels
    static constexpr int edge = 12;     ///< how far inside a control the scrolling begins
    static constexpr int tickMs = 20;   ///< from one step of it to the next

    explicit CDrag(CApp* application);
    ~CDrag();
    CDrag(const CDrag&) = delete;
    CDrag& operator=(const CDrag&) = delete;

    /// To be called from `mouseDown` with what that was given. `room` 0 begins at once.
    void start(CCtrl* ctrl, DragHandler* handler, CPoint at, int btn, int room = clickRoom);
    bool of(const CCtrl* ctrl) const { return ctrl && ctrl == dragged; }
    bool running() const { return begun; }
    bool cancel(); ///< false without a drag

    /// For the window and the application, which pass on what happens.
    void moved(CPoint at, int btn);
    void released(CPoint at);
    bool wheel(int dy, int dx); ///< true when the drag took it
    void setMods(int mods);     ///< those that are held now
    void forget(const CCtrl* ctrl);

private:
    class Ticker;

    void finish();
    void step();
    CPoint pull() const;

    CApp* app;
    CCtrl* dragged = nullptr; ///< null without a drag
    DragHandler* handler = nullptr;
    DragPoint point;
    int room = 0;
    bool begun = false;
    std::unique_ptr<Ticker> ticker;
};
