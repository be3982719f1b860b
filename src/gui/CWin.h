#pragma once

#include "gui/CGroup.h"
#include "gui/PendingPaint.h"

#include <memory>
#include <span>
#include <vector>

class CApp;
class CMDI;
class CPopup;
class CRibbonItem;
union _XEvent;

/// Bits of `CWin::style`.
enum WinStyle : int {
    winChild = 0x1,            ///< lies inside the X window of its owner
    winManaged = 0x2,          ///< is maximized and restored by the window manager
    winCaption = 0x4,          ///< caption strip with a close button
    winCentre = 0x8,           ///< centred over its owner, or its monitor, when first shown
    winPopup = 0x10,           ///< unknown to the window manager; the press takes no grab
    winEscape = 0x20,          ///< Escape closes it
    winSizable = 0x40,         ///< its edges can be dragged; also needed to maximize and minimize
    winMinButton = 0x80,       ///< in the caption
    winMaxButton = 0x100,      ///< in the caption
    winMinimized = 0x200,      ///< state
    winMaximized = 0x80000,    ///< state
    winNoBorder = 0x100000,    ///< no frame, and the content goes up to the edges
    winKeysToOwner = 0x200000, ///< keys that nobody takes go to the owner
    winMain = 0x400000,        ///< only its border is painted while content covers the rest
    winPages = 0x800000,       ///< holds pages of documents; its owner handles the keys
    winDockable = 0x1000000,
    winFloating = 0x2000000, ///< drag and hint windows
};

/// Where a window can be taken hold of.
enum HitZone : int {
    zoneNone = 0,
    zoneLeft = 2,
    zoneTop = 4,
    zoneRight = 8,
    zoneBottom = 16,
    zoneTopLeft = 32,
    zoneTopRight = 64,
    zoneBottomLeft = 128,
    zoneBottomRight = 256,
    zoneMove = 8192,
};

/// One X window, and the root of a tree of controls. It draws its own caption, border and buttons.
/// The X window lives from the constructor to the destructor; `show` and `hide` map and unmap it.
/// Content goes to the client area, by `addControl`. Interface thread.
class CWin : public CGroup {
public:
    CClientGroup* clientGroup = nullptr; ///< area of the content; one of `controls`
    CGroup* captionGroup = nullptr;      ///< named "close"; null without a caption
    CGroup* menu = nullptr;              ///< menu bar; one of `controls` or null
    unsigned long handle = 0;            ///< the X window
    CGroup* toolbar = nullptr;           ///< one of `controls` or null
    int sizeMode = zoneNone;             ///< HitZone that is being dragged
    int minWidth = 16, minHeight = 16;   ///< `move` never configures less
    bool autoDelete = false;             ///< deletes itself when its menu loop ends
    COnChange* onShowMenu = nullptr;     ///< owned; it opens as a menu
    COnPaint* onIconPaint = nullptr;     ///< owned; a square at the caption's left
    CRect restoreRect;                   ///< left, top, width, height to go back to
    CCtrl* mouseCtrl = nullptr;          ///< took the last press and gets the moves and the release
    CCtrl* keyCtrl = nullptr;            ///< has the key focus
    int style;                           ///< WinStyle
    std::unique_ptr<CGraphic> graphic;
    CApp* app;
    CMDI* mdi = nullptr;   ///< pages inside this window, which get its keys first; null without any
    ListOf<CWin> children; ///< windows inside this one by style `winChild`; not owned
    COnKey* onAccelerator = nullptr; ///< owned
    PendingPaint pending;            ///< what the next frame has to do
    bool mapped = false;             ///< as the server last told

    /// `owner` is null or outlives the window; it is the `parent`. The title is the name. Position
    /// and size are those of the X window, border included.
    CWin(CApp* app, CWin* owner, const CStr& title, int left, int top, int width, int height,
         int style);
    ~CWin() override;

    using CGroup::paint;
    void redraw() override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool keyUp(int key, int mods) override;
    void setFocus(bool on) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    void _changed(CObject*, void*) override {} ///< what comes up from the controls ends here
    void notify(const CStr&, CObject*) override {}
    void resized() override;
    void addControl(CCtrl* ctrl) override; ///< to the client area, which adopts it
    void clear() override;                 ///< drops the content of the client area

    virtual void show(bool activate);
    virtual void raise(bool focus);
    virtual void showMenu();  ///< runs until it is hidden; inside another menu it returns at once
    virtual void showModal(); ///< runs until it is hidden; other windows get no presses meanwhile
    virtual void hide();
    virtual void paint(int unused, CRect rect);    ///< repaints a part of the window
    void paintAreas(std::span<const CRect> areas); ///< in one go
    void paintPending();                           ///< makes the next frame now
    virtual CPoint getSize();                      ///< as the server knows it
    virtual CPoint getPos(bool onScreen);          ///< on the screen, or inside the owner
    virtual void setPos(int x, int y);
    virtual bool hasFocus();
    /// A command of a ribbon that has no handler of its own was chosen; its entry, and the buttons.
    virtual void menuAction(CRibbonItem*, CObject*, int) {}
    void describe(Description& d, int part) const override;

    void setKeyCtrl(CCtrl* ctrl); ///< null takes the key focus away; a control is brought into view
    /// What Tab stops at, in order: menu and toolbar, the content, and the page in front.
    virtual std::vector<CCtrl*> tabStops();
    void setMouseCtrl(CCtrl* ctrl) { mouseCtrl = ctrl; }
    void setCapture(bool on); ///< the mouse is followed outside the window too
    void killCapture() { setCapture(false); }
    int getHitPos(int x, int y) const;          ///< HitZone
    CPoint controlPos(const CCtrl* ctrl) const; ///< of its corner, in this window
    /// Moves the key focus to the next of `tabStops`, or back with `by` -1, in a ring. Of a page it
    /// is the ring of the window around. False when there is nowhere to go.
    bool nextCtrl(int by = 1);
    void minimize();
    void maximize();
    void restore();
    void toggleMaximized();
    void toggleToolbar(); ///< shows or hides it
    void move(int x, int y, int w, int h);
    void setSize(int w, int h);
    /// At least the given size, and so large that the content fits with 8 pixels to spare.
    void setSizeFromControls(int minW, int minH, int unused = 0);
    bool hasStyle(int bits) const { return (style & bits) != 0; }
    void setCursor(int number);
    void addMenu(CGroup* bar);      ///< adopts it; below the caption
    void addToolbar(CGroup* strip); ///< adopts it; below the menu
    void updateClient();            ///< stacks caption, menu, toolbar and client area
    void setCaption(const CStr& text);
    void bringToFront() { raise(false); }
    /// Gives `CApp::dragList` to who takes it there; false when nobody does.
    bool dropAt(int x, int y, int btn);
    bool isViewable() const;

    CWin* outer() const;    ///< the `parent`, which is a window too; null without one
    bool isPage() const;    ///< lies in the area of pages of another window
    CMDI* pageArea() const; ///< that area; null for no page
    /// Whether the keys of the user come here: of a page, when it is in front and its owner has the
    /// focus.
    bool takesKeys();
    CCtrl* keyTarget() const;  ///< what has the key focus here, or on the page in front; or null
    void moveInto(CMDI* area); ///< becomes a page, at its present place and size
    void moveOut(CWin* owner, CRect place); ///< no page any more; left, top, width, height
    void setMapped(bool on);                ///< of a page whose area shows others instead
    void fillOwner();                       ///< of a maximized page: as large as its area
    /// What the right button offers on the caption, and Alt with Space.
    void fillCaptionMenu(CPopup* popup);
    /// The window at a point of the screen: this one, or the innermost of ours inside it.
    CWin* innermostAt(CPoint screen);
    /// Whether a press on that X window passes while this one is modal.
    bool takesPress(unsigned long target) const;

protected:
    virtual void drawCaption(CObject* sender, CGraphic* g, CRect rect);
    bool ownKey(int key, int mods); ///< the keys of windows themselves; true when it is one
    /// Gives a key to the control with the focus, then to the groups around it.
    bool offerFocus(int key, int mods);

private:
    void createHandle();
    void nameHandle();
    void releaseChildren();
    void forgetHover();
    void setHints();
    void setSizeHints();
    void createCaption();
    void addCaptionButton(int kind, int rightMargin);
    void captionMouseDown(CObject* sender, int x, int y, int btn);
    void captionMouseUp(CObject* sender, int x, int y, int btn);
    void captionMenu(CObject* sender);
    void dropCaptionMenu(CPoint at, bool fromKeys);
    void dragZone();
    int hover(int x, int y, int btn);
    void saveRect();
    bool offerKey(int key, int mods);
    void dropCaptionMenuByKey();
    bool openContextMenu();
    bool nextPage();
    void paintBackground(CGraphic* g, CRect rect);
    bool filledByManager();
    bool fillsScreen();
    void fillRoom(CRect room);
    void askManager(int action);
    void centre();
    void modalTurn();
    void menuEvent(_XEvent& event);
    void leaveLists();

    int shownCursor = 1;
};

CWin* getMDIOwner(const CWin* win); ///< the window around the area of a page; null for no page
