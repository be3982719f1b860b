#pragma once

#include "base/CList.h"
#include "gui/CCtrl.h"

/// A control made of others. Interface thread.
class CGroup : public CCtrl {
public:
    ListOf<CCtrl> controls;  ///< owned
    int fillColor = -1;      ///< -1 is no fill
    bool arrowsWalk = false; ///< arrow keys lead from one tab stop inside to the next that way

    CGroup(CWin* win, const CStr& name, int left, int top, int width, int height);
    ~CGroup() override;

    void paint(CGraphic* g, CRect rect) override;
    /// Places each child by its `align` flags and this group's size. Of the horizontal flags the
    /// first of right, width, middle counts; of the vertical ones bottom, height, percent.
    virtual void resized();
    virtual void addControl(CCtrl* ctrl); ///< adopts it
    /// Drops all children: at once, or, inside an event's handler, when it has returned.
    virtual void clear();

    /// A key that the control with the focus, somewhere inside, did not take; the innermost group
    /// is asked first. True when it was taken.
    virtual bool keyInside(int key, int mods);
    /// A control somewhere inside got the key focus: brings it into view.
    virtual void reveal(const CCtrl*) {}

    /// What is hit at a point of this group, null for nothing. The first child wins, and inside it
    /// the last grandchild; a group without a hit child counts itself.
    CCtrl* controlAtPos(int x, int y);
    /// Paints the children that meet the clip, from (x, y) on; nothing when `rect` is empty.
    void paintControls(CGraphic* g, CRect rect, int x, int y);

protected:
    void addChild(CCtrl* ctrl, CGroup* childParent);

private:
    static CCtrl* find(CCtrl* ctrl, int x, int y);
    static void paintCtrl(CGraphic* g, CCtrl* ctrl, int x, int y);
};

/// The part of a window that holds its content.
class CClientGroup : public CGroup {
public:
    using CGroup::CGroup;
    void _changed(CObject* sender, void* arg) override;
    void notify(const CStr& what, CObject* sender) override;
};
